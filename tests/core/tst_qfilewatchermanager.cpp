#include "core/base/qcodepages.h"
#include "core/base/qfilewatchermanager.h"
#include "core/base/qmugenmodel.h"
#include "core/base/quserprompt.h"
#include "core/text/qsyntaxtexteditor.h"
#include "testsupport.h"

#include <QTemporaryDir>
#include <QTextCursor>
#include <QTextDocument>
#include <QtTest>

#include <memory>

using TestSupport::writeFile;

namespace {

void append(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::Append));
    file.write(bytes);
}

} // namespace

class tst_QFileWatcherManager : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QMugenModel m_configuration;
    std::unique_ptr<QFileWatcherManager> m_watcher;

    std::unique_ptr<QSyntaxTextEditor> document(const QString &path)
    {
        auto text = std::make_unique<QSyntaxTextEditor>(nullptr, FileStates, false, DefaultEngineVersion, false);
        if (!text->load(path, 0, false))
            return nullptr;
        return text;
    }

    /**
     * Changes a second watched file outside and waits for its question:
     * by then every report about earlier changes has been handled. Its
     * question leaves the record; `before` receives the number of others.
     */
    void waitForSentinel(QRecordingUserPrompt &prompt, int &before)
    {
        const QString sentinel = m_dir.filePath(QStringLiteral("sentinel.cns"));
        QVERIFY(writeFile(sentinel, "; sentinel\r\n"));
        const auto watched = document(sentinel);
        append(sentinel, "; touched\r\n");
        const auto about = [&prompt](const QString &name) {
            int count = 0;
            for (const QRecordingUserPrompt::Call &call : std::as_const(prompt.calls))
                count += call.text.contains(name);
            return count;
        };
        // Reports that arrive together come in any order, but all before the
        // loop runs again.
        QTRY_COMPARE_WITH_TIMEOUT(about(QStringLiteral("sentinel.cns")), 1, 2000);
        prompt.calls.removeIf([](const QRecordingUserPrompt::Call &call) {
            return call.text.contains(QStringLiteral("sentinel.cns"));
        });
        before = int(prompt.calls.size());
    }

private Q_SLOTS:
    void initTestCase()
    {
        buildCodecNames();
        configuration = &m_configuration;
    }

    void cleanupTestCase() { configuration = nullptr; }

    void init()
    {
        m_watcher = std::make_unique<QFileWatcherManager>();
        fileWatcher = m_watcher.get();
    }

    void cleanup() { m_watcher.reset(); }

    void onlyOutsideChangesAsk_data()
    {
        QTest::addColumn<int>("ownSaves");
        QTest::addColumn<bool>("outside");
        QTest::addColumn<int>("questions");
        QTest::newRow("an outside change") << 0 << true << 1;
        QTest::newRow("two own saves, then an outside change") << 2 << true << 1;
        QTest::newRow("own saves only") << 2 << false << 0;
    }

    void onlyOutsideChangesAsk()
    {
        QFETCH(int, ownSaves);
        QFETCH(bool, outside);
        QFETCH(int, questions);
        m_configuration.config[QStringLiteral("enable_file_watcher")] = true;
        const QString path = m_dir.filePath(QString::fromLatin1(QTest::currentDataTag()) + QStringLiteral(".cns"));
        QVERIFY(writeFile(path, "[Statedef 0]\r\n"));
        QRecordingUserPrompt prompt;
        const auto text = document(path);
        QVERIFY(text);
        QCOMPARE(m_watcher->files(), QStringList{path});
        for (int i = 0; i < ownSaves; ++i) {
            QTextCursor(text->document()).insertText(QStringLiteral("; mine\n"));
            QVERIFY(text->save(path, false, false));
        }
        if (outside)
            append(path, "; theirs\r\n");
        int before = -1;
        waitForSentinel(prompt, before);
        QCOMPARE(before, questions);
        if (questions > 0) {
            QCOMPARE(prompt.calls.first().title, QStringLiteral("File modified"));
            QCOMPARE(prompt.calls.first().text,
                     QStringLiteral("The file '%1' has been modified. Do you want to reload all other instances "
                                    "of this file now?").arg(QDir::toNativeSeparators(path)));
            QVERIFY(!prompt.calls.first().defaultYes);
        }
        // An atomic save replaced the file: it is watched all the same.
        QCOMPARE(m_watcher->files(), QStringList{path});
    }

    void otherInstancesReloadOnYes()
    {
        m_configuration.config[QStringLiteral("enable_file_watcher")] = true;
        const QString path = m_dir.filePath(QStringLiteral("shared.cns"));
        QVERIFY(writeFile(path, "[Statedef 0]\r\n"));
        QRecordingUserPrompt prompt;
        prompt.answer({true});
        const auto mine = document(path);
        const auto other = document(path);
        QTextCursor(mine->document()).insertText(QStringLiteral("; mine\n"));
        QVERIFY(mine->save(path, false, false));
        // The document that saved isn't asked about; the other one reloads.
        QTRY_COMPARE_WITH_TIMEOUT(other->text(), mine->text(), 2000);
        QCOMPARE(prompt.calls.size(), 1);
        QCOMPARE(other->fileName(), path);
        QVERIFY(!other->isModified());
    }

    void aWatcherTurnedOffNeverAsks()
    {
        m_configuration.config[QStringLiteral("enable_file_watcher")] = false;
        const QString path = m_dir.filePath(QStringLiteral("quiet.cns"));
        QVERIFY(writeFile(path, "[Statedef 0]\r\n"));
        QRecordingUserPrompt prompt;
        const auto text = document(path);
        append(path, "; theirs\r\n");
        // With nothing asked there is nothing to wait for but the report itself.
        QTest::qWait(300);
        QVERIFY(prompt.calls.isEmpty());
        // Still watched: turning it on later needs no new look at the file.
        QCOMPARE(m_watcher->files(), QStringList{path});
    }

    void aDocumentLeavesTheWatcherWithItsName()
    {
        const QString first = m_dir.filePath(QStringLiteral("first.cns"));
        const QString second = m_dir.filePath(QStringLiteral("second.cns"));
        QVERIFY(writeFile(first, "; first\r\n"));
        auto text = document(first);
        QVERIFY(text->save(second, false, false));
        QCOMPARE(m_watcher->files(), QStringList{second});
        text->clear();
        QVERIFY(m_watcher->files().isEmpty());
        text = document(first);
        text.reset();
        QVERIFY(m_watcher->files().isEmpty());
    }
};

QTEST_MAIN(tst_QFileWatcherManager)
#include "tst_qfilewatchermanager.moc"
