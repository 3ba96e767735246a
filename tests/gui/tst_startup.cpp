#include "gui/app/startup.h"
#include "testsupport.h"

#include <QTemporaryDir>
#include <QtTest>

class tst_Startup : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;

private Q_SLOTS:
    void initTestCase()
    {
        // Relative names are taken from the working folder, as in a shell.
        QVERIFY(QDir::setCurrent(m_dir.path()));
        QVERIFY(TestSupport::writeFile(m_dir.filePath(QStringLiteral("kfm.def")), "[Files]\n"));
    }

    void decisions_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<bool>("first");
        QTest::addColumn<QString>("handOver");
        QTest::addColumn<bool>("showWindow");
        QTest::addColumn<bool>("paletteEditor");

        const QString file = m_dir.filePath(QStringLiteral("kfm.def"));
        const QString program = QStringLiteral("kestrada");
        QTest::newRow("no argument") << QStringList{program} << true << QString() << true << false;
        QTest::newRow("no argument, second") << QStringList{program} << false << QString() << true << false;
        QTest::newRow("file, first") << QStringList{program, file} << true << file << true << false;
        QTest::newRow("file, second") << QStringList{program, file} << false << file << false << false;
        // The first instance runs in another folder: it gets the whole path.
        QTest::newRow("relative file, second") << QStringList{program, QStringLiteral("./kfm.def")} << false << file << false << false;
        const QString missing = m_dir.filePath(QStringLiteral("none.def"));
        QTest::newRow("missing file, second") << QStringList{program, missing} << false << QString() << true << false;
        QTest::newRow("-ape") << QStringList{program, QStringLiteral("-ape")} << true << QString() << false << true;
        QTest::newRow("-ape, second") << QStringList{program, QStringLiteral("-ape")} << false << QString() << false << true;
        QTest::newRow("-APE is no option") << QStringList{program, QStringLiteral("-APE")} << true << QString() << true << false;
        QTest::newRow("three arguments") << QStringList{program, file, QStringLiteral("-ape")} << false << QString() << true << false;
    }

    void decisions()
    {
        QFETCH(QStringList, arguments);
        QFETCH(bool, first);
        QFETCH(QString, handOver);
        QFETCH(bool, showWindow);
        QFETCH(bool, paletteEditor);
        const StartDecision decision = decideStart(arguments, first);
        QCOMPARE(decision.handOverFile, handOver);
        QCOMPARE(decision.showWindow, showWindow);
        QCOMPARE(decision.paletteEditor, paletteEditor);
    }

    void aFileNamedApeWins()
    {
        // The file wins over the option, and is handed over as a path.
        QVERIFY(TestSupport::writeFile(m_dir.filePath(QStringLiteral("-ape")), "x"));
        const StartDecision decision = decideStart({QStringLiteral("kestrada"), QStringLiteral("-ape")}, false);
        QCOMPARE(decision.handOverFile, m_dir.filePath(QStringLiteral("-ape")));
        QVERIFY(!decision.paletteEditor && !decision.showWindow);
    }
};

QTEST_MAIN(tst_Startup)
#include "tst_startup.moc"
