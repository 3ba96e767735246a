#include "core/base/qmugenmodel.h"
#include "core/base/quserprompt.h"
#include "gui/app/aboutdlg.h"
#include "gui/app/qinterface.h"
#include "kestrada_version.h"

#include <QDesktopServices>
#include <QDir>
#include <QMainWindow>
#include <QtTest>

class tst_HelpMenu : public QObject
{
    Q_OBJECT

public Q_SLOTS:
    /** Stands in for the web browser. */
    void openFile(const QUrl &url) { m_opened.append(url); }

private:
    QMugenModel m_configuration;
    QList<QUrl> m_opened;
    /** A docs folder beside the test, made by the test and removed at the end. */
    QString m_docs;

private Q_SLOTS:
    void initTestCase()
    {
        configuration = &m_configuration;
        QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "openFile");
        m_docs = QCoreApplication::applicationDirPath() + QStringLiteral("/docs");
    }

    void cleanupTestCase()
    {
        QDesktopServices::unsetUrlHandler(QStringLiteral("file"));
        QDir(m_docs).removeRecursively();
        configuration = nullptr;
    }

    void refDocs_data()
    {
        QTest::addColumn<QString>("language");
        QTest::addColumn<QStringList>("pages");
        QTest::addColumn<QString>("opened");
        QTest::newRow("no page at all") << "de" << QStringList() << QString();
        QTest::newRow("the language's page") << "de" << QStringList{QStringLiteral("en-us"), QStringLiteral("de")} << "de";
        QTest::newRow("English for a language without one") << "de" << QStringList{QStringLiteral("en-us")} << "en-us";
    }

    void refDocs()
    {
        QFETCH(QString, language);
        QFETCH(QStringList, pages);
        QFETCH(QString, opened);
        QDir(m_docs).removeRecursively();
        for (const QString &page : pages) {
            QVERIFY(QDir().mkpath(m_docs + QLatin1Char('/') + page));
            QFile file(m_docs + QLatin1Char('/') + page + QStringLiteral("/index.html"));
            QVERIFY(file.open(QIODevice::WriteOnly));
        }
        m_configuration.config[QStringLiteral("language")] = language;
        m_opened.clear();
        QRecordingUserPrompt prompt;
        QMainWindow window;
        QInterface interface(&window);

        interface.helpRefDocs();
        if (opened.isEmpty()) {
            // Not silence: the user learns where the page should be.
            QCOMPARE(m_opened.size(), 0);
            QCOMPARE(prompt.calls.size(), 1);
            QCOMPARE(prompt.calls[0].kind, QRecordingUserPrompt::Warning);
            QCOMPARE(prompt.calls[0].title, QStringLiteral("Reference Documentation"));
            QVERIFY(prompt.calls[0].text.contains(QDir::toNativeSeparators(m_docs + QStringLiteral("/de/index.html"))));
        } else {
            QCOMPARE(prompt.calls.size(), 0);
            QCOMPARE(m_opened, QList<QUrl>{QUrl::fromLocalFile(m_docs + QLatin1Char('/') + opened + QStringLiteral("/index.html"))});
        }
    }

    void aboutNamesTheVersions()
    {
        AboutDlg about;
        QVERIFY(about.text().contains(QStringLiteral("Kestrada")));
        QVERIFY(about.text().contains(QLatin1String(KESTRADA_VERSION)));
        QVERIFY(about.text().contains(QLatin1String(qVersion())));
    }
};

QTEST_MAIN(tst_HelpMenu)
#include "tst_helpmenu.moc"
