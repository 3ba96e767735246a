#include "gui/app/qlanguagemanager.h"
#include "gui/app/qtranslationunit.h"
#include "testsupport.h"

#include <QSet>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTranslator>
#include <QtTest>

namespace {

// Compiled by lrelease at build time from tests/data/translations: "first"
// becomes "premier" and "second" "deuxieme", in the context below.
QString fixture(const QString &name)
{
    return QCoreApplication::applicationDirPath() + QLatin1String("/translation-fixtures/") + name;
}

QString translated(const char *text)
{
    return QCoreApplication::translate("tst_QLanguageManager", text);
}

bool writeInfo(const QString &folder, const QByteArray &root, const QByteArray &name)
{
    return TestSupport::writeFile(folder + QLatin1String("/info.xml"),
                                  "<!DOCTYPE ZNLLanguageML>\n<" + root + ">\n    <name value=\"" + name
                                      + "\"/>\n    <author value=\"A. Uthor\"/>\n    <contact value=\"a@b.c\"/>\n</"
                                      + root + ">\n");
}

bool copyFixture(const QString &name, const QString &target)
{
    QDir().mkpath(QFileInfo(target).absolutePath());
    return QFile::copy(fixture(name), target);
}

} // namespace

class tst_QTranslationUnit : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyIdHasATitleAndATip()
    {
        const QTranslationUnit unit;
        for (int id = 0; id < QTranslationUnit::Count; ++id) {
            QVERIFY2(!unit.title(id).isEmpty(), qPrintable(QString::number(id)));
            QVERIFY2(!unit.tip(id).isEmpty(), qPrintable(QString::number(id)));
        }
        for (int id : {-1, QTranslationUnit::Count, QTranslationUnit::Count + 1}) {
            QVERIFY(unit.title(id).isEmpty());
            QVERIFY(unit.tip(id).isEmpty());
        }
    }

    void titles_data()
    {
        QTest::addColumn<QList<int>>("ids");
        QTest::addColumn<QString>("title");
        QTest::newRow("New") << QList<int>{0, 49, 65, 70, 141, 204, 209, 222} << QStringLiteral("New");
        QTest::newRow("Open") << QList<int>{1, 50, 66, 71, 142, 205, 210, 223} << QStringLiteral("Open");
        QTest::newRow("Save") << QList<int>{5, 51, 67, 72, 143, 206, 211, 224, 302, 342} << QStringLiteral("Save");
        QTest::newRow("Save as...") << QList<int>{6, 52, 68, 73, 144, 207, 212, 225, 343}
                                    << QStringLiteral("Save as...");
        // The palettes editor steps back and forth through groups.
        QTest::newRow("previous palette group") << QList<int>{136} << QStringLiteral("Previous group");
        QTest::newRow("next palette group") << QList<int>{137} << QStringLiteral("Next group");
        QTest::newRow("colors to the right")
            << QList<int>{287} << QStringLiteral("Send selected colors to the right palette");
    }

    void titles()
    {
        QFETCH(QList<int>, ids);
        QFETCH(QString, title);
        const QTranslationUnit unit;
        QSet<QString> tips;
        for (int id : std::as_const(ids)) {
            QCOMPARE(unit.title(id), title);
            tips.insert(unit.tip(id));
        }
        // One title, but each tip says what the command does in its own editor.
        QCOMPARE(tips.size(), ids.size());
    }

    void languagesOfAFolder()
    {
        QTemporaryDir dir;
        const QString two = dir.filePath(QStringLiteral("two"));
        QVERIFY(writeInfo(two, "language", "Two"));
        QVERIFY(copyFixture(QStringLiteral("first.qm"), two + QLatin1String("/first.qm")));
        QVERIFY(copyFixture(QStringLiteral("second.qm"), two + QLatin1String("/second.QM")));
        const QString one = dir.filePath(QStringLiteral("one"));
        QVERIFY(writeInfo(one, "language", "One"));
        QVERIFY(copyFixture(QStringLiteral("first.qm"), one + QLatin1String("/first.qm")));
        // Not languages: hidden, without info.xml, with the root of another kind.
        QVERIFY(writeInfo(dir.filePath(QStringLiteral(".hidden")), "language", "Hidden"));
        QVERIFY(copyFixture(QStringLiteral("second.qm"), dir.filePath(QStringLiteral("noinfo/second.qm"))));
        QVERIFY(writeInfo(dir.filePath(QStringLiteral("iconset")), "iconset", "Icons"));

        QLanguageManager manager(qApp, dir.path());
        QCOMPARE(manager.rowCount(), 2);
        QCOMPARE(manager.entry(0).code, QStringLiteral("one"));
        QCOMPARE(manager.index(1).data().toString(), QStringLiteral("Two"));
        QCOMPARE(manager.entry(1).author, QStringLiteral("A. Uthor"));
        QCOMPARE(manager.entry(1).contact, QStringLiteral("a@b.c"));
        // Nothing is installed before it is asked for.
        QVERIFY(manager.current().isEmpty());
        QCOMPARE(translated("first"), QStringLiteral("first"));

        QSignalSpy changed(&manager, &QLanguageManager::langChanged);
        manager.setLanguage(QStringLiteral("two"));
        QCOMPARE(changed.count(), 1);
        QCOMPARE(manager.current(), QStringLiteral("two"));
        QCOMPARE(translated("first"), QStringLiteral("premier"));
        QCOMPARE(translated("second"), QStringLiteral("deuxieme"));

        // The translators of the language before go.
        manager.setLanguage(QStringLiteral("one"));
        QCOMPARE(translated("first"), QStringLiteral("premier"));
        QCOMPARE(translated("second"), QStringLiteral("second"));

        // An unknown language keeps the translators in use.
        manager.setLanguage(QStringLiteral("noinfo"));
        QCOMPARE(changed.count(), 2);
        QVERIFY(manager.current().isEmpty());
        QCOMPARE(translated("first"), QStringLiteral("premier"));
    }

    void builtEnglishLoads()
    {
        QLanguageManager manager(qApp, TestSupport::binDir() + QLatin1String("/languages"));
        int row = 0;
        while (row < manager.rowCount() && manager.entry(row).code != QLatin1String("en-us"))
            ++row;
        QVERIFY(row < manager.rowCount());
        QCOMPARE(manager.entry(row).name, QStringLiteral("English (United States)"));
        QCOMPARE(manager.entry(row).author, QStringLiteral("Kestrada"));
        QCOMPARE(manager.entry(row).contact, QStringLiteral("https://kestrada.org/"));

        QSignalSpy changed(&manager, &QLanguageManager::langChanged);
        manager.setLanguage(QStringLiteral("en-us"));
        QCOMPARE(changed.count(), 1);
        QCOMPARE(manager.current(), QStringLiteral("en-us"));
        // English is the language of the sources, so its file holds no
        // message, but it must be there and be a translation file.
        QTranslator translator;
        QVERIFY(translator.load(QStringLiteral("kestrada_en-us.qm"),
                                TestSupport::binDir() + QLatin1String("/languages/en-us")));
    }
};

QTEST_MAIN(tst_QTranslationUnit)
#include "tst_qtranslationunit.moc"
