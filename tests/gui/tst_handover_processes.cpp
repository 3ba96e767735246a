// Two real instances of the program on one machine: the first holds the
// lock and watches the hand-over file; a second one given a file appends it
// there and ends at once; a second one given nothing shows its own window.

#include "core/base/qhandover.h"
#include "testsupport.h"

#include <QProcess>
#include <QSharedMemory>
#include <QTemporaryDir>
#include <QtTest>

class tst_HandOverProcesses : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_temp;
    QProcess m_first;

    QString program() const { return TestSupport::binDir() + QStringLiteral("/kestrada"); }

    void prepare(QProcess &process)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        // A private temporary folder gives the instances their own hand-over
        // file and their own lock, apart from any program the user runs.
        environment.insert(QStringLiteral("TMPDIR"), m_temp.path());
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        process.setProcessEnvironment(environment);
        process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    }

    qint64 handOverSize() const { return QFileInfo(m_temp.filePath(QStringLiteral("open.ks3"))).size(); }

    /** Runs a second instance with one file and expects it to end at once, successfully. */
    void handOverFrom(const QString &file)
    {
        QProcess second;
        prepare(second);
        second.start(program(), {file});
        QVERIFY2(second.waitForFinished(15000), "a second instance given a file must end by itself");
        QCOMPARE(second.exitStatus(), QProcess::NormalExit);
        QCOMPARE(second.exitCode(), 0);
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(QFileInfo(program()).isExecutable());
        prepare(m_first);
        m_first.start(program(), {});
        QVERIFY(m_first.waitForStarted());
        // The first instance empties (and so creates) the hand-over file as
        // soon as it holds the lock.
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(m_temp.filePath(QStringLiteral("open.ks3"))), 15000);
    }

    void cleanupTestCase()
    {
        m_first.kill();
        m_first.waitForFinished();
        // A killed process leaves its lock segment behind on some systems;
        // attaching and detaching here removes it.
        qputenv("TMPDIR", m_temp.path().toLocal8Bit());
        QSharedMemory stale(QStringLiteral("Kestrada3"));
        if (stale.attach())
            stale.detach();
    }

    void secondInstanceHandsOverAndEnds()
    {
        const QString def = m_temp.filePath(QStringLiteral("kfm.def"));
        QVERIFY(TestSupport::writeFile(def, "[Files]\r\n"));
        handOverFrom(def);
        // The first instance read the line and emptied the file.
        QTRY_COMPARE_WITH_TIMEOUT(handOverSize(), qint64(0), 15000);

        // Now surely through its watcher: another file, another hand-over.
        const QString cmd = m_temp.filePath(QStringLiteral("kfm.cmd"));
        QVERIFY(TestSupport::writeFile(cmd, "[Command]\r\n"));
        handOverFrom(cmd);
        QTRY_COMPARE_WITH_TIMEOUT(handOverSize(), qint64(0), 15000);
        QCOMPARE(m_first.state(), QProcess::Running);
    }

    void secondInstanceWithoutAFileShowsItsOwnWindow()
    {
        QProcess second;
        prepare(second);
        second.start(program(), {m_temp.filePath(QStringLiteral("does-not-exist.def"))});
        QVERIFY(second.waitForStarted());
        // It keeps running: it is a program of its own, not a hand-over.
        QVERIFY(!second.waitForFinished(3000));
        second.kill();
        second.waitForFinished();
        QCOMPARE(handOverSize(), qint64(0));
    }
};

QTEST_GUILESS_MAIN(tst_HandOverProcesses)
#include "tst_handover_processes.moc"
