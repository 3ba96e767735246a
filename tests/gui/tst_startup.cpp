#include "core/base/qmugenmodel.h"
#include "gui/app/mainwindow.h"
#include "gui/app/startup.h"
#include "testsupport.h"

#include <QMenuBar>
#include <QTemporaryDir>
#include <QtTest>

class tst_Startup : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;

private Q_SLOTS:
    void decisions_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<bool>("first");
        QTest::addColumn<bool>("handsOver");
        QTest::addColumn<bool>("showWindow");
        QTest::addColumn<bool>("paletteEditor");

        const QString file = m_dir.filePath(QStringLiteral("kfm.def"));
        QVERIFY(TestSupport::writeFile(file, "[Files]\n"));
        const QString program = QStringLiteral("kestrada");
        QTest::newRow("no argument") << QStringList{program} << true << false << true << false;
        QTest::newRow("no argument, second") << QStringList{program} << false << false << true << false;
        QTest::newRow("file, first") << QStringList{program, file} << true << true << true << false;
        QTest::newRow("file, second") << QStringList{program, file} << false << true << false << false;
        QTest::newRow("missing file, second")
            << QStringList{program, m_dir.filePath(QStringLiteral("none.def"))} << false << false << true << false;
        QTest::newRow("-ape") << QStringList{program, QStringLiteral("-ape")} << true << false << false << true;
        QTest::newRow("-ape, second") << QStringList{program, QStringLiteral("-ape")} << false << false << false << true;
        QTest::newRow("-APE is no option") << QStringList{program, QStringLiteral("-APE")} << true << false << true << false;
        QTest::newRow("three arguments") << QStringList{program, file, QStringLiteral("-ape")} << false << false << true << false;
    }

    void decisions()
    {
        QFETCH(QStringList, arguments);
        QFETCH(bool, first);
        QFETCH(bool, handsOver);
        QFETCH(bool, showWindow);
        QFETCH(bool, paletteEditor);
        const StartDecision decision = decideStart(arguments, first);
        QCOMPARE(!decision.handOverFile.isEmpty(), handsOver);
        if (handsOver)
            QCOMPARE(decision.handOverFile, arguments.at(1));
        QCOMPARE(decision.showWindow, showWindow);
        QCOMPARE(decision.paletteEditor, paletteEditor);
    }

    void aFileNamedApeWins()
    {
        // The file wins over the option, and is handed over as a path.
        QVERIFY(QDir::setCurrent(m_dir.path()));
        QVERIFY(TestSupport::writeFile(m_dir.filePath(QStringLiteral("-ape")), "x"));
        const StartDecision decision = decideStart({QStringLiteral("kestrada"), QStringLiteral("-ape")}, false);
        QCOMPARE(decision.handOverFile, QStringLiteral("-ape"));
        QVERIFY(!decision.paletteEditor);
        QVERIFY(!decision.showWindow);
    }

    void mainWindowHasItsFiveMenus()
    {
        qputenv("TMPDIR", m_dir.path().toLocal8Bit());
        QMugenModel settings;
        configuration = &settings;
        MainWindow window(false);
        const QList<QAction *> menus = window.menuBar()->actions();
        QStringList titles;
        for (QAction *action : menus)
            titles.append(action->text());
        QCOMPARE(titles, QStringList({QStringLiteral("Project"), QStringLiteral("Edit"), QStringLiteral("View"),
                                      QStringLiteral("Tools"), QStringLiteral("Help")}));
        QCOMPARE(window.menuFile->objectName(), QStringLiteral("menuFile"));
        QCOMPARE(window.menuHelp->objectName(), QStringLiteral("menuHelp"));
        QVERIFY(window.centralWidget());
        QCOMPARE(window.windowTitle(), QStringLiteral("Kestrada"));
        // Its size comes from the configuration.
        QCOMPARE(window.size(), QSize(580, 750));
        configuration = nullptr;
    }
};

QTEST_MAIN(tst_Startup)
#include "tst_startup.moc"
