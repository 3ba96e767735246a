#include "core/base/qmugenmodel.h"
#include "testsupport.h"

#include <QIcon>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

using TestSupport::readFile;
using TestSupport::writeFile;

class tst_QMugenModel : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QString path(const char *name) const { return m_dir.filePath(QLatin1String(name)); }

    static QByteArray configFile(const QByteArray &entries)
    {
        return "<!DOCTYPE ZNLConfigML>\n<configuration>\n" + entries + "</configuration>\n";
    }

private Q_SLOTS:
    void defaultsBeforeAnyLoad()
    {
        QMugenModel model;
        QCOMPARE(model.config.value(QStringLiteral("language")).toString(), QStringLiteral("en-us"));
        QCOMPARE(model.config.value(QStringLiteral("preset")).toString(), QStringLiteral("Classic"));
        QCOMPARE(model.config.value(QStringLiteral("undo_limit")).toInt(), 64);
        QCOMPARE(model.config.value(QStringLiteral("background_x")).toInt(), -213);
        QCOMPARE(model.config.value(QStringLiteral("use_opengl")).toBool(), false);
        QCOMPARE(model.config.value(QStringLiteral("cache_compression")).toBool(), true);
        QCOMPARE(model.config.value(QStringLiteral("font_name")).toString(), QStringLiteral("Courier"));
        QCOMPARE(model.config.value(QStringLiteral("window_height")).toInt(), 750);
        // 62 keys have a default; no installation key is among them.
        QCOMPARE(model.config.size(), 62);
        QCOMPARE(model.rowCount(), 0);
    }

    void savedFormIsExact()
    {
        QMugenModel model;
        model.config.clear();
        model.config[QStringLiteral("zeta")] = 5;
        model.config[QStringLiteral("alpha")] = true;
        model.config[QStringLiteral("quote")] = QStringLiteral("a \"b\" <c> & d");
        model.add(QStringLiteral("Mugen"), QStringLiteral("C:/m/mugen.exe"), QStringLiteral("%0 kfm"), QString());
        QVERIFY(model.save(path("exact.xml")));
        // Sorted by key, one "config" element each, indent of 4, the doctype first.
        const QByteArray expected =
            "<!DOCTYPE ZNLConfigML>\n"
            "<configuration>\n"
            "    <config name=\"alpha\" value=\"true\"/>\n"
            "    <config name=\"mugen_0_exe\" value=\"C:/m/mugen.exe\"/>\n"
            "    <config name=\"mugen_0_icon\" value=\"\"/>\n"
            "    <config name=\"mugen_0_name\" value=\"Mugen\"/>\n"
            "    <config name=\"mugen_0_params\" value=\"%0 kfm\"/>\n"
            "    <config name=\"quote\" value=\"a &quot;b&quot; &lt;c&gt; &amp; d\"/>\n"
            "    <config name=\"zeta\" value=\"5\"/>\n"
            "</configuration>\n";
        QCOMPARE(readFile(path("exact.xml")), expected);
    }

    void unknownKeysSurviveARoundTrip()
    {
        const QByteArray file = configFile(
            "    <config name=\"future_key\" value=\"some value\"/>\n"
            "    <config name=\"undo_limit\" value=\"12\"/>\n"
            "    <other name=\"ignored\" value=\"x\"/>\n");
        QVERIFY(writeFile(path("unknown.xml"), file));
        QMugenModel model;
        QVERIFY(model.load(path("unknown.xml")));
        QCOMPARE(model.config.value(QStringLiteral("future_key")).toString(), QStringLiteral("some value"));
        QCOMPARE(model.config.value(QStringLiteral("undo_limit")).toInt(), 12);
        QVERIFY(!model.config.contains(QStringLiteral("ignored")));
        QVERIFY(model.save(path("unknown2.xml")));

        QMugenModel again;
        QVERIFY(again.load(path("unknown2.xml")));
        QCOMPARE(again.config, model.config);
        QCOMPARE(again.config.value(QStringLiteral("future_key")).toString(), QStringLiteral("some value"));
        // Saving what was loaded gives the same bytes again.
        QVERIFY(again.save(path("unknown3.xml")));
        QCOMPARE(readFile(path("unknown3.xml")), readFile(path("unknown2.xml")));
    }

    void failedLoadsLeaveTheDefaults_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("wrong root") << QByteArray("<!DOCTYPE ZNLConfigML>\n<settings>\n"
                                                  "<config name=\"undo_limit\" value=\"3\"/>\n"
                                                  "<config name=\"mugen_0_name\" value=\"M\"/>\n"
                                                  "</settings>\n");
        QTest::newRow("not xml") << QByteArray("undo_limit=3\n");
        QTest::newRow("truncated") << QByteArray("<!DOCTYPE ZNLConfigML>\n<configuration>\n<config name=\"undo_li");
        QTest::newRow("empty") << QByteArray();
    }

    void failedLoadsLeaveTheDefaults()
    {
        QFETCH(QByteArray, content);
        QVERIFY(writeFile(path("bad.xml"), content));
        QMugenModel model;
        model.config[QStringLiteral("undo_limit")] = 99;
        QVERIFY(!model.load(path("bad.xml")));
        QCOMPARE(model.config.value(QStringLiteral("undo_limit")).toInt(), 64);
        QCOMPARE(model.rowCount(), 0);
    }

    void missingFileLeavesTheDefaults()
    {
        QMugenModel model;
        model.config[QStringLiteral("language")] = QStringLiteral("pt-br");
        QVERIFY(!model.load(path("does-not-exist.xml")));
        QCOMPARE(model.config.value(QStringLiteral("language")).toString(), QStringLiteral("en-us"));
    }

    void booleansAndNumbersReadFromText_data()
    {
        QTest::addColumn<QString>("value");
        QTest::addColumn<bool>("asBool");
        QTest::addColumn<int>("asInt");
        QTest::newRow("true") << QStringLiteral("true") << true << 0;
        QTest::newRow("false") << QStringLiteral("false") << false << 0;
        QTest::newRow("0") << QStringLiteral("0") << false << 0;
        QTest::newRow("1") << QStringLiteral("1") << true << 1;
        QTest::newRow("garbage") << QStringLiteral("abc") << true << 0;
        QTest::newRow("empty") << QString() << false << 0;
    }

    void booleansAndNumbersReadFromText()
    {
        QFETCH(QString, value);
        QFETCH(bool, asBool);
        QFETCH(int, asInt);
        QMugenModel model;
        model.config.clear();
        model.config[QStringLiteral("confirm_close")] = value;
        QVERIFY(model.save(path("bool.xml")));
        QVERIFY(model.load(path("bool.xml")));
        const QVariant read = model.config.value(QStringLiteral("confirm_close"));
        QCOMPARE(read.typeId(), int(QMetaType::QString));
        QCOMPARE(read.toBool(), asBool);
        QCOMPARE(read.toInt(), asInt);
    }

    void readingAnUnsetKeyCreatesIt()
    {
        QMugenModel model;
        // A reader that uses the map's operator[] brings the key into being.
        QCOMPARE(model.config[QStringLiteral("last_mugen")].toInt(), 0);
        QVERIFY(model.save(path("unset.xml")));
        QVERIFY(readFile(path("unset.xml")).contains("<config name=\"last_mugen\" value=\"\"/>"));
    }

    void installationGapsAreRenumbered()
    {
        const QByteArray file = configFile(
            "    <config name=\"mugen_3_name\" value=\"Three\"/>\n"
            "    <config name=\"mugen_3_exe\" value=\"/m3/mugen\"/>\n"
            "    <config name=\"mugen_3_params\" value=\"-r x\"/>\n"
            "    <config name=\"mugen_3_icon\" value=\"/m3/icon.png\"/>\n"
            "    <config name=\"mugen_7_exe\" value=\"/no-name/mugen\"/>\n");
        QVERIFY(writeFile(path("gaps.xml"), file));
        QMugenModel model;
        QVERIFY(model.load(path("gaps.xml")));
        // Only a present name makes an installation.
        QCOMPARE(model.rowCount(), 1);
        QCOMPARE(model.installation(0).name, QStringLiteral("Three"));
        QCOMPARE(model.installation(0).exe, QStringLiteral("/m3/mugen"));
        QCOMPARE(model.installation(0).params, QStringLiteral("-r x"));
        QCOMPARE(model.installation(0).icon, QStringLiteral("/m3/icon.png"));
        QVERIFY(model.save(path("gaps2.xml")));
        const QByteArray saved = readFile(path("gaps2.xml"));
        // Saved back as number 0, and the stray keys of other numbers are gone.
        QVERIFY(saved.contains("<config name=\"mugen_0_name\" value=\"Three\"/>"));
        QVERIFY(!saved.contains("mugen_3_"));
        QVERIFY(!saved.contains("mugen_7_"));
    }

    void fiftyOneInstallationsLoseTheLast()
    {
        QMugenModel model;
        for (int i = 0; i < 51; ++i)
            model.add(QStringLiteral("M%1").arg(i), QStringLiteral("/m%1").arg(i), QString(), QString());
        QVERIFY(model.save(path("fifty.xml")));
        QVERIFY(readFile(path("fifty.xml")).contains("mugen_50_name"));
        QMugenModel again;
        QVERIFY(again.load(path("fifty.xml")));
        QCOMPARE(again.rowCount(), 50);
        QCOMPARE(again.installation(49).name, QStringLiteral("M49"));
    }

    void importReplacesInstallations()
    {
        QMugenModel source;
        source.add(QStringLiteral("Imported"), QStringLiteral("/i"), QString(), QString());
        source.config[QStringLiteral("language")] = QStringLiteral("es-es");
        QVERIFY(source.exportConfiguration(path("settings.ksc3")));

        QMugenModel model;
        model.add(QStringLiteral("Old"), QStringLiteral("/o"), QString(), QString());
        QVERIFY(model.importConfiguration(path("settings.ksc3")));
        QCOMPARE(model.rowCount(), 1);
        QCOMPARE(model.installation(0).name, QStringLiteral("Imported"));
        QCOMPARE(model.config.value(QStringLiteral("language")).toString(), QStringLiteral("es-es"));
    }

    void listModelRoles()
    {
        QMugenModel model;
        QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
        model.add(QStringLiteral("Plain"), QStringLiteral("/p"), QString(), QString());
        model.add(QStringLiteral("Iconed"), QStringLiteral("/i"), QString(), QStringLiteral(":/imgs/Imgs/ok.png"));
        QCOMPARE(inserted.count(), 2);
        QCOMPARE(model.data(model.index(0), Qt::DisplayRole).toString(), QStringLiteral("Plain"));
        const QIcon fallback = model.data(model.index(0), Qt::DecorationRole).value<QIcon>();
        QVERIFY(!fallback.isNull());
        QVERIFY(!fallback.availableSizes().isEmpty());
        QVERIFY(!model.data(model.index(1), Qt::DecorationRole).value<QIcon>().isNull());
        QVERIFY(!model.data(model.index(5), Qt::DisplayRole).isValid());
        QVERIFY(!model.data(model.index(0), Qt::ToolTipRole).isValid());
    }

    void listOperations()
    {
        QMugenModel model;
        for (const char *name : {"A", "B", "C"})
            model.add(QLatin1String(name), QString(), QString(), QString());
        model.move(0, 2);
        QCOMPARE(model.installation(0).name, QStringLiteral("B"));
        QCOMPARE(model.installation(2).name, QStringLiteral("A"));
        model.move(2, 0);
        QCOMPARE(model.installation(0).name, QStringLiteral("A"));
        model.move(0, 7); // out of range: nothing
        QCOMPARE(model.installation(0).name, QStringLiteral("A"));
        model.setInstallation(1, {QStringLiteral("B2"), QStringLiteral("/b"), QString(), QString()});
        QCOMPARE(model.installation(1).name, QStringLiteral("B2"));
        model.remove(0);
        QCOMPARE(model.rowCount(), 2);
        QCOMPARE(model.installation(0).name, QStringLiteral("B2"));
        model.clear();
        QCOMPARE(model.rowCount(), 0);
    }

    void failedSaveKeepsTheEarlierFile()
    {
        QMugenModel model;
        QVERIFY(model.save(path("keep.xml")));
        const QByteArray before = readFile(path("keep.xml"));
        // A folder where the file should be: the write fails and nothing is lost.
        QVERIFY(!model.save(m_dir.path()));
        QVERIFY(!model.save(path("missing-folder/config.xml")));
        QCOMPARE(readFile(path("keep.xml")), before);
    }
};

QTEST_MAIN(tst_QMugenModel)
#include "tst_qmugenmodel.moc"
