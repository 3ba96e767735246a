#include "core/base/qhandover.h"
#include "testsupport.h"

#include <QTemporaryDir>
#include <QtTest>

class tst_QHandOver : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_temp;

private Q_SLOTS:
    void initTestCase()
    {
        // A private temporary folder: the hand-over file and the lock of a
        // program running on this machine are left alone.
        qputenv("TMPDIR", m_temp.path().toLocal8Bit());
        QCOMPARE(QHandOver::path(), m_temp.path() + QStringLiteral("/open.ks3"));
    }

    void init()
    {
        QFile::remove(QHandOver::path());
    }

    void linesAppendAndAreConsumedOnce()
    {
        QVERIFY(TestSupport::writeFile(QHandOver::path(), "/left/over.def\n"));
        QHandOver first;
        QVERIFY(first.openForFirstInstance());
        // What a crash left is gone; the first instance given a file writes its line through the open handle.
        QCOMPARE(QFileInfo(QHandOver::path()).size(), 0);
        QVERIFY(first.append(QStringLiteral("/a/kfm.def")));
        QVERIFY(!first.isOpen());
        QHandOver second;
        QVERIFY(second.append(QStringLiteral("relative/kfm.sff")));
        const QString unicode = QStringLiteral("/chars/\u00e9l\u00e8ve/st\u00e4ge.def");
        QVERIFY(second.append(unicode));
        // One path a line, each ended by one 0x0A, in the local 8-bit encoding.
        QCOMPARE(TestSupport::readFile(QHandOver::path()),
                 QByteArray("/a/kfm.def\nrelative/kfm.sff\n") + unicode.toLocal8Bit() + '\n');

        QHandOver reader;
        QCOMPARE(reader.consume(), QStringList({QStringLiteral("/a/kfm.def"), QStringLiteral("relative/kfm.sff"), unicode}));
        QCOMPARE(QFileInfo(QHandOver::path()).size(), 0);
        QCOMPARE(reader.consume(), QStringList());
        // Empty lines are skipped; a file that isn't there gives nothing and isn't made.
        QVERIFY(TestSupport::writeFile(QHandOver::path(), "\n\n/x.air\n\n\n/y.cmd"));
        QCOMPARE(reader.consume(), QStringList({QStringLiteral("/x.air"), QStringLiteral("/y.cmd")}));
        QFile::remove(QHandOver::path());
        QCOMPARE(reader.consume(), QStringList());
        QVERIFY(!QFile::exists(QHandOver::path()));
    }

    void onlyOneInstanceHoldsTheLock()
    {
        const QString key = QStringLiteral("KestradaTest-%1").arg(QCoreApplication::applicationPid());
        {
            QInstanceLock first(key);
            QVERIFY(first.isFirst());
            // A live holder keeps the lock against the stale-segment recovery.
            QInstanceLock second(key);
            QVERIFY(!second.isFirst());
            QInstanceLock third(key);
            QVERIFY(!third.isFirst());
        }
        // Its end frees the lock for the next start.
        QInstanceLock next(key);
        QVERIFY(next.isFirst());
    }
};

QTEST_GUILESS_MAIN(tst_QHandOver)
#include "tst_qhandover.moc"
