// The vocabulary file data/syntax_mugen.xml, against lists compiled from the
// engine's own documents (sctrls.html, trigger.html, bgs.html, cns.html and the
// change lists of 2002.04.14, 1.0 and 1.1). That the engine's own files pass
// through it without an error is tst_qmugensyntaxprocessor's to show.

#include "core/text/qmugensyntaxproperties.h"
#include "testsupport.h"

#include <QDir>
#include <QDomDocument>
#include <QRegExp>
#include <QtTest>

using TestSupport::readFile;

namespace {

constexpr quint32 V10 = 0x1000000;
constexpr quint32 V11 = 0x1010000;

QString sourceFile()
{
    // TEST_DATA_DIR is tests/data of the source tree; the file lives in data/.
    return QDir::cleanPath(QStringLiteral(TEST_DATA_DIR "/../../data/syntax_mugen.xml"));
}

// Every place of the file that holds a parameter, with a name to report it by.
struct NamedParam
{
    QString where;
    QSyntaxParam param;
};

QList<NamedParam> allParams(const QMugenSyntaxProperties &p)
{
    QList<NamedParam> all;
    const QList<QPair<const char *, const QList<QSyntaxController *> *>> lists = {
        {"state_controller", &p.stateControllers()}, {"bg_controller", &p.bgControllers()},
        {"bg_control", &p.bgControls()}, {"fnt_def", &p.fontDefs()}};
    for (const auto &list : lists) {
        for (const QSyntaxController *c : *list.second) {
            for (auto it = c->params.cbegin(); it != c->params.cend(); ++it)
                all.append({QStringLiteral("%1 %2: %3").arg(QLatin1String(list.first), c->name, it.key()), it.value()});
        }
    }
    for (int s = 0; s < QMugenSyntaxProperties::SectionCount; ++s) {
        const auto section = QMugenSyntaxProperties::Section(s);
        const auto &keys = p.section(section);
        for (auto it = keys.cbegin(); it != keys.cend(); ++it)
            all.append({QMugenSyntaxProperties::sectionTag(section) + QStringLiteral(": ") + it.key(), it.value()});
    }
    for (auto it = p.triggers().cbegin(); it != p.triggers().cend(); ++it)
        all.append({QStringLiteral("trigger: ") + it.key(), it.value()});
    return all;
}

// Finds the description of a key as the checker does: plain names without
// regard to case, `name(...)` keys by their name, pattern keys by pattern.
const QSyntaxParam *findKey(const QMap<QString, QSyntaxParam> &keys, const QString &key)
{
    const int paren = key.indexOf(QLatin1Char('('));
    const QString name = (paren < 0 ? key : key.left(paren)).trimmed();
    for (auto it = keys.cbegin(); it != keys.cend(); ++it) {
        const QSyntaxParam &p = it.value();
        if (p.format == QSyntaxParam::RegExp) {
            if (QRegExp(p.extra, Qt::CaseInsensitive).exactMatch(key))
                return &p;
        } else if (it.key().compare(name, Qt::CaseInsensitive) == 0
                   && (p.format == QSyntaxParam::IdExp) == (paren >= 0)) {
            return &p;
        }
    }
    return nullptr;
}

} // namespace

