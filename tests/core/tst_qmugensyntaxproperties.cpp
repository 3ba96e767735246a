#include "core/text/qmugensyntaxproperties.h"
#include "testsupport.h"

#include <QTemporaryDir>
#include <QtTest>

using TestSupport::writeFile;

class tst_QMugenSyntaxProperties : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    int m_files = 0;

    // Each call writes a new file, so that a test can load several in turn.
    QString syntaxFile(const QByteArray &body)
    {
        const QString path = m_dir.filePath(QStringLiteral("syntax%1.xml").arg(++m_files));
        writeFile(path, "<!DOCTYPE ZNLSyntaxML>\n<syntax>\n" + body + "</syntax>\n");
        return path;
    }

    static const QSyntaxController *controller(const QList<QSyntaxController *> &list, const char *name)
    {
        const int index = QMugenSyntaxProperties::indexOf(list, QLatin1String(name));
        return index < 0 ? nullptr : list.at(index);
    }

private Q_SLOTS:
    void versionsArePacked_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<quint32>("packed");
        QTest::newRow("two parts") << QStringLiteral("1.1") << quint32(0x1010000);
        QTest::newRow("four parts") << QStringLiteral("1.1.0.1") << quint32(0x1010001);
        QTest::newRow("three parts") << QStringLiteral("1.2.3") << quint32(0x1020300);
        QTest::newRow("1.0") << QStringLiteral("1.0") << quint32(0x1000000);
        QTest::newRow("one part") << QStringLiteral("1") << quint32(0);
        QTest::newRow("five parts") << QStringLiteral("1.1.1.1.1") << quint32(0);
        QTest::newRow("suffix") << QStringLiteral("1.1b1") << quint32(0);
        QTest::newRow("leading blank") << QStringLiteral(" 1.1") << quint32(0);
        QTest::newRow("date of 2002") << QStringLiteral("2002.04.14") << quint32(0);
        QTest::newRow("part of 255") << QStringLiteral("255.255.255.255") << quint32(0xffffffff);
        QTest::newRow("part above a byte") << QStringLiteral("1.256") << quint32(0);
        QTest::newRow("empty") << QStringLiteral("") << quint32(0);
        QTest::newRow("absent") << QString() << quint32(0);
    }

    void versionsArePacked()
    {
        QFETCH(QString, text);
        QFETCH(quint32, packed);
        // A null text leaves the attributes out.
        const QByteArray versions =
            text.isNull() ? QByteArray() : " minver=\"" + text.toUtf8() + "\" deprecated=\"" + text.toUtf8() + '"';
        QMugenSyntaxProperties properties;
        QVERIFY(properties.load(syntaxFile("<state_controller name=\"A\"" + versions + ">\n"
                                           "  <param name=\"p\" type=\"exp\"" + versions + "/>\n"
                                           "</state_controller>\n"
                                           "<trigger name=\"t\" type=\"exp\"" + versions + "/>\n")));

        const QSyntaxController *a = controller(properties.stateControllers(), "A");
        QVERIFY(a);
        QCOMPARE(a->minVersion, packed);
        QCOMPARE(a->deprecatedVersion, packed);
        // The text stays as written even when it packs to nothing.
        QCOMPARE(a->deprecatedText, text);
        const QSyntaxParam p = a->params.value(QStringLiteral("p"));
        QCOMPARE(p.minVersion, packed);
        QCOMPARE(p.deprecatedVersion, packed);
        QCOMPARE(p.deprecatedText, text);
        const QSyntaxParam t = properties.triggers().value(QStringLiteral("t"));
        QCOMPARE(t.minVersion, packed);
        QCOMPARE(t.deprecatedVersion, packed);
    }

    void typesByExactName_data()
    {
        QTest::addColumn<QByteArray>("attribute");
        QTest::addColumn<int>("type");
        const char *const names[] = {
            "int", "int2", "int3", "intn", "intfloat3", "intfloat3opt", "float", "float2",
            "float2opt", "float3", "exp", "exp2", "exp2value", "exp3", "exp4", "expn", "exp2opt",
            "exp3nil", "string", "strexp", "strexp2", "strexp2nil", "expstr", "expstrexp2",
            "value", "nilexp", "expopt", "opint", "opint2", "op2int2", "opStr", "valueeq", "const",
        };
        int number = 0;
        for (const char *name : names)
            QTest::newRow(name) << (QByteArray(" type=\"") + name + '"') << number++;
        QTest::newRow("opstr in the wrong case") << QByteArray(" type=\"opstr\"") << 33;
        QTest::newRow("unknown name") << QByteArray(" type=\"number\"") << 33;
        QTest::newRow("empty type") << QByteArray(" type=\"\"") << 33;
        QTest::newRow("no type") << QByteArray() << 33;
    }

    void typesByExactName()
    {
        QFETCH(QByteArray, attribute);
        QFETCH(int, type);
        QMugenSyntaxProperties properties;
        QVERIFY(properties.load(syntaxFile("<trigger name=\"t\"" + attribute + "/>\n"
                                           "<camera name=\"k\"" + attribute + "/>\n"
                                           "<fnt_def name=\"f\"><param name=\"p\"" + attribute + "/></fnt_def>\n")));
        QCOMPARE(properties.triggers().value(QStringLiteral("t")).type, type);
        QCOMPARE(properties.section(QMugenSyntaxProperties::Camera).value(QStringLiteral("k")).type, type);
        QCOMPARE(properties.fontDefs().value(0)->params.value(QStringLiteral("p")).type, type);
    }

    void extraAndFormat_data()
    {
        QTest::addColumn<QByteArray>("attributes");
        QTest::addColumn<QString>("extra");
        QTest::addColumn<int>("format");
        QTest::newRow("intn without max") << QByteArray("type=\"intn\"") << QStringLiteral("1") << 0;
        QTest::newRow("intn with max") << QByteArray("type=\"intn\" max=\"10\"") << QStringLiteral("10") << 0;
        QTest::newRow("max of another type") << QByteArray("type=\"exp\" max=\"10\"") << QString() << 0;
        QTest::newRow("value pattern") << QByteArray("type=\"value\" reg_exp=\"a|b\"") << QStringLiteral("a|b") << 0;
        QTest::newRow("strexp pattern") << QByteArray("type=\"strexp\" reg_exp=\"s\"") << QStringLiteral("s") << 0;
        QTest::newRow("valueeq pattern") << QByteArray("type=\"valueeq\" reg_exp=\"x\"") << QStringLiteral("x") << 0;
        QTest::newRow("pattern of a type without words") << QByteArray("type=\"exp\" reg_exp=\"a\"") << QString() << 0;
        QTest::newRow("key pattern over value pattern")
            << QByteArray("type=\"value\" format=\"regexp\" reg_exp=\"a|b\" fmt_reg_exp=\"k\\d+\"")
            << QStringLiteral("k\\d+") << 2;
        QTest::newRow("key pattern over max")
            << QByteArray("type=\"intn\" max=\"3\" format=\"regexp\" fmt_reg_exp=\"k\\d+\"") << QStringLiteral("k\\d+") << 2;
        QTest::newRow("empty key pattern still wins")
            << QByteArray("type=\"value\" reg_exp=\"a\" fmt_reg_exp=\"\"") << QString() << 0;
        QTest::newRow("idexp") << QByteArray("type=\"exp\" format=\"idexp\"") << QString() << 1;
        QTest::newRow("argument words") << QByteArray("type=\"exp3\" arg_reg_exp=\"top|front\"") << QStringLiteral("top|front") << 0;
        QTest::newRow("argument words of a value") << QByteArray("type=\"value\" reg_exp=\"a\" arg_reg_exp=\"b\"")
                                                   << QStringLiteral("a") << 0;
        QTest::newRow("format in the wrong case") << QByteArray("type=\"exp\" format=\"IdExp\"") << QString() << 0;
        QTest::newRow("unknown format") << QByteArray("type=\"exp\" format=\"plain\"") << QString() << 0;
    }

    void extraAndFormat()
    {
        QFETCH(QByteArray, attributes);
        QFETCH(QString, extra);
        QFETCH(int, format);
        QMugenSyntaxProperties properties;
        QVERIFY(properties.load(syntaxFile("<scene name=\"k\" " + attributes + "/>\n"
                                           "<bg_control name=\"c\"><param name=\"p\" " + attributes + "/></bg_control>\n")));
        const QSyntaxParam key = properties.section(QMugenSyntaxProperties::Scene).value(QStringLiteral("k"));
        QCOMPARE(key.extra, extra);
        QCOMPARE(key.format, format);
        const QSyntaxParam param = properties.bgControls().value(0)->params.value(QStringLiteral("p"));
        QCOMPARE(param.extra, extra);
        QCOMPARE(param.format, format);
    }

    void everySectionTagFillsItsMap()
    {
        QByteArray body;
        for (int s = 0; s < QMugenSyntaxProperties::SectionCount; ++s) {
            const QByteArray tag = QMugenSyntaxProperties::sectionTag(QMugenSyntaxProperties::Section(s)).toUtf8();
            body += '<' + tag + " name=\"key_" + tag + "\" type=\"int\"/>\n";
        }
        QMugenSyntaxProperties properties;
        QVERIFY(properties.load(syntaxFile(body)));
        const QStringList tags = {
            QStringLiteral("files"), QStringLiteral("arcade"), QStringLiteral("data"), QStringLiteral("size"),
            QStringLiteral("velocity"), QStringLiteral("movement"), QStringLiteral("camera"),
            QStringLiteral("playerinfo"), QStringLiteral("bound"), QStringLiteral("scaling"),
            QStringLiteral("stageinfo"), QStringLiteral("shadow"), QStringLiteral("reflection"),
            QStringLiteral("music"), QStringLiteral("bgdef"), QStringLiteral("bg_control_def"),
            QStringLiteral("fnt"), QStringLiteral("scene_def"), QStringLiteral("scene"), QStringLiteral("info"),
            QStringLiteral("state_common"),
        };
        QCOMPARE(int(QMugenSyntaxProperties::SectionCount), tags.size());
        for (int s = 0; s < tags.size(); ++s) {
            // Each map holds its own key and no other.
            const auto &keys = properties.section(QMugenSyntaxProperties::Section(s));
            QCOMPARE(keys.keys(), QStringList{QStringLiteral("key_") + tags.at(s)});
        }
        QVERIFY(properties.section(QMugenSyntaxProperties::SectionCount).isEmpty());
    }

    void unknownTagsAreIgnored()
    {
        QMugenSyntaxProperties properties;
        QVERIFY(properties.load(syntaxFile(
            "<quotes name=\"victory1\" type=\"string\"/>\n"
            "<State_Controller name=\"Upper\"/>\n"
            "<future_kind name=\"x\"><param name=\"p\" type=\"exp\"/></future_kind>\n"
            "<state_controller name=\"ChangeState\">\n"
            "  <param name=\"value\" type=\"exp\"/>\n"
            "  <option name=\"ctrl\" type=\"exp\"/>\n"
            "</state_controller>\n"
            "<camera name=\"startx\" type=\"int\"/>\n")));
        QCOMPARE(properties.stateControllers().size(), 1);
        // Only <param> children are parameters.
        QCOMPARE(properties.stateControllers().at(0)->params.keys(), QStringList{QStringLiteral("value")});
        QVERIFY(properties.triggers().isEmpty());
        QVERIFY(properties.bgControllers().isEmpty());
        for (int s = 0; s < QMugenSyntaxProperties::SectionCount; ++s) {
            const int expected = s == QMugenSyntaxProperties::Camera ? 1 : 0;
            QCOMPARE(properties.section(QMugenSyntaxProperties::Section(s)).size(), expected);
        }
        QCOMPARE(properties.completionNames(),
                 (QStringList{QStringLiteral("ChangeState"), QStringLiteral("startx")}));
    }

    void laterDescriptionsReplaceEarlier()
    {
        QMugenSyntaxProperties properties;
        QVERIFY(properties.load(syntaxFile(
            "<state_controller name=\"VarSet\">\n"
            "  <param name=\"v\" type=\"int\"/>\n"
            "  <param name=\"value\" type=\"exp\"/>\n"
            "  <param name=\"v\" type=\"exp\" minver=\"1.0\"/>\n"
            "</state_controller>\n"
            "<trigger name=\"Time\" type=\"exp\"/>\n"
            "<trigger name=\"Time\" type=\"nilexp\"/>\n"
            "<data name=\"life\" type=\"float\"/>\n"
            "<data name=\"life\" type=\"int\"/>\n")));
        const QSyntaxController *varSet = controller(properties.stateControllers(), "varset");
        QVERIFY(varSet);
        QCOMPARE(varSet->params.size(), 2);
        QCOMPARE(varSet->params.value(QStringLiteral("v")).type, int(QSyntaxParam::Exp));
        QCOMPARE(varSet->params.value(QStringLiteral("v")).minVersion, 0x1000000u);
        QCOMPARE(properties.triggers().value(QStringLiteral("Time")).type, int(QSyntaxParam::NilExp));
        QCOMPARE(properties.section(QMugenSyntaxProperties::Data).value(QStringLiteral("life")).type,
                 int(QSyntaxParam::Int));
    }

    void constsCollectNames()
    {
        QMugenSyntaxProperties properties;
        QVERIFY(properties.load(syntaxFile(
            "<consts name=\"gethitvar\"><const name=\"xveladd\"/><const name=\"yveladd\"/></consts>\n"
            "<consts name=\"const\"><const name=\"data.life\"/><other name=\"skipped\"/></consts>\n"
            "<consts name=\"gethitvar\"><const name=\"fall\"/></consts>\n")));
        QCOMPARE(properties.consts().value(QStringLiteral("gethitvar")),
                 (QStringList{QStringLiteral("xveladd"), QStringLiteral("yveladd"), QStringLiteral("fall")}));
        QCOMPARE(properties.consts().value(QStringLiteral("const")), QStringList{QStringLiteral("data.life")});
    }

    void reloadEmptiesListsAndOverwritesMaps()
    {
        QMugenSyntaxProperties properties;
        QVERIFY(properties.load(syntaxFile(
            "<state_controller name=\"Old\"/>\n<bg_controller name=\"normal\"/>\n"
            "<bg_control name=\"null\"/>\n<fnt_def name=\"bitmap\"/>\n"
            "<trigger name=\"Kept\" type=\"exp\"/>\n<trigger name=\"Changed\" type=\"exp\"/>\n"
            "<camera name=\"startx\" type=\"int\"/>\n"
            "<consts name=\"const\"><const name=\"data.life\"/><const name=\"size.depth\" engine=\"ikemen\"/></consts>\n"
            "<consts name=\"stagevar\"><const name=\"info.name\"/></consts>\n")));
        QVERIFY(properties.load(syntaxFile(
            "<state_controller name=\"New\"/>\n"
            "<trigger name=\"Changed\" type=\"const\"/>\n"
            "<consts name=\"const\"><const name=\"data.power\"/></consts>\n")));
        QCOMPARE(properties.stateControllers().size(), 1);
        QCOMPARE(properties.stateControllers().at(0)->name, QStringLiteral("New"));
        QVERIFY(properties.bgControllers().isEmpty());
        QVERIFY(properties.bgControls().isEmpty());
        QVERIFY(properties.fontDefs().isEmpty());
        // Keys the new file doesn't name stay; those it names are replaced.
        QCOMPARE(properties.triggers().value(QStringLiteral("Kept")).type, int(QSyntaxParam::Exp));
        QCOMPARE(properties.triggers().value(QStringLiteral("Changed")).type, int(QSyntaxParam::Const));
        QVERIFY(properties.section(QMugenSyntaxProperties::Camera).contains(QStringLiteral("startx")));
        QCOMPARE(properties.consts().value(QStringLiteral("const")), QStringList{QStringLiteral("data.power")});
        QCOMPARE(properties.consts().value(QStringLiteral("stagevar")), QStringList{QStringLiteral("info.name")});
        // A group read again loses the Ikemen GO names it no longer has.
        QVERIFY(properties.ikemenConsts().isEmpty());
    }

    void ikemenAdditionsAreMarked()
    {
        QMugenSyntaxProperties properties;
        QVERIFY(properties.load(syntaxFile(
            "<state_controller name=\"HitDef\">\n"
            "  <param name=\"attr\" type=\"value\" reg_exp=\"a\" ikemen_reg_exp=\"a|p\"/>\n"
            "  <param name=\"score\" type=\"exp\" engine=\"ikemen\"/>\n"
            "</state_controller>\n"
            "<state_controller name=\"ModifyHitDef\" engine=\"ikemen\" like=\"hitdef\">\n"
            "  <param name=\"attr\" type=\"exp\"/>\n"
            "</state_controller>\n"
            "<state_controller name=\"Alone\" like=\"Later\"/>\n<state_controller name=\"Later\"/>\n"
            "<bg_controller name=\"video\" like=\"HitDef\"/>\n"
            "<trigger name=\"RedLife\" type=\"nilexp\" engine=\"ikemen\"/>\n"
            "<trigger name=\"Vel\" type=\"value\" reg_exp=\"x\" ikemen_reg_exp=\"x|z\" engine=\"mugen\"/>\n"
            "<consts name=\"const\"><const name=\"data.life\"/><const name=\"size.depth\" engine=\"ikemen\"/></consts>\n"
            "<consts name=\"gethitvar\"><const name=\"fall\"/></consts>\n"
            "<group name=\"Map\" engine=\"ikemen\"/>\n"
            "<info name=\"ikemenversion\" type=\"float\" engine=\"ikemen\"/>\n"
            "<state_common name=\"redirectid\" type=\"exp\" engine=\"ikemen\"/>\n")));
        const QSyntaxController *hitDef = controller(properties.stateControllers(), "HitDef");
        const QSyntaxController *modify = controller(properties.stateControllers(), "ModifyHitDef");
        QVERIFY(hitDef && modify);
        QVERIFY(!hitDef->ikemenOnly);
        QVERIFY(modify->ikemenOnly);
        QVERIFY(hitDef->params.value(QStringLiteral("score")).ikemenOnly);
        QVERIFY(!hitDef->params.value(QStringLiteral("attr")).ikemenOnly);
        QCOMPARE(hitDef->params.value(QStringLiteral("attr")).extra, QStringLiteral("a"));
        QCOMPARE(hitDef->params.value(QStringLiteral("attr")).ikemenExtra, QStringLiteral("a|p"));
        // `like` finds its model as `type =` does; its own parameters win, the rest keep their marks.
        QCOMPARE(modify->params.keys(), (QStringList{QStringLiteral("attr"), QStringLiteral("score")}));
        QCOMPARE(modify->params.value(QStringLiteral("attr")).type, int(QSyntaxParam::Exp));
        QVERIFY(modify->params.value(QStringLiteral("score")).ikemenOnly);
        // Only a model read before, in the same list.
        QVERIFY(controller(properties.stateControllers(), "Alone")->params.isEmpty());
        QVERIFY(properties.bgControllers().at(0)->params.isEmpty());

        QVERIFY(properties.triggers().value(QStringLiteral("RedLife")).ikemenOnly);
        QVERIFY(!properties.triggers().value(QStringLiteral("Vel")).ikemenOnly);
        QCOMPARE(properties.triggers().value(QStringLiteral("Vel")).ikemenExtra, QStringLiteral("x|z"));
        QCOMPARE(properties.consts().value(QStringLiteral("const")), QStringList{QStringLiteral("data.life")});
        QCOMPARE(properties.ikemenConsts().keys(), QStringList{QStringLiteral("const")});
        QCOMPARE(properties.ikemenConsts().value(QStringLiteral("const")), QStringList{QStringLiteral("size.depth")});
        QCOMPARE(properties.groups().keys(), QStringList{QStringLiteral("map")});
        QVERIFY(properties.groups().value(QStringLiteral("map")).ikemenOnly);
        QVERIFY(properties.section(QMugenSyntaxProperties::Info).value(QStringLiteral("ikemenversion")).ikemenOnly);

        // Completion offers the target's words only.
        QCOMPARE(properties.completionNames(TargetMugen),
                 (QStringList{QStringLiteral("Alone"), QStringLiteral("HitDef"), QStringLiteral("Later"),
                              QStringLiteral("Vel"), QStringLiteral("video")}));
        QCOMPARE(properties.completionNames(TargetIkemen),
                 (QStringList{QStringLiteral("Alone"), QStringLiteral("HitDef"), QStringLiteral("ikemenversion"),
                              QStringLiteral("Later"), QStringLiteral("ModifyHitDef"), QStringLiteral("redirectid"),
                              QStringLiteral("RedLife"), QStringLiteral("Vel"), QStringLiteral("video")}));
    }

    void failedLoadKeepsEarlierContent_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<bool>("exists");
        QTest::newRow("missing file") << QByteArray() << false;
        QTest::newRow("empty file") << QByteArray() << true;
        QTest::newRow("unclosed element") << QByteArray("<syntax><trigger name=\"Broken\" type=\"exp\">") << true;
        QTest::newRow("text, not XML") << QByteArray("[Statedef 0]\ntype = S\n") << true;
        QTest::newRow("two roots") << QByteArray("<syntax/><syntax/>") << true;
    }

    void failedLoadKeepsEarlierContent()
    {
        QFETCH(QByteArray, content);
        QFETCH(bool, exists);
        QMugenSyntaxProperties properties;
        QVERIFY(properties.load(syntaxFile("<state_controller name=\"ChangeState\"/>\n"
                                           "<trigger name=\"Time\" type=\"nilexp\"/>\n")));
        const QString path = m_dir.filePath(QStringLiteral("broken%1.xml").arg(++m_files));
        if (exists)
            QVERIFY(writeFile(path, content));

        QVERIFY(!properties.load(path));
        QCOMPARE(properties.stateControllers().size(), 1);
        QCOMPARE(properties.stateControllers().at(0)->name, QStringLiteral("ChangeState"));
        QCOMPARE(properties.triggers().keys(), QStringList{QStringLiteral("Time")});
    }

    void anotherRootIsAnEmptyDescription()
    {
        QMugenSyntaxProperties fresh;
        const QString path = m_dir.filePath(QStringLiteral("completion.xml"));
        QVERIFY(writeFile(path, "<!DOCTYPE ZNLCompletionML>\n<completion>\n"
                                "  <state_controller name=\"Inside\"/>\n  <trigger name=\"Inside\" type=\"exp\"/>\n"
                                "</completion>\n"));
        QVERIFY(fresh.load(path));
        QVERIFY(fresh.stateControllers().isEmpty());
        QVERIFY(fresh.triggers().isEmpty());
        QVERIFY(fresh.completionNames().isEmpty());

        // Over an earlier description it still empties the controller lists.
        QMugenSyntaxProperties loaded;
        QVERIFY(loaded.load(syntaxFile("<state_controller name=\"ChangeState\"/>\n")));
        QVERIFY(loaded.load(path));
        QVERIFY(loaded.stateControllers().isEmpty());
    }

    void controllerListsAndCompletionNames()
    {
        QMugenSyntaxProperties properties;
        QVERIFY(properties.load(syntaxFile(
            "<state_controller name=\"VelSet\"/>\n<state_controller name=\"ChangeAnim\"/>\n"
            "<bg_control name=\"VelSet\"/>\n<bg_controller name=\"normal\"/>\n<bg_control name=\"Anim\"/>\n"
            "<fnt_def name=\"bitmap\"/>\n<bg_controller name=\"Anim\"/>\n"
            "<trigger name=\"Anim\" type=\"nilexp\"/>\n<trigger name=\"AnimElem\" type=\"opint\"/>\n"
            "<bg_controller name=\"normal\"><param name=\"spriteno\" type=\"int2\"/></bg_controller>\n"
            "<bgdef name=\"spr\" type=\"value\"/>\n<data name=\"anim\" type=\"int\"/>\n"
            "<scene name=\"bgm\" type=\"value\"/>\n<scene_def name=\"bgm\" type=\"value\"/>\n")));
        // A `type =` line finds its controller by index, so the order is the file's.
        QCOMPARE(properties.bgControls().at(1)->name, QStringLiteral("Anim"));
        QCOMPARE(QMugenSyntaxProperties::indexOf(properties.bgControls(), QStringLiteral("VELSET")), 0);
        QCOMPARE(QMugenSyntaxProperties::indexOf(properties.bgControllers(), QStringLiteral("Anim")), 1);
        QCOMPARE(QMugenSyntaxProperties::indexOf(properties.bgControllers(), QStringLiteral("parallax")), -1);
        QCOMPARE(QMugenSyntaxProperties::indexOf(properties.stateControllers(), QStringLiteral("changeanim")), 1);
        // One "anim" however many lists hold it; parameters of controllers are not offered here.
        QCOMPARE(properties.completionNames(),
                 (QStringList{QStringLiteral("Anim"), QStringLiteral("AnimElem"), QStringLiteral("bgm"),
                              QStringLiteral("bitmap"), QStringLiteral("ChangeAnim"), QStringLiteral("normal"),
                              QStringLiteral("spr"), QStringLiteral("VelSet")}));
    }
};

QTEST_GUILESS_MAIN(tst_QMugenSyntaxProperties)
#include "tst_qmugensyntaxproperties.moc"
