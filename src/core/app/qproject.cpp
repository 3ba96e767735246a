#include "qproject.h"

#include "../animation/qanimationelements.h"
#include "../animation/qanimations.h"
#include "../base/qmugenmodel.h"
#include "../sounds/qsounds.h"
#include "../sprites/qsprites.h"
#include "../text/qcommand.h"
#include "../text/qcommands.h"
#include "../text/qdefinitions.h"
#include "../text/qtextelements.h"

#include <QTextDocument>

QProject::QProject(int cacheType, bool cacheCompression, QObject *parent)
    : QObject(parent)
{
    m_definitions = new QDefinitions(this);
    m_sprites = new QSprites(this, cacheType, cacheCompression, -1);
    m_animationText = new QSyntaxTextEditor(this, FileAnimations, true, DefaultEngineVersion, true);
    m_animations = new QAnimations(this, m_animationText);
    m_commands = new QCommands(this);
    m_sounds = new QSounds(this, cacheType, cacheCompression, -1);
    // The DEF names the engine and its version; every text of the project is checked for them.
    const auto followDefinitions = [this] {
        QList<QSyntaxTextEditor *> texts{m_commands, m_animationText};
        texts += m_states;
        for (QSyntaxTextEditor *text : std::as_const(texts)) {
            text->setVersion(m_definitions->version());
            text->setTarget(m_definitions->target());
        }
    };
    connect(m_definitions, &QDefinitions::versionChanged, this, followDefinitions);
    connect(m_definitions, &QDefinitions::targetChanged, this, followDefinitions);
}

QProject::~QProject()
{
    // The animations of a stage read the DEF; give them their own text back
    // before either goes.
    m_animations->setEditor(m_animationText);
    delete m_sounds;
    delete m_commands;
    delete m_animations;
    delete m_animationText;
    delete m_sprites;
    delete m_definitions;
    qDeleteAll(m_states);
}

int QProject::type() const
{
    return m_definitions->type();
}

void QProject::setType(int type)
{
    m_definitions->setType(type);
}

quint32 QProject::engineVersion() const
{
    return m_definitions->version();
}

int QProject::engineTarget() const
{
    return m_definitions->target();
}

QSyntaxTextEditor *QProject::states(int index) const
{
    return index >= 0 && index < m_states.size() ? m_states.at(index) : nullptr;
}

QSyntaxTextEditor *QProject::addState(const QString &title)
{
    auto *state = new QSyntaxTextEditor(this, FileStates, false, engineVersion(), true);
    state->setTarget(engineTarget());
    state->document()->setMetaInformation(QTextDocument::DocumentTitle, title);
    state->setFileIndex(int(m_states.size()));
    m_states.append(state);
    return state;
}

void QProject::moveState(int from, int to)
{
    if (from < 0 || from >= m_states.size() || to < 0 || to >= m_states.size() || from == to)
        return;
    m_states.move(from, to);
    renumberStates(qMin(from, to));
    m_messages.update();
}

void QProject::removeState(int index)
{
    if (index < 0 || index >= m_states.size())
        return;
    delete m_states.takeAt(index);
    renumberStates(index);
    m_messages.update();
}

void QProject::renumberStates(int from)
{
    for (int i = from; i < m_states.size(); ++i)
        m_states.at(i)->setFileIndex(i);
}

bool QProject::canClose()
{
    // Every state document is asked, even after a refusal, so the user sees
    // each file with unsaved work before anything is decided.
    bool allowed = true;
    for (QSyntaxTextEditor *state : std::as_const(m_states))
        allowed = state->checkDiscard() && allowed;
    if (!allowed)
        return false;
    const QList<QProjectFile *> documents = {m_definitions, m_sprites, m_animations, m_commands,
                                             m_sounds};
    for (QProjectFile *document : documents) {
        if (!document->checkDiscard())
            return false;
    }
    return true;
}

bool QProject::isBlank() const
{
    return m_definitions->isEmpty() && m_sprites->isEmpty() && m_animations->isEmpty()
        && m_commands->isEmpty() && m_states.isEmpty() && m_sounds->isEmpty();
}

QString QProject::setting(const QString &key)
{
    return m_settings[key];
}

void QProject::setSetting(const QString &key, const QString &value)
{
    m_settings[key] = value;
    // The last folder of one project is a good start for the next one.
    if (configuration)
        configuration->config[key] = value;
}

void QProject::documentChanged(QProjectFile *document)
{
    Q_EMIT changed(document);
}

void registerProjectElements()
{
    registerAnimationElements();
    registerCommandElements();
    registerNameCommentElements();
}

void releaseProjectElements()
{
    releaseCommandElements();
    releaseAnimationElements();
    releaseNameCommentElements();
}
