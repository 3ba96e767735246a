#include "core/animation/qanimations.h"
#include "core/app/qproject.h"
#include "core/base/qhandover.h"
#include "core/base/qmugenmodel.h"
#include "core/base/quserprompt.h"
#include "core/sounds/qsounds.h"
#include "core/sprites/qsprites.h"
#include "core/text/qcommands.h"
#include "core/text/qdefinitions.h"
#include "gui/app/qinterface.h"
#include "sffbuilder.h"
#include "sndbuilder.h"
#include "testsupport.h"

#include <QMainWindow>
#include <QPointer>
#include <QSignalSpy>
#include <QTextDocument>
#include <QTemporaryDir>
#include <QtTest>

using TestSupport::writeFile;

class tst_QInterface : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_temp;
    QMugenModel m_configuration;

    QString file(const QString &name, const QByteArray &content)
    {
        const QString path = m_temp.filePath(name);
        if (!writeFile(path, content))
            qFatal("can't write %s", qPrintable(path));
        return path;
    }

    void handOver(const QStringList &lines)
    {
        QHandOver handOver;
        for (const QString &line : lines)
            QVERIFY(handOver.append(line));
    }

private Q_SLOTS:
    void initTestCase()
    {
        qputenv("TMPDIR", m_temp.path().toLocal8Bit());
        configuration = &m_configuration;
    }

    void cleanupTestCase()
    {
        configuration = nullptr;
    }

    void init()
    {
        QFile::remove(QHandOver::path());
    }

    void aDefReplacesTheBlankProject()
    {
        const QString def = file(QStringLiteral("kfm/kfm.def"), "[Files]\r\n");
        handOver({def});
        QMainWindow window;
        QInterface interface(&window);
        interface.start(true);
        // The DEF was read at start; the blank project of the start gave way.
        QCOMPARE(interface.projects().size(), 1);
        QCOMPARE(interface.projects().first()->definitions()->fileName(), QFileInfo(def).absoluteFilePath());
        QCOMPARE(m_configuration.config.value(QStringLiteral("proj_path")).toString(), QFileInfo(def).absolutePath());
        // A DEF that can't be read opens nothing, and says why.
        QRecordingUserPrompt prompt;
        interface.openProject(m_temp.filePath(QStringLiteral("missing.def")));
        QCOMPARE(interface.projects().size(), 1);
        QCOMPARE(prompt.calls.size(), 1);
        QCOMPARE(prompt.calls.first().kind, QRecordingUserPrompt::Critical);
    }

    void documentsGoIntoTheLastProject()
    {
        QMainWindow window;
        QInterface interface(&window);
        interface.start(true);
        const QByteArray sff = SffBuilder::v2(QSprites::Version_201, {SffBuilder::Palette{0, 0, 256, 0, SffBuilder::colors(1)}},
                                              {SffBuilder::Sprite{1, 0, 2, 2, 0, 0, 0, 0, 8, QByteArray(4, '\1')}});
        const QByteArray snd = SndBuilder::snd({SndBuilder::Sound{1, 0, SndBuilder::wav(1, 11025, 8, 10)}});
        handOver({file(QStringLiteral("one.cmd"), "[Command]\r\nname = \"a\"\r\n"),
                  file(QStringLiteral("two.cmd"), "[Command]\r\nname = \"b\"\r\n"),
                  file(QStringLiteral("common.cns"), "[Statedef 0]\r\n"), file(QStringLiteral("kfm.sff"), sff),
                  file(QStringLiteral("kfm.snd"), snd), file(QStringLiteral("notes.txt"), "x"),
                  file(QStringLiteral("again.sff"), sff)});
        interface.consumeHandOver();
        // The second commands file found the first in use and opened its own
        // project; the state, sprite and sound files joined that last
        // project; the text file was skipped; the second sprite file found
        // the sprites in use.
        QCOMPARE(interface.projects().size(), 3);
        QProject *second = interface.projects().at(1);
        QCOMPARE(interface.projects().at(0)->commands()->title(), QStringLiteral("one.cmd"));
        QCOMPARE(second->commands()->title(), QStringLiteral("two.cmd"));
        QCOMPARE(second->statesCount(), 1);
        QCOMPARE(second->states(0)->text(), QStringLiteral("[Statedef 0]\n"));
        QCOMPARE(second->states(0)->document()->objectName(),
                 QFileInfo(m_temp.filePath(QStringLiteral("common.cns"))).absoluteFilePath());
        QCOMPARE(second->sprites()->count(), 1);
        // A lone sprite file remembers no name: its first save asks for one.
        QVERIFY(second->sprites()->fileName().isEmpty());
        QCOMPARE(second->sounds()->count(), 1);
        QCOMPARE(second->sounds()->fileName(), QFileInfo(m_temp.filePath(QStringLiteral("kfm.snd"))).absoluteFilePath());
        QCOMPARE(interface.projects().at(2)->sprites()->count(), 1);
        // A first project with text isn't blank: it stays when a DEF opens.
        interface.openProject(file(QStringLiteral("a.def"), "[Files]\r\n"));
        QCOMPARE(interface.projects().size(), 4);
    }

    void theWatcherPicksUpLinesOfOtherInstances()
    {
        // The first instance holds the file open from its start on.
        QHandOver own;
        QVERIFY(own.openForFirstInstance());
        handOver({file(QStringLiteral("kfm/kfm.def"), "[Files]\r\n")});
        QMainWindow window;
        QInterface interface(&window);
        // Another instance hands a file over while the start still opens the DEF it read.
        const QString later = file(QStringLiteral("later.air"), "[Begin Action 0]\r\n");
        connect(&interface, &QInterface::projectsChanged, this, [&] {
            if (interface.projects().size() == 2 && QFileInfo(QHandOver::path()).size() == 0)
                handOver({later});
        });
        interface.start(true);
        QTRY_COMPARE(interface.projects().last()->animationText()->title(), QStringLiteral("later.air"));
        QTRY_COMPARE(QFileInfo(QHandOver::path()).size(), 0);
    }

    void closingTheLastProjectLeavesABlankOne()
    {
        QMainWindow window;
        QInterface interface(&window);
        interface.start(false);
        QPointer<QProject> modified = interface.projects().first();
        modified->commands()->document()->setPlainText(QStringLiteral("x"));
        {
            QRecordingUserPrompt prompt; // answers No
            interface.projTabsClosed(0);
            QCOMPARE(interface.projects().first(), modified);
        }
        QRecordingUserPrompt prompt;
        prompt.answer({true});
        interface.projTabsClosed(0);
        QCOMPARE(interface.projects().size(), 1);
        QVERIFY(modified.isNull());
        QVERIFY(interface.projects().first()->isBlank());
        QCOMPARE(interface.currentProject(), interface.projects().first());
        interface.projTabsClosed(5);
        QCOMPARE(interface.projects().size(), 1);
    }
};

QTEST_MAIN(tst_QInterface)
#include "tst_qinterface.moc"
