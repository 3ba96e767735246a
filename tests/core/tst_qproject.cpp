#include "core/animation/qanimations.h"
#include "core/app/qproject.h"
#include "core/base/quserprompt.h"
#include "core/sounds/qsounds.h"
#include "core/sprites/qsprites.h"
#include "core/text/qcommands.h"
#include "core/text/qdefinitions.h"

#include <QSignalSpy>
#include <QTextCursor>
#include <QTextDocument>
#include <QtTest>

namespace {

const QString DiscardTitle = QStringLiteral("Discard changes");

// Typing, as the user does: setPlainText would also drop the file name.
void modify(QSyntaxTextEditor *document, const char *text = "x")
{
    QTextCursor(document->document()).insertText(QLatin1String(text));
    QVERIFY(document->isModified());
}

/**
 * What the discard questions asked about, in order: "a.cns" for "Do you
 * really want to discard the changes made in a.cns?". A question of
 * another form, title or default comes whole, and so fails the comparison.
 */
QStringList questionTexts(const QRecordingUserPrompt &prompt)
{
    static const QRegularExpression form(QStringLiteral("^Do you really want to discard the changes made in (.+)\\?$"));
    QStringList texts;
    for (const auto &call : prompt.calls) {
        const QRegularExpressionMatch match = form.match(call.text);
        const bool discard = call.kind == QRecordingUserPrompt::Question && call.title == DiscardTitle && !call.defaultYes;
        texts.append(discard && match.hasMatch() ? match.captured(1) : call.title + QLatin1String(": ") + call.text);
    }
    return texts;
}

} // namespace

class tst_QProject : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void canCloseAsksEveryStateDocument()
    {
        QProject project(0, true);
        modify(project.addState(QStringLiteral("a.cns")));
        modify(project.addState(QStringLiteral("b.st")));
        modify(project.definitions());
        QRecordingUserPrompt prompt;
        prompt.answer({false, true});
        QVERIFY(!project.canClose());
        // Both state documents were asked although the first refused; the
        // definitions, after a refusal among the states, were not.
        QCOMPARE(questionTexts(prompt), QStringList({QStringLiteral("a.cns"), QStringLiteral("b.st")}));
    }

    void canCloseStopsAtTheFirstRefusalAfterTheStates()
    {
        QProject project(0, true);
        modify(project.definitions());
        project.sprites()->setModified(true);
        // The animations ask through their text.
        modify(project.animationText());
        modify(project.commands());
        project.sounds()->setModified(true);
        QRecordingUserPrompt prompt;
        prompt.answer({true, false});
        QVERIFY(!project.canClose());
        QCOMPARE(questionTexts(prompt),
                 QStringList({QStringLiteral("the definitions"), QStringLiteral("the sprites and/or palettes")}));

        QRecordingUserPrompt yes;
        yes.answer({true, true, true, true, true});
        QVERIFY(project.canClose());
        QCOMPARE(questionTexts(yes), QStringList({QStringLiteral("the definitions"), QStringLiteral("the sprites and/or palettes"),
                                                  QStringLiteral("the animations"), QStringLiteral("the commands"),
                                                  QStringLiteral("the sounds")}));
    }

    void isBlankLooksAtEveryDocument()
    {
        QProject project(0, true);
        project.addState(QStringLiteral("empty.cns"));
        QVERIFY(!project.isBlank());
        project.removeState(0);
        QVERIFY(project.isBlank());
        modify(project.commands());
        QVERIFY(!project.isBlank());
        project.commands()->clear();
        QVERIFY(project.isBlank());
        modify(project.definitions());
        QVERIFY(!project.isBlank());
    }

    void stateIndexesFollowTheList()
    {
        QProject project(0, true);
        QSyntaxTextEditor *a = project.addState(QStringLiteral("a"));
        QSyntaxTextEditor *b = project.addState(QStringLiteral("b"));
        QSyntaxTextEditor *c = project.addState(QStringLiteral("c"));
        QSignalSpy updated(&project.messages(), &QMessageList::updated);
        project.moveState(0, 2);
        QCOMPARE(project.states(0), b);
        QCOMPARE(project.states(2), a);
        QCOMPARE(QList<int>({b->fileIndex(), c->fileIndex(), a->fileIndex()}), QList<int>({0, 1, 2}));
        QCOMPARE(updated.count(), 1);

        // The messages of a state document carry its new number.
        a->messages().add(1, QStringLiteral("here"), 0, 4);
        QCOMPARE(project.messages().data(project.messages().index(0)).toString(), QStringLiteral("ST 3(5): here"));

        project.removeState(1);
        QCOMPARE(project.statesCount(), 2);
        QCOMPARE(a->fileIndex(), 1);
        QCOMPARE(project.messages().data(project.messages().index(0)).toString(), QStringLiteral("ST 2(5): here"));

        // Out of range: nothing happens.
        project.moveState(0, 5);
        project.removeState(9);
        QCOMPARE(project.statesCount(), 2);
        QCOMPARE(project.states(0), b);
    }

    void documentsReportToTheProject()
    {
        QProject project(0, true);
        project.commands()->messages().add(0, QStringLiteral("bad"), 2, 6);
        project.sprites()->messages().add(1, QStringLiteral("dup"), 3, 1);
        QCOMPARE(QList<int>({project.messages().rowCount(), project.messages().errors(), project.messages().warnings()}),
                 QList<int>({2, 1, 1}));
        QSignalSpy changed(&project, &QProject::changed);
        modify(project.commands());
        QVERIFY(!changed.isEmpty());
        QCOMPARE(changed.last().first().value<QProjectFile *>(), static_cast<QProjectFile *>(project.commands()));
    }

    void savesAreRefusedWithTheirReasons()
    {
        QProject project(0, true);
        QRecordingUserPrompt prompt;
        QVERIFY(!project.sprites()->checkSave(QSprites::Version_101));
        QVERIFY(!project.animations()->checkSave(0));
        QVERIFY(!project.sounds()->checkSave(0));
        QVERIFY(project.commands()->checkSave(0));
        QVERIFY(project.definitions()->checkSave(0));
        QStringList said;
        for (const QRecordingUserPrompt::Call &call : std::as_const(prompt.calls))
            said.append(call.title + QLatin1String(": ") + call.text);
        QCOMPARE(said, QStringList({QStringLiteral("Save SFF: You can't save an empty SFF because M.U.G.E.N. will not open it."),
                                    QStringLiteral("Save AIR: You can't save an empty AIR because M.U.G.E.N. will not open it."),
                                    QStringLiteral("Save SND: You can't save an empty SND because M.U.G.E.N. will not open it.")}));
    }
};

QTEST_MAIN(tst_QProject)
#include "tst_qproject.moc"
