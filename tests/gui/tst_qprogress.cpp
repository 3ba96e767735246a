#include "gui/app/qprogress.h"

#include <QMainWindow>
#include <QtTest>

class tst_QProgress : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void followsTheConvention()
    {
        QMainWindow window;
        QProgress progress(&window, QStringLiteral("Loading project..."));
        QCOMPARE(progress.windowModality(), Qt::WindowModal);
        QVERIFY(!progress.isVisible());

        bool allow = false;
        progress.onProgress(0, 8, allow);
        // The first report shows the dialog and sets the range.
        QVERIFY(progress.isVisible());
        QVERIFY(allow);
        QCOMPARE(progress.maximum(), 8);
        QCOMPARE(progress.value(), 0);

        // max counts only with pos 0.
        progress.onProgress(5, 100, allow);
        QCOMPARE(progress.maximum(), 8);
        QCOMPARE(progress.value(), 5);

        // A second 0 with no range makes a busy bar; positions after it mean nothing, but don't hurt.
        progress.onProgress(0, 0, allow);
        QCOMPARE(progress.maximum(), 0);
        progress.onProgress(7, 0, allow);
        QVERIFY(allow);

        progress.cancel();
        progress.onProgress(6, 8, allow);
        QVERIFY(!allow);
    }
};

QTEST_MAIN(tst_QProgress)
#include "tst_qprogress.moc"
