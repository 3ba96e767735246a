#include "core/base/qmugenmodel.h"
#include "testsupport.h"

#include <QIcon>
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

    /** The names of the installations, in order. */
    static QString names(const QMugenModel &model)
    {
        QStringList out;
        for (int i = 0; i < model.rowCount(); ++i)
            out.append(model.installation(i).name);
        return out.join(QLatin1Char(','));
    }

private Q_SLOTS:
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
        QVERIFY(writeFile(path("unknown.xml"), configFile("    <config name=\"future_key\" value=\"some value\"/>\n"
                                                          "    <config name=\"undo_limit\" value=\"12\"/>\n"
                                                          "    <other name=\"ignored\" value=\"x\"/>\n")));
        QMugenModel model;
        QVERIFY(model.load(path("unknown.xml")));
        QCOMPARE(model.config.value(QStringLiteral("future_key")).toString(), QStringLiteral("some value"));
        QCOMPARE(model.config.value(QStringLiteral("undo_limit")).toInt(), 12);
        QVERIFY(!model.config.contains(QStringLiteral("ignored")));
        QVERIFY(model.save(path("unknown2.xml")));
        QMugenModel again;
        QVERIFY(again.load(path("unknown2.xml")));
        QCOMPARE(again.config, model.config);
        // Saving what was loaded gives the same bytes again.
        QVERIFY(again.save(path("unknown3.xml")));
        QCOMPARE(readFile(path("unknown3.xml")), readFile(path("unknown2.xml")));
    }

    void failedLoadsLeaveTheDefaults_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("wrong root") << QByteArray("<!DOCTYPE ZNLConfigML>\n<settings>\n<config name=\"undo_limit\" value=\"3\"/>\n"
                                                  "<config name=\"mugen_0_name\" value=\"M\"/>\n</settings>\n");
        QTest::newRow("not xml") << QByteArray("undo_limit=3\n");
        QTest::newRow("truncated") << QByteArray("<!DOCTYPE ZNLConfigML>\n<configuration>\n<config name=\"undo_li");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("missing") << QByteArray("none");
    }

    void failedLoadsLeaveTheDefaults()
    {
        QFETCH(QByteArray, content);
        QFile::remove(path("bad.xml"));
        QVERIFY(content == "none" || writeFile(path("bad.xml"), content));
        QMugenModel model;
        model.config[QStringLiteral("undo_limit")] = 99;
        model.config[QStringLiteral("language")] = QStringLiteral("pt-br");
        QVERIFY(!model.load(path("bad.xml")));
        QCOMPARE(model.config.value(QStringLiteral("undo_limit")).toInt(), 64);
        QCOMPARE(model.config.value(QStringLiteral("language")).toString(), QStringLiteral("en-us"));
        QCOMPARE(model.rowCount(), 0);
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
        QCOMPARE(names(model), QStringLiteral("Three"));
        const QMugenInfo three = model.installation(0);
        QCOMPARE(QStringList({three.exe, three.params, three.icon}),
                 QStringList({QStringLiteral("/m3/mugen"), QStringLiteral("-r x"), QStringLiteral("/m3/icon.png")}));
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
        QCOMPARE(names(model), QStringLiteral("Imported"));
        QCOMPARE(model.config.value(QStringLiteral("language")).toString(), QStringLiteral("es-es"));
    }

    void listOperations()
    {
        QMugenModel model;
        for (const char *name : {"A", "B", "C"})
            model.add(QLatin1String(name), QString(), QString(), QString());
        QCOMPARE(model.data(model.index(0), Qt::DisplayRole).toString(), QStringLiteral("A"));
        // An installation without an icon of its own shows the program's.
        QVERIFY(!model.data(model.index(0), Qt::DecorationRole).value<QIcon>().availableSizes().isEmpty());
        QVERIFY(!model.data(model.index(5), Qt::DisplayRole).isValid());
        model.move(0, 2);
        QCOMPARE(names(model), QStringLiteral("B,C,A"));
        model.move(2, 0);
        model.move(0, 7); // out of range: nothing
        QCOMPARE(names(model), QStringLiteral("A,B,C"));
        model.setInstallation(1, {QStringLiteral("B2"), QStringLiteral("/b"), QString(), QString()});
        model.remove(0);
        QCOMPARE(names(model), QStringLiteral("B2,C"));
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