class tst_SyntaxMugen : public QObject
{
    Q_OBJECT

private:
    QMugenSyntaxProperties m_properties;

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(QFileInfo::exists(sourceFile()), qPrintable(sourceFile()));
        QVERIFY(m_properties.load(sourceFile()));
    }

    void isWellFormedAndShipped()
    {
        const QByteArray bytes = readFile(sourceFile());
        QDomDocument document;
        QString message;
        int line = 0;
        int column = 0;
        QVERIFY2(document.setContent(bytes, &message, &line, &column),
                 qPrintable(QStringLiteral("%1 at %2:%3").arg(message).arg(line).arg(column)));
        QCOMPARE(document.doctype().name(), QStringLiteral("ZNLSyntaxML"));
        QCOMPARE(document.documentElement().tagName(), QStringLiteral("syntax"));

        // The programs read the copy beside them: it must be this file.
        const QString shipped = TestSupport::binDir() + QStringLiteral("/syntax_mugen.xml");
        if (QFileInfo::exists(shipped))
            QVERIFY2(readFile(shipped) == bytes, "the build copy differs from data/syntax_mugen.xml");
    }

    void everyAttributeIsKnown()
    {
        QDomDocument document;
        QVERIFY(document.setContent(readFile(sourceFile())));
        const QStringList controllerTags = {QStringLiteral("state_controller"), QStringLiteral("bg_controller"),
                                            QStringLiteral("bg_control"), QStringLiteral("fnt_def")};
        QStringList keyTags = {QStringLiteral("trigger")};
        for (int s = 0; s < QMugenSyntaxProperties::SectionCount; ++s)
            keyTags << QMugenSyntaxProperties::sectionTag(QMugenSyntaxProperties::Section(s));
        const QStringList attributes = {QStringLiteral("name"), QStringLiteral("type"), QStringLiteral("minver"),
                                        QStringLiteral("deprecated"), QStringLiteral("format"), QStringLiteral("max"),
                                        QStringLiteral("reg_exp"), QStringLiteral("fmt_reg_exp"),
                                        QStringLiteral("engine"), QStringLiteral("ikemen_reg_exp"),
                                        QStringLiteral("arg_reg_exp")};
        const QStringList deprecations = {QStringLiteral("1.0"), QStringLiteral("1.1"), QStringLiteral("2002.04.14")};

        QStringList problems;
        auto checkKey = [&](const QDomElement &e, const QString &where) {
            const QDomNamedNodeMap map = e.attributes();
            for (int i = 0; i < map.count(); ++i) {
                if (!attributes.contains(map.item(i).nodeName()))
                    problems << where + QStringLiteral(": attribute ") + map.item(i).nodeName();
            }
            if (e.hasAttribute(QStringLiteral("type"))) {
                if (QSyntaxProperties::typeFromName(e.attribute(QStringLiteral("type"))) == QSyntaxParam::Unknown)
                    problems << where + QStringLiteral(": type ") + e.attribute(QStringLiteral("type"));
            } else if (e.attribute(QStringLiteral("format")) != QLatin1String("regexp") || e.tagName() == QLatin1String("trigger")) {
                // Only a pattern key, which has no room for a value pattern, goes without a type.
                problems << where + QStringLiteral(": no type");
            }
            if (e.hasAttribute(QStringLiteral("minver")) && !QSyntaxProperties::packVersion(e.attribute(QStringLiteral("minver"))))
                problems << where + QStringLiteral(": minver ") + e.attribute(QStringLiteral("minver"));
            if (e.hasAttribute(QStringLiteral("deprecated")) && !deprecations.contains(e.attribute(QStringLiteral("deprecated"))))
                problems << where + QStringLiteral(": deprecated ") + e.attribute(QStringLiteral("deprecated"));
            // Ikemen GO's wider values widen a value pattern; argument words go with bracketed arguments.
            if (e.hasAttribute(QStringLiteral("ikemen_reg_exp")) && !e.hasAttribute(QStringLiteral("reg_exp")))
                problems << where + QStringLiteral(": ikemen_reg_exp without reg_exp");
            if (e.hasAttribute(QStringLiteral("arg_reg_exp")) && e.tagName() != QLatin1String("trigger"))
                problems << where + QStringLiteral(": arg_reg_exp of no trigger");
        };
        // The only engine named is Ikemen GO; without the mark an item is M.U.G.E.N.'s.
        auto checkEngine = [&](const QDomElement &e, const QString &where) {
            if (e.hasAttribute(QStringLiteral("engine")) && e.attribute(QStringLiteral("engine")) != QLatin1String("ikemen"))
                problems << where + QStringLiteral(": engine ") + e.attribute(QStringLiteral("engine"));
        };
        QMap<QString, QStringList> controllersRead;

        for (QDomElement e = document.documentElement().firstChildElement(); !e.isNull(); e = e.nextSiblingElement()) {
            const QString where = e.tagName() + QLatin1Char(' ') + e.attribute(QStringLiteral("name"));
            checkEngine(e, where);
            if (controllerTags.contains(e.tagName())) {
                const QDomNamedNodeMap map = e.attributes();
                for (int i = 0; i < map.count(); ++i) {
                    const QString attribute = map.item(i).nodeName();
                    if (attribute != QLatin1String("name") && attribute != QLatin1String("minver")
                        && attribute != QLatin1String("deprecated") && attribute != QLatin1String("engine")
                        && attribute != QLatin1String("like"))
                        problems << where + QStringLiteral(": attribute ") + attribute;
                }
                // A controller is like one read before it in its own list.
                QStringList &read = controllersRead[e.tagName()];
                if (e.hasAttribute(QStringLiteral("like")) && !read.contains(e.attribute(QStringLiteral("like"))))
                    problems << where + QStringLiteral(": like ") + e.attribute(QStringLiteral("like"));
                read << e.attribute(QStringLiteral("name"));
                for (QDomElement p = e.firstChildElement(); !p.isNull(); p = p.nextSiblingElement()) {
                    if (p.tagName() != QLatin1String("param"))
                        problems << where + QStringLiteral(": child ") + p.tagName();
                    else
                        checkKey(p, where + QLatin1Char('.') + p.attribute(QStringLiteral("name")));
                    checkEngine(p, where + QLatin1Char('.') + p.attribute(QStringLiteral("name")));
                }
            } else if (keyTags.contains(e.tagName())) {
                checkKey(e, where);
            } else if (e.tagName() == QLatin1String("group")) {
                if (e.attributes().count() != 2 || !e.hasAttribute(QStringLiteral("engine")))
                    problems << where + QStringLiteral(": a group has its name and its engine");
            } else if (e.tagName() == QLatin1String("consts")) {
                for (QDomElement c = e.firstChildElement(); !c.isNull(); c = c.nextSiblingElement())
                    checkEngine(c, where + QLatin1Char('.') + c.attribute(QStringLiteral("name")));
            } else {
                problems << where + QStringLiteral(": unknown element");
            }
        }
        QVERIFY2(problems.isEmpty(), qPrintable(problems.join(QLatin1Char('\n'))));
    }

    void everyPatternCompilesInLowerCase()
    {
        QStringList problems;
        for (const NamedParam &n : allParams(m_properties)) {
            const QSyntaxParam &p = n.param;
            if (p.format == QSyntaxParam::RegExp) {
                // A key pattern takes the place of any value pattern or count.
                const QRegExp key(p.extra, Qt::CaseInsensitive);
                if (!key.isValid())
                    problems << n.where + QStringLiteral(": key pattern: ") + key.errorString();
                else if (!key.exactMatch(n.where.section(QStringLiteral(": "), -1)))
                    problems << n.where + QStringLiteral(": the name is not one its pattern takes");
                if (QSyntaxProperties::typeUsesPattern(p.type) || p.type == QSyntaxParam::IntN)
                    problems << n.where + QStringLiteral(": its grammar needs the place of the key pattern");
            } else if (QSyntaxProperties::typeUsesPattern(p.type)) {
                // Values are lower-cased before they are matched; so are the words of arguments.
                if (p.extra.isEmpty())
                    problems << n.where + QStringLiteral(": no value pattern");
                for (const QString &pattern : {p.extra, p.ikemenExtra}) {
                    const QRegExp value(pattern);
                    if (!value.isValid())
                        problems << n.where + QStringLiteral(": value pattern: ") + value.errorString();
                    if (pattern != pattern.toLower())
                        problems << n.where + QStringLiteral(": upper case in ") + pattern;
                }
            } else if (!p.extra.isEmpty() && p.type >= QSyntaxParam::Exp && p.type <= QSyntaxParam::Exp3) {
                const QRegExp words(p.extra);
                if (!words.isValid() || p.extra != p.extra.toLower())
                    problems << n.where + QStringLiteral(": argument words ") + p.extra;
            } else if (p.type == QSyntaxParam::IntN && p.extra.toInt() < 1) {
                problems << n.where + QStringLiteral(": max ") + p.extra;
            }
        }
        QVERIFY2(problems.isEmpty(), qPrintable(problems.join(QLatin1Char('\n'))));
    }

    void stateControllers_data()
    {
        QTest::addColumn<quint32>("minver");
        QTest::addColumn<QString>("deprecated");
        // sctrls.html of 1.1; RemapPal and VictoryQuote came with 1.0, 1.1 added none.
        const char *const always[] = {
            "AfterImage", "AfterImageTime", "AllPalFX", "AngleAdd", "AngleDraw", "AngleMul", "AngleSet",
            "AppendToClipboard", "AssertSpecial", "AttackDist", "AttackMulSet", "BGPalFX", "BindToParent",
            "BindToRoot", "BindToTarget", "ChangeAnim", "ChangeAnim2", "ChangeState", "ClearClipboard",
            "CtrlSet", "DefenceMulSet", "DestroySelf", "DisplayToClipboard", "EnvColor", "EnvShake",
            "Explod", "ExplodBindTime", "ForceFeedback", "FallEnvShake", "Gravity", "Helper", "HitAdd",
            "HitBy", "HitDef", "HitFallDamage", "HitFallSet", "HitFallVel", "HitOverride", "LifeAdd",
            "LifeSet", "ModifyExplod", "MoveHitReset", "NotHitBy", "Null", "Offset", "PalFX",
            "ParentVarAdd", "ParentVarSet", "Pause", "PlayerPush", "PlaySnd", "PosAdd", "PosFreeze",
            "PosSet", "PowerAdd", "PowerSet", "Projectile", "RemoveExplod", "ReversalDef", "ScreenBound",
            "SelfState", "SprPriority", "StateTypeSet", "SndPan", "StopSnd", "SuperPause", "TargetBind",
            "TargetDrop", "TargetFacing", "TargetLifeAdd", "TargetPowerAdd", "TargetState", "TargetVelAdd",
            "TargetVelSet", "Trans", "Turn", "VarAdd", "VarRandom", "VarRangeSet", "VarSet", "VelAdd",
            "VelMul", "VelSet", "Width",
        };
        for (const char *name : always)
            QTest::newRow(name) << 0u << QString();
        QTest::newRow("RemapPal") << V10 << QString();
        QTest::newRow("VictoryQuote") << V10 << QString();
        // "Obsolete" in the 2002 documents already; MakeDust since 1.0.
        QTest::newRow("GameMakeAnim") << 0u << QStringLiteral("2002.04.14");
        QTest::newRow("HitVelSet") << 0u << QStringLiteral("2002.04.14");
        QTest::newRow("MakeDust") << 0u << QStringLiteral("1.0");
    }

    void stateControllers()
    {
        QFETCH(quint32, minver);
        QFETCH(QString, deprecated);
        const QString name = QString::fromLatin1(QTest::currentDataTag());
        const int index = QMugenSyntaxProperties::indexOf(m_properties.stateControllers(), name);
        QVERIFY2(index >= 0, qPrintable(name));
        const QSyntaxController *c = m_properties.stateControllers().at(index);
        // Spelled as the documents spell it.
        QCOMPARE(c->name, name);
        QCOMPARE(c->minVersion, minver);
        QCOMPARE(c->deprecatedText, deprecated);
    }

    void parametersThatChangedWithVersions_data()
    {
        QTest::addColumn<QString>("controller");
        QTest::addColumn<QString>("param");
        QTest::addColumn<quint32>("minver");
        QTest::addColumn<QString>("deprecated");
        // The parameters that differ between sctrls.html of 2002, 1.0 and 1.1.
        QTest::newRow("HitDef forcenofall") << "HitDef" << "forcenofall" << V10 << QString();
        QTest::newRow("Projectile forcenofall") << "Projectile" << "forcenofall" << V10 << QString();
        QTest::newRow("PlaySnd volumescale") << "PlaySnd" << "volumescale" << V10 << QString();
        QTest::newRow("PlaySnd volume") << "PlaySnd" << "volume" << 0u << "1.0";
        QTest::newRow("Helper helpertype") << "Helper" << "helpertype" << 0u << "1.0";
        QTest::newRow("DestroySelf recursive") << "DestroySelf" << "recursive" << V11 << QString();
        QTest::newRow("DestroySelf removeexplods") << "DestroySelf" << "removeexplods" << V11 << QString();
        QTest::newRow("Explod space") << "Explod" << "space" << V11 << QString();
        QTest::newRow("Explod bindID") << "Explod" << "bindID" << V11 << QString();
        QTest::newRow("Explod angle") << "Explod" << "angle" << V11 << QString();
        QTest::newRow("Explod yangle") << "Explod" << "yangle" << V11 << QString();
        QTest::newRow("Explod xangle") << "Explod" << "xangle" << V11 << QString();
        QTest::newRow("Explod remappal") << "Explod" << "remappal" << V11 << QString();
        QTest::newRow("Explod postype") << "Explod" << "postype" << 0u << "1.1";
        QTest::newRow("Explod random") << "Explod" << "random" << 0u << "1.1";
        QTest::newRow("Explod supermove") << "Explod" << "supermove" << 0u << "2002.04.14";
        QTest::newRow("ModifyExplod space") << "ModifyExplod" << "space" << V11 << QString();
        QTest::newRow("Helper remappal") << "Helper" << "remappal" << V11 << QString();
        QTest::newRow("Projectile ownpal") << "Projectile" << "ownpal" << V11 << QString();
        QTest::newRow("Projectile remappal") << "Projectile" << "remappal" << V11 << QString();
        QTest::newRow("HitDef attack.width") << "HitDef" << "attack.width" << 0u << "2002.04.14";
        QTest::newRow("HitDef attr") << "HitDef" << "attr" << 0u << QString();
        QTest::newRow("Projectile projshadow") << "Projectile" << "projshadow" << 0u << QString();
        QTest::newRow("Projectile afterimage.palmul") << "Projectile" << "afterimage.palmul" << 0u << QString();
        QTest::newRow("ReversalDef reversal.attr") << "ReversalDef" << "reversal.attr" << 0u << QString();
        QTest::newRow("VarSet var()") << "VarSet" << "var" << 0u << QString();
    }

    void parametersThatChangedWithVersions()
    {
        QFETCH(QString, controller);
        QFETCH(QString, param);
        QFETCH(quint32, minver);
        QFETCH(QString, deprecated);
        const int index = QMugenSyntaxProperties::indexOf(m_properties.stateControllers(), controller);
        QVERIFY(index >= 0);
        const auto &params = m_properties.stateControllers().at(index)->params;
        QVERIFY2(params.contains(param), qPrintable(param));
        QCOMPARE(params.value(param).minVersion, minver);
        QCOMPARE(params.value(param).deprecatedText, deprecated);
    }

    void triggers_data()
    {
        QTest::addColumn<quint32>("minver");
        // The index of trigger.html of 1.1, with the spellings Lose and Win name in their details.
        const char *const always[] = {
            "Abs", "Acos", "Alive", "Anim", "AnimElem", "AnimElemNo", "AnimElemTime", "AnimExist",
            "AnimTime", "Asin", "Atan", "AuthorName", "BackEdgeBodyDist", "BackEdgeDist", "CanRecover",
            "Ceil", "Command", "Const", "Cos", "Ctrl", "DrawGame", "E", "Exp", "Facing", "Floor",
            "FrontEdgeBodyDist", "FrontEdgeDist", "FVar", "GameTime", "GetHitVar", "HitCount",
            "HitDefAttr", "HitFall", "HitOver", "HitPauseTime", "HitShakeOver", "HitVel", "ID", "IfElse",
            "InGuardDist", "IsHelper", "IsHomeTeam", "Life", "LifeMax", "Ln", "Log", "Lose", "LoseKO",
            "LoseTime", "MatchNo", "MatchOver", "MoveContact", "MoveGuarded", "MoveHit", "MoveType",
            "MoveReversed", "Name", "NumEnemy", "NumExplod", "NumHelper", "NumPartner", "NumProj",
            "NumProjID", "NumTarget", "P1Name", "P2BodyDist", "P2Dist", "P2Life", "P2MoveType", "P2Name",
            "P2StateNo", "P2StateType", "P3Name", "P4Name", "PalNo", "ParentDist", "Pi", "Pos", "Power",
            "PowerMax", "PlayerIDExist", "PrevStateNo", "ProjCancelTime", "ProjContact", "ProjContactTime",
            "ProjGuarded", "ProjGuardedTime", "ProjHit", "ProjHitTime", "Random", "RootDist", "RoundNo",
            "RoundsExisted", "RoundState", "ScreenPos", "SelfAnimExist", "Sin", "StateNo", "StateType",
            "SysFVar", "SysVar", "Tan", "TeamMode", "TeamSide", "TicksPerSecond", "Time", "TimeMod",
            "UniqHitCount", "Var", "Vel", "Win", "WinKO", "WinTime", "WinPerfect",
        };
        for (const char *name : always)
            QTest::newRow(name) << 0u;
        const char *const since10[] = {"AILevel", "Cond", "Const240p", "Const480p", "Const720p",
                                       "GameHeight", "GameWidth", "StageVar"};
        for (const char *name : since10)
            QTest::newRow(name) << V10;
        const char *const since11[] = {"BackEdge", "BottomEdge", "CameraPos", "CameraZoom", "FrontEdge",
                                       "LeftEdge", "RightEdge", "ScreenHeight", "ScreenWidth", "TopEdge"};
        for (const char *name : since11)
            QTest::newRow(name) << V11;
    }

    void triggers()
    {
        QFETCH(quint32, minver);
        const QString name = QString::fromLatin1(QTest::currentDataTag());
        QVERIFY2(m_properties.triggers().contains(name), qPrintable(name));
        const QSyntaxParam t = m_properties.triggers().value(name);
        QCOMPARE(t.minVersion, minver);
        // Every trigger has a grammar, be it "nothing follows".
        QVERIFY(t.type >= QSyntaxParam::Exp && t.type < QSyntaxParam::Unknown);
    }

    void nothingBeyondTheDocuments()
    {
        // 89 controllers in the documents of 1.1, each once; 132 documented
        // trigger names, and StateTime, which kfm.cmd uses though no document
        // has it. Beyond them, only what Ikemen GO adds, marked as such.
        QStringList names;
        int mugen = 0;
        for (const QSyntaxController *c : m_properties.stateControllers()) {
            names << c->name.toLower();
            mugen += c->ikemenOnly ? 0 : 1;
        }
        names.removeDuplicates();
        QCOMPARE(names.size(), m_properties.stateControllers().size());
        QCOMPARE(mugen, 89);
        // Ikemen GO's own come after them: the block states of M.U.G.E.N.'s stay.
        for (int i = 0; i < 89; ++i)
            QVERIFY2(!m_properties.stateControllers().at(i)->ikemenOnly, qPrintable(names.at(i)));
        QStringList mugenTriggers;
        for (auto it = m_properties.triggers().cbegin(); it != m_properties.triggers().cend(); ++it) {
            if (!it.value().ikemenOnly)
                mugenTriggers << it.key();
        }
        QCOMPARE(mugenTriggers.size(), 133);
        QVERIFY(m_properties.triggers().contains(QStringLiteral("StateTime")));
        QCOMPARE(m_properties.triggers().value(QStringLiteral("TimeMod")).deprecatedText, QStringLiteral("2002.04.14"));
    }

    void constantNames()
    {
        const auto &consts = m_properties.consts();
        // A trigger of the const grammar finds its names under its lower-cased name.
        for (auto it = m_properties.triggers().cbegin(); it != m_properties.triggers().cend(); ++it) {
            if (it.value().type == QSyntaxParam::Const)
                QVERIFY2(!consts.value(it.key().toLower()).isEmpty(), qPrintable(it.key()));
        }
        for (auto it = consts.cbegin(); it != consts.cend(); ++it) {
            for (const QString &name : it.value())
                QVERIFY2(name == name.toLower(), qPrintable(name));
        }
        // 49 Const names in 2002, 74 in 1.0 (with jump.changeanim.threshold); 36 GetHitVar names.
        QCOMPARE(consts.value(QStringLiteral("const")).size(), 74);
        QCOMPARE(consts.value(QStringLiteral("gethitvar")).size(), 36);
        QVERIFY(consts.value(QStringLiteral("const")).contains(QStringLiteral("data.fall.defence_mul")));
        QVERIFY(consts.value(QStringLiteral("const")).contains(QStringLiteral("movement.down.bounce.offset.y")));
        QVERIFY(consts.value(QStringLiteral("gethitvar")).contains(QStringLiteral("fall.envshake.phase")));
        QCOMPARE(consts.value(QStringLiteral("stagevar")),
                 (QStringList{QStringLiteral("info.name"), QStringLiteral("info.displayname"), QStringLiteral("info.author")}));
    }

    void sectionKeys_data()
    {
        QTest::addColumn<int>("section");
        QTest::addColumn<QString>("key");
        QTest::addColumn<quint32>("minver");
        QTest::addColumn<QString>("deprecated");
        using P = QMugenSyntaxProperties;
        // bgs.html marks the keys "(Version 1.0 and higher)" and "(Version 1.1 and higher)";
        // kfm.cns marks the constants of 1.0 with **MUGEN 1.0**.
        QTest::newRow("files sprite") << int(P::Files) << "sprite" << 0u << QString();
        QTest::newRow("files pal12") << int(P::Files) << "pal12" << 0u << QString();
        QTest::newRow("arcade ending") << int(P::Arcade) << "ending.storyboard" << 0u << QString();
        QTest::newRow("data volume") << int(P::Data) << "volume" << 0u << "1.0";
        QTest::newRow("data volumescale") << int(P::Data) << "volumescale" << V10 << QString();
        QTest::newRow("size draw.offset") << int(P::Size) << "draw.offset" << 0u << QString();
        QTest::newRow("velocity airrecover.mul") << int(P::Velocity) << "air.gethit.airrecover.mul" << V10 << QString();
        QTest::newRow("movement down.bounce.offset") << int(P::Movement) << "down.bounce.offset" << V10 << QString();
        QTest::newRow("camera tension") << int(P::Camera) << "tension" << 0u << QString();
        QTest::newRow("camera cuthigh") << int(P::Camera) << "cuthigh" << V10 << QString();
        QTest::newRow("camera overdrawlow") << int(P::Camera) << "overdrawlow" << V10 << QString();
        QTest::newRow("camera tensionhigh") << int(P::Camera) << "tensionhigh" << V11 << QString();
        QTest::newRow("camera zoomin") << int(P::Camera) << "zoomin" << V11 << QString();
        QTest::newRow("camera startzoom") << int(P::Camera) << "startzoom" << V11 << QString();
        QTest::newRow("playerinfo p1startz") << int(P::PlayerInfo) << "p1startz" << 0u << "1.0";
        QTest::newRow("bound screenleft") << int(P::Bound) << "screenleft" << 0u << QString();
        QTest::newRow("scaling topz") << int(P::Scaling) << "topz" << 0u << "2002.04.14";
        QTest::newRow("stageinfo localcoord") << int(P::StageInfo) << "localcoord" << V10 << QString();
        QTest::newRow("stageinfo resetBG") << int(P::StageInfo) << "resetBG" << 0u << QString();
        QTest::newRow("shadow color") << int(P::Shadow) << "color" << 0u << "1.1";
        QTest::newRow("shadow xshear") << int(P::Shadow) << "xshear" << V11 << QString();
        QTest::newRow("reflection reflect") << int(P::Reflection) << "reflect" << 0u << QString();
        QTest::newRow("music bgvolume") << int(P::Music) << "bgvolume" << 0u << "1.0";
        QTest::newRow("music bgmloopend") << int(P::Music) << "bgmloopend" << V10 << QString();
        QTest::newRow("bgdef spr") << int(P::BgDef) << "spr" << 0u << QString();
        QTest::newRow("bgctrldef looptime") << int(P::BgControlDef) << "looptime" << 0u << QString();
        QTest::newRow("fnt fntversion") << int(P::Fnt) << "fntversion" << 0u << QString();
        QTest::newRow("scenedef font9") << int(P::SceneDef) << "font9" << 0u << QString();
        QTest::newRow("scene layer99.anim") << int(P::Scene) << "layer99.anim" << 0u << QString();
        QTest::newRow("scene sound12.value") << int(P::Scene) << "sound12.value" << 0u << QString();
        QTest::newRow("scene end.time") << int(P::Scene) << "end.time" << 0u << QString();
    }

    void sectionKeys()
    {
        QFETCH(int, section);
        QFETCH(QString, key);
        QFETCH(quint32, minver);
        QFETCH(QString, deprecated);
        const QSyntaxParam *p = findKey(m_properties.section(QMugenSyntaxProperties::Section(section)), key);
        QVERIFY2(p, qPrintable(key));
        QCOMPARE(p->minVersion, minver);
        QCOMPARE(p->deprecatedText, deprecated);
    }

    void backgroundsAndFonts()
    {
        const auto names = [](const QList<QSyntaxController *> &list) {
            QStringList out;
            for (const QSyntaxController *c : list)
                out << c->name;
            return out;
        };
        // And, after them, Ikemen GO's video elements, PalFX and RemapPal.
        QCOMPARE(names(m_properties.bgControllers()),
                 (QStringList{QStringLiteral("normal"), QStringLiteral("anim"), QStringLiteral("parallax"), QStringLiteral("dummy"),
                              QStringLiteral("video")}));
        // Enable as well as the documented Enabled: stages write it.
        QCOMPARE(names(m_properties.bgControls()),
                 (QStringList{QStringLiteral("null"), QStringLiteral("Visible"), QStringLiteral("Enabled"),
                              QStringLiteral("Enable"), QStringLiteral("VelSet"), QStringLiteral("VelAdd"),
                              QStringLiteral("PosSet"), QStringLiteral("PosAdd"), QStringLiteral("Anim"),
                              QStringLiteral("SinX"), QStringLiteral("SinY"), QStringLiteral("PalFX"),
                              QStringLiteral("RemapPal")}));
        QVERIFY(m_properties.bgControllers().at(4)->ikemenOnly);
        QVERIFY(!m_properties.bgControls().at(10)->ikemenOnly);
        QVERIFY(m_properties.bgControls().at(11)->ikemenOnly);
        QCOMPARE(names(m_properties.fontDefs()), (QStringList{QStringLiteral("bitmap"), QStringLiteral("truetype")}));

        // Every background controller takes its time and its element IDs.
        for (const QSyntaxController *c : m_properties.bgControls()) {
            QVERIFY2(c->params.contains(QStringLiteral("time")) && c->params.contains(QStringLiteral("ctrlID")),
                     qPrintable(c->name));
        }
        const QSyntaxController *parallax = m_properties.bgControllers().at(2);
        QCOMPARE(parallax->params.value(QStringLiteral("actionno")).minVersion, V11);
        QCOMPARE(parallax->params.value(QStringLiteral("yscalestart")).deprecatedText, QStringLiteral("1.1"));
        QCOMPARE(m_properties.bgControllers().at(0)->params.value(QStringLiteral("maskwindow")).minVersion, V11);
        QCOMPARE(m_properties.bgControllers().at(0)->params.value(QStringLiteral("window")).deprecatedText,
                 QStringLiteral("1.1"));
    }

    void valuePatterns_data()
    {
        QTest::addColumn<QString>("controller");
        QTest::addColumn<QString>("param");
        QTest::addColumn<QString>("value");
        QTest::addColumn<bool>("taken");
        // Values as the rest of the line, lower-cased, blanks as written.
        QTest::newRow("attr") << "HitDef" << "attr" << "s, na" << true;
        QTest::newRow("attr, no blanks") << "HitDef" << "attr" << "a,hp" << true;
        QTest::newRow("attr with two classes") << "HitDef" << "attr" << "s, na, sa" << false;
        QTest::newRow("attr without class") << "HitDef" << "attr" << "s" << false;
        QTest::newRow("hit attributes") << "NotHitBy" << "value" << "sca, na, sa, at" << true;
        QTest::newRow("hit attributes without state") << "NotHitBy" << "value" << ", na, ap" << true;
        QTest::newRow("states only") << "HitBy" << "value" << "sca" << true;
        QTest::newRow("empty reversal") << "ReversalDef" << "reversal.attr" << "" << true;
        QTest::newRow("unknown class") << "HitBy" << "value" << "s, nx" << false;
        QTest::newRow("hitflag") << "HitDef" << "hitflag" << "mafd" << true;
        QTest::newRow("hitflag minus") << "HitDef" << "hitflag" << "m-" << true;
        QTest::newRow("hitflag unknown letter") << "HitDef" << "hitflag" << "maq" << false;
        QTest::newRow("empty guardflag") << "HitDef" << "guardflag" << "" << true;
        QTest::newRow("animtype med") << "HitDef" << "animtype" << "med" << true;
        QTest::newRow("animtype diagup") << "Projectile" << "fall.animtype" << "diagup" << true;
        QTest::newRow("animtype unknown") << "HitDef" << "animtype" << "soft" << false;
        QTest::newRow("priority alone") << "HitDef" << "priority" << "4" << true;
        QTest::newRow("priority and class") << "HitDef" << "priority" << "3, miss" << true;
        QTest::newRow("priority unknown class") << "HitDef" << "priority" << "3, grab" << false;
        QTest::newRow("trans add1") << "Trans" << "trans" << "add1" << true;
        QTest::newRow("trans unknown") << "Trans" << "trans" << "alpha" << false;
        QTest::newRow("postype none") << "Explod" << "postype" << "none" << true;
        QTest::newRow("helper postype none") << "Helper" << "postype" << "none" << false;
        QTest::newRow("space") << "Explod" << "space" << "screen" << true;
        QTest::newRow("flag") << "AssertSpecial" << "flag" << "nobg" << true;
        QTest::newRow("flag unknown") << "AssertSpecial" << "flag2" << "nothing" << false;
        QTest::newRow("statetype") << "StateTypeSet" << "statetype" << "l" << true;
        QTest::newRow("physics u") << "StateTypeSet" << "physics" << "u" << false;
        QTest::newRow("waveform") << "ForceFeedback" << "waveform" << "sinesquare" << true;
        QTest::newRow("sound prefix") << "PlaySnd" << "value" << "f" << true;
        QTest::newRow("spark prefix") << "HitDef" << "sparkno" << "s" << true;
        QTest::newRow("no other prefix") << "HitDef" << "sparkno" << "x" << false;
    }

    void valuePatterns()
    {
        QFETCH(QString, controller);
        QFETCH(QString, param);
        QFETCH(QString, value);
        QFETCH(bool, taken);
        const int index = QMugenSyntaxProperties::indexOf(m_properties.stateControllers(), controller);
        QVERIFY(index >= 0);
        const QSyntaxParam p = m_properties.stateControllers().at(index)->params.value(param);
        QVERIFY(QSyntaxProperties::typeUsesPattern(p.type));
        QCOMPARE(QRegExp(p.extra).exactMatch(value), taken);
    }

    void ikemenAdditions_data()
    {
        QTest::addColumn<bool>("controller");
        // Ikemen GO's own controllers and triggers, from its compiler.
        const char *const controllers[] = {
            "AssertCommand", "AssertInput", "Camera", "Dialogue", "DizzyPointsAdd", "DizzyPointsSet", "DizzySet",
            "GetHitVarSet", "GroundLevelOffset", "GuardBreakSet", "GuardPointsAdd", "GuardPointsSet", "Height",
            "LifebarAction", "LoadFile", "MapAdd", "MapSet", "MatchRestart", "ModifyBGCtrl", "ModifyBgm",
            "ModifyHitDef", "ModifyPlayer", "ModifyProjectile", "ModifyReversalDef", "ModifySnd", "ModifyStageVar",
            "ParentMapAdd", "ParentMapSet", "PlayBgm", "PrintToConsole", "RedLifeAdd", "RedLifeSet", "RemapSprite",
            "RemoveText", "RootMapAdd", "RootMapSet", "RootVarAdd", "RootVarSet", "RoundTimeAdd", "RoundTimeSet",
            "SaveFile", "ScoreAdd", "ShadowOffset", "TagIn", "TagOut", "TargetAdd", "TargetDizzyPointsAdd",
            "TargetGuardPointsAdd", "TargetRedLifeAdd", "TargetScoreAdd", "TeamMapAdd", "TeamMapSet", "Text",
            "TransformClsn", "Zoom",
        };
        for (const char *name : controllers)
            QTest::newRow(name) << true;
        const char *const triggers[] = {
            "AILevelF", "AirJumpCount", "Alpha", "Angle", "AnimFrame", "AnimLength", "AnimPlayerNo", "Atan2",
            "Attack", "BGMVar", "BotBoundDist", "Clamp", "ClsnOverlap", "ClsnVar", "ComboCount", "ConsecutiveWins",
            "Const1080p", "Defence", "Deg", "DisplayName", "Dizzy", "DizzyPoints", "DizzyPointsMax", "DrawPalNo",
            "EnvShakeVar", "ExplodVar", "FightScreenVar", "FightTime", "FirstAttack", "Float", "GameMode",
            "GameOption", "GroundAngle", "GroundLevel", "GuardBreak", "GuardCount", "GuardPoints", "GuardPointsMax",
            "HelperID", "HelperIndexExist", "HelperName", "HitDefVar", "HitOverridden", "IkemenVersion",
            "InCustomAnim", "InCustomState", "Index", "InDialogue", "InputTime", "IntroState", "IsAsserted", "IsHost",
            "JugglePoints", "LastPlayerID", "LayerNo", "Lerp", "LocalCoord", "Map", "Max", "MemberNo", "Min",
            "MoveCountered", "MoveHitVar", "MugenVersion", "NumPlayer", "NumText", "Offset", "P5Name", "P6Name",
            "P7Name", "P8Name", "PalFXVar", "PauseTime", "Physics", "PlayerCount", "PlayerIndexExist", "PlayerNo",
            "PrevAnim", "PrevMoveType", "PrevStateType", "ProjVar", "Rad", "RandomRange", "RatioLevel",
            "ReceivedDamage", "ReceivedHits", "RedLife", "ReversalDefAttr", "Round", "RoundType", "RunOrder", "Scale",
            "Score", "ScoreTotal", "SelfCommand", "SelfStateNoExist", "Sign", "SprPriority", "StageBackEdgeDist",
            "StageConst", "StageFrontEdgeDist", "StageTime", "Standby", "TeamLeader", "TeamSize", "TimeElapsed",
            "TimeRemaining", "TimeTotal", "TopBoundDist", "WinHyper", "WinSpecial",
        };
        for (const char *name : triggers)
            QTest::newRow(name) << false;
    }

    void ikemenAdditions()
    {
        QFETCH(bool, controller);
        const QString name = QString::fromLatin1(QTest::currentDataTag());
        if (controller) {
            const int index = QMugenSyntaxProperties::indexOf(m_properties.stateControllers(), name);
            QVERIFY2(index >= 0, qPrintable(name));
            QCOMPARE(m_properties.stateControllers().at(index)->name, name);
            QVERIFY(m_properties.stateControllers().at(index)->ikemenOnly);
        } else {
            QVERIFY2(m_properties.triggers().contains(name), qPrintable(name));
            QVERIFY(m_properties.triggers().value(name).ikemenOnly);
        }
    }

    void ikemenWidensValues_data()
    {
        QTest::addColumn<QString>("controller");
        QTest::addColumn<QString>("param");
        QTest::addColumn<QString>("value");
        QTest::addColumn<bool>("mugen");
        QTest::addColumn<bool>("ikemen");
        // A controller's value as the rest of the line; a trigger's words (no parameter) joined by commas.
        QTest::newRow("Ikemen GO's flag") << "AssertSpecial" << "flag3" << "noailevel" << false << true;
        QTest::newRow("M.U.G.E.N.'s flag") << "AssertSpecial" << "flag" << "nobg" << true << true;
        QTest::newRow("no flag") << "AssertSpecial" << "flag2" << "nothing" << false << false;
        QTest::newRow("hitflag P") << "HitDef" << "hitflag" << "mafp" << false << true;
        QTest::newRow("guardflag P") << "ReversalDef" << "guardflag" << "mp" << false << true;
        QTest::newRow("helper projectile") << "Helper" << "helpertype" << "projectile" << false << true;
        QTest::newRow("trans alpha") << "Trans" << "trans" << "alpha" << false << true;
        QTest::newRow("vel z") << "Vel" << QString() << "z" << false << true;
        QTest::newRow("TeamMode tag") << "TeamMode" << QString() << "tag" << false << true;
        QTest::newRow("HitDefAttr shorthand") << "HitDefAttr" << QString() << "sca,n" << false << true;
        QTest::newRow("HitDefAttr malformed") << "HitDefAttr" << QString() << "sc" << false << false;
    }

    void ikemenWidensValues()
    {
        QFETCH(QString, controller);
        QFETCH(QString, param);
        QFETCH(QString, value);
        QFETCH(bool, mugen);
        QFETCH(bool, ikemen);
        QSyntaxParam p = m_properties.triggers().value(controller);
        if (!param.isEmpty()) {
            const int index = QMugenSyntaxProperties::indexOf(m_properties.stateControllers(), controller);
            QVERIFY(index >= 0);
            p = m_properties.stateControllers().at(index)->params.value(param);
        }
        QVERIFY(!p.ikemenExtra.isEmpty());
        QCOMPARE(QRegExp(p.extra).exactMatch(value), mugen);
        QCOMPARE(QRegExp(p.ikemenExtra).exactMatch(value), ikemen);
    }

    void triggerWords_data()
    {
        QTest::addColumn<QString>("trigger");
        QTest::addColumn<QString>("words");
        QTest::addColumn<bool>("taken");
        // Trigger words are joined by commas without blanks.
        QTest::newRow("Pos x") << "Pos" << "x" << true;
        QTest::newRow("Vel z") << "Vel" << "z" << false;
        QTest::newRow("StateType") << "StateType" << "a" << true;
        QTest::newRow("P2MoveType") << "P2MoveType" << "h" << true;
        QTest::newRow("TeamMode") << "TeamMode" << "turns" << true;
        QTest::newRow("HitDefAttr") << "HitDefAttr" << "sc,na,sa,ha" << true;
        QTest::newRow("HitDefAttr any") << "HitDefAttr" << "sca,at" << true;
        QTest::newRow("HitDefAttr malformed") << "HitDefAttr" << "sc" << false;
        QTest::newRow("ProjHit with ID") << "ProjHit" << "projhit1234" << true;
        QTest::newRow("ProjHit alone") << "ProjHit" << "ProjHit" << true;
        QTest::newRow("ProjHitTime is its own") << "ProjHit" << "projhittime" << false;
    }

    void triggerWords()
    {
        QFETCH(QString, trigger);
        QFETCH(QString, words);
        QFETCH(bool, taken);
        const QSyntaxParam t = m_properties.triggers().value(trigger);
        const QRegExp pattern(t.extra, t.format == QSyntaxParam::RegExp ? Qt::CaseInsensitive : Qt::CaseSensitive);
        QCOMPARE(pattern.exactMatch(words), taken);
    }
};

QTEST_GUILESS_MAIN(tst_SyntaxMugen)
#include "tst_syntaxmugen.moc"
