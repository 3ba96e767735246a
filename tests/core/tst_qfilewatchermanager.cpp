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

namespace {

void append(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (file.open(QIODevice::Append))
        file.write(bytes);
}

bool mentions(const QRecordingUserPrompt::Call &call, const char *name)
{
    return call.text.contains(QLatin1String(name));
}

} // namespace

class tst_QFileWatcherManager : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QMugenModel m_configuration;
    std::unique_ptr<QFileWatcherManager> m_watcher;

    /** A document of the file `name`, written afresh unless `keep`. */
    std::unique_ptr<QSyntaxTextEditor> document(const QString &name, bool keep = false)
    {
        if (!keep)
            TestSupport::writeFile(m_dir.filePath(name), "[Statedef 0]\r\n");
        auto text = std::make_unique<QSyntaxTextEditor>(nullptr, FileStates, false, DefaultEngineVersion, false);
        return text->load(m_dir.filePath(name), 0, false) ? std::move(text) : nullptr;
    }

    /**
     * Changes another watched file outside and waits for its question: by
     * then every earlier report was handled (reports that come together
     * come in any order). Its question leaves the record.
     */
    void waitForSentinel(QRecordingUserPrompt &prompt)
    {
        const auto sentinel = document(QStringLiteral("sentinel.cns"));
        append(sentinel->fileName(), "; touched\r\n");
        QTRY_VERIFY_WITH_TIMEOUT(std::any_of(prompt.calls.cbegin(), prompt.calls.cend(),
                                             [](const auto &call) { return mentions(call, "sentinel.cns"); }),
                                 2000);
        prompt.calls.removeIf([](const auto &call) { return mentions(call, "sentinel.cns"); });
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
        m_configuration.config[QStringLiteral("enable_file_watcher")] = true;
        m_watcher = std::make_unique<QFileWatcherManager>();
        fileWatcher = m_watcher.get();
    }

    void cleanup() { m_watcher.reset(); }

    void onlyOutsideChangesAsk_data()
    {
        QTest::addColumn<int>("ownSaves");
        QTest::addColumn<bool>("outside");
        QTest::newRow("an outside change") << 0 << true;
        QTest::newRow("two own saves, then an outside change") << 2 << true;
        QTest::newRow("own saves only") << 2 << false;
    }

    void onlyOutsideChangesAsk()
    {
        QFETCH(int, ownSaves);
        QFETCH(bool, outside);
        QRecordingUserPrompt prompt;
        const auto text = document(QString::fromLatin1(QTest::currentDataTag()) + QStringLiteral(".cns"));
        const QString path = text->fileName();
        for (int i = 0; i < ownSaves; ++i) {
            QTextCursor(text->document()).insertText(QStringLiteral("; mine\n"));
            QVERIFY(text->save(path, false, false));
        }
        if (outside)
            append(path, "; theirs\r\n");
        waitForSentinel(prompt);
        // One question per outside change, none for our own saves.
        QCOMPARE(prompt.calls.size(), outside ? 1 : 0);
        if (outside) {
            QCOMPARE(prompt.calls.first().title, QStringLiteral("File modified"));
            QCOMPARE(prompt.calls.first().text, QStringLiteral("The file '%1' has been modified. Do you want to reload "
                                                               "all other instances of this file now?")
                                                    .arg(QDir::toNativeSeparators(path)));
            QVERIFY(!prompt.calls.first().defaultYes);
        }
        // The saves replaced the file; the new one is watched all the same.
        QCOMPARE(m_watcher->files(), QStringList{path});
    }

    void otherInstancesReloadOnYes()
    {
        QRecordingUserPrompt prompt;
        prompt.answer({true});
        const auto mine = document(QStringLiteral("shared.cns"));
        const auto other = document(QStringLiteral("shared.cns"), true);
        QTextCursor(mine->document()).insertText(QStringLiteral("; mine\n"));
        QVERIFY(mine->save(mine->fileName(), false, false));
        // The document that saved isn't asked about; the other one reloads.
        QTRY_COMPARE_WITH_TIMEOUT(other->text(), mine->text(), 2000);
        QCOMPARE(prompt.calls.size(), 1);
        QVERIFY(!other->isModified());
    }

    void aWatcherTurnedOffNeverAsks()
    {
        m_configuration.config[QStringLiteral("enable_file_watcher")] = false;
        QRecordingUserPrompt prompt;
        const auto text = document(QStringLiteral("quiet.cns"));
        append(text->fileName(), "; theirs\r\n");
        // With nothing asked there is nothing to wait for but the report itself.
        QTest::qWait(300);
        QVERIFY(prompt.calls.isEmpty());
    }

    void aDocumentLeavesTheWatcherWithItsName()
    {
        auto text = document(QStringLiteral("first.cns"));
        const QString second = m_dir.filePath(QStringLiteral("second.cns"));
        QVERIFY(text->save(second, false, false));
        QCOMPARE(m_watcher->files(), QStringList{second});
        text->clear();
        QVERIFY(m_watcher->files().isEmpty());
        text = document(QStringLiteral("first.cns"));
        text.reset();
        QVERIFY(m_watcher->files().isEmpty());
    }
};

QTEST_MAIN(tst_QFileWatcherManager)
#include "tst_qfilewatchermanager.moc"
