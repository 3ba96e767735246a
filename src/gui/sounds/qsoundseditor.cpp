#include "qsoundseditor.h"

#include "addsom.h"
#include "expdlg.h"
#include "sndimport.h"

#include "gui/app/qinterface.h"
#include "gui/app/qinterfacecontrol.h"
#include "gui/app/qorganizereditor.h"
#include "gui/app/qprogress.h"
#include "gui/common/delgrp.h"
#include "gui/common/dialogparts.h"
#include "gui/common/dialogrunner.h"
#include "gui/common/rengrp.h"

#include "core/app/qproject.h"
#include "core/base/qmugenmodel.h"
#include "core/base/quserdialogs.h"
#include "core/base/quserprompt.h"
#include "core/sounds/qsounds.h"

#include <QDir>
#include <QFileInfo>
#include <QMenuBar>
#include <QRegExp>
#include <QScrollBar>
#include <QSpinBox>
#include <QTabBar>

#include <algorithm>

namespace {

bool setting(const char *key)
{
    return configuration && configuration->config.value(QLatin1String(key), true).toBool();
}

QString wavFilter()
{
    return QSoundsEditor::tr("WAVEform Audio Format (*.wav)");
}

QString sndFilter()
{
    return QSoundsEditor::tr("Sounds (*.snd)");
}

} // namespace

QSoundsEditor::QSoundsEditor(QInterface *ui)
    : m_ui(ui)
    , m_menu(new QMenu(ui->mainWindow()->menuBar()))
{
    QActionManager &actions = ui->actions();
    const std::initializer_list<int> scope = {QInterfaceIds::Sounds};
    // Commands that need a current sound follow enabled().
    auto command = [&](const char *name, int title, auto slot, bool needsSound, bool inMenu = true) {
        QAction *action = actions.addAction(scope, QLatin1String(name), title, false, this, slot);
        if (inMenu)
            m_menu->addAction(action);
        if (needsSound)
            connect(this, &QSoundsEditor::enabled, action, &QAction::setEnabled);
        ui->addControl(QLatin1String(name), new QInterfaceControlAction(action));
        return action;
    };
    command("snd_new", 222, &QSoundsEditor::clear, false);
    command("snd_open", 223, &QSoundsEditor::open, false);
    command("snd_save", 224, &QSoundsEditor::save, false);
    command("snd_saveas", 225, &QSoundsEditor::saveAs, false);
    m_menu->addSeparator();
    command("snd_add", 226, &QSoundsEditor::add, false);
    command("snd_delete", 227, &QSoundsEditor::del, true);
    command("snd_openwav", 228, &QSoundsEditor::openWav, true);
    command("snd_savewav", 229, &QSoundsEditor::saveWav, true);
    command("snd_duplicate", 230, &QSoundsEditor::duplicate, true);
    command("snd_delete_grp", 231, &QSoundsEditor::delGroup, true);
    command("snd_rename_grp", 232, &QSoundsEditor::renameGroup, true);
    m_menu->addSeparator();
    // The two play buttons stay pressed while their sound plays.
    auto toggle = [&](const char *name, int title, void (QSoundsEditor::*slot)(bool)) {
        QAction *action = actions.addAction(scope, QLatin1String(name), title, true, this, slot);
        m_menu->addAction(action);
        connect(this, &QSoundsEditor::enabled, action, &QAction::setEnabled);
        ui->addControl(QLatin1String(name), new QInterfaceControlAction(action));
        return action;
    };
    m_play = toggle("snd_play", 233, &QSoundsEditor::play);
    m_playLoop = toggle("snd_play_loop", 234, &QSoundsEditor::playLoop);
    command("snd_stop", 235, &QSoundsEditor::stop, false);
    m_menu->addSeparator();
    command("snd_export", 236, &QSoundsEditor::fileExport, true);
    command("snd_import", 237, &QSoundsEditor::fileImport, false);
    command("snd_import_proj", 238, &QSoundsEditor::projImport, false);
    // Stepping is for the keys and the panel, not the menu.
    command("snd_prev_grp", 241, &QSoundsEditor::prevGrp, true, false);
    command("snd_next_grp", 242, &QSoundsEditor::nextGrp, true, false);
    command("snd_prev", 243, &QSoundsEditor::prevSnd, true, false);
    command("snd_next", 244, &QSoundsEditor::nextSnd, true, false);
    ui->insertMenu(m_menu);

    using Control = QInterfaceControl;
    auto widget = [&](const char *name, int kind, int title, const char *slot, const char *signal) {
        ui->addControl(QLatin1String(name), new QInterfaceControlWidget(kind, title, this, slot, signal));
        return ui->control(QLatin1String(name));
    };
    QWidget *position = widget("snd_sel", Control::ScrollBar, Control::NoTitle, SLOT(selPosChanged(int)),
                               SIGNAL(setSelPos(int)));
    widget("snd_sel_lb", Control::Label, Control::NoTitle, nullptr, SIGNAL(setPosText(QString)));
    QWidget *group = widget("snd_grp", Control::SpinBox, Control::NoTitle, SLOT(grpChanged(int)),
                            SIGNAL(setGroup(int)));
    widget("snd_grp_lb", Control::Label, 239, nullptr, nullptr);
    QWidget *number = widget("snd_num", Control::SpinBox, Control::NoTitle, SLOT(numChanged(int)),
                             SIGNAL(setNumber(int)));
    widget("snd_num_lb", Control::Label, 240, nullptr, nullptr);
    widget("snd_info_lb", Control::Label, Control::NoTitle, nullptr, SIGNAL(setInfoText(QString)));
    // A number is one undo step when it is complete, not one per digit typed.
    static_cast<QSpinBox *>(group)->setKeyboardTracking(false);
    static_cast<QSpinBox *>(number)->setKeyboardTracking(false);
    for (QWidget *control : {position, group, number})
        connect(this, &QSoundsEditor::enabled, control, &QWidget::setEnabled);
}

bool QSoundsEditor::isModified() const
{
    return m_sounds && m_sounds->isModified();
}

void QSoundsEditor::activate(bool show)
{
    QInterfaceEditor::activate(show);
    if (show && m_sounds) {
        connect(m_sounds, &QSounds::changed, this, &QSoundsEditor::documentChanged, Qt::UniqueConnection);
        connect(m_sounds, &QSounds::stopped, this, &QSoundsEditor::forceStop, Qt::UniqueConnection);
    }
    if (show) {
        if (auto *organizer = qobject_cast<QOrganizerEditor *>(m_ui->extraEditor(QInterfaceIds::Organizer))) {
            connect(organizer, &QOrganizerEditor::changed, this, &QSoundsEditor::orgChanged, Qt::UniqueConnection);
            connect(organizer, &QOrganizerEditor::object, this, &QSoundsEditor::orgObject, Qt::UniqueConnection);
            connect(organizer, &QOrganizerEditor::itemClicked, this, &QSoundsEditor::definePos,
                    Qt::UniqueConnection);
        }
        refreshOrganizer();
    }
    refresh();
}

void QSoundsEditor::deactivate()
{
    forceStop();
    if (m_sounds)
        disconnect(m_sounds, nullptr, this, nullptr);
    if (QInterfaceExtraEditor *organizer = m_ui->extraEditor(QInterfaceIds::Organizer)) {
        disconnect(organizer, nullptr, this, nullptr);
        // The organizer would otherwise go on showing sounds that no editor shows.
        if (isActive())
            refreshOrganizer();
    }
    QInterfaceEditor::deactivate();
}

void QSoundsEditor::refreshOrganizer()
{
    QInterfaceExtraEditor *organizer = m_ui->extraEditor(QInterfaceIds::Organizer);
    if (organizer && organizer->isActive())
        organizer->activate(true);
}

void QSoundsEditor::applyConfig()
{
    refresh();
}

void QSoundsEditor::setProject(QProject *project)
{
    m_project = project;
    m_sounds = project ? project->sounds() : nullptr;
}

void QSoundsEditor::retranslate(QTranslationUnit *unit)
{
    unit->setMenuTexts(m_menu, titleId());
    // Translating the labels empties those without a title: fill them again.
    refresh();
}

void QSoundsEditor::navigate(int fileIndex, int index, int line)
{
    Q_UNUSED(fileIndex)
    Q_UNUSED(line)
    definePos(index);
}

int QSoundsEditor::current() const
{
    return m_sounds ? m_sounds->currentIndex() : -1;
}

bool QSoundsEditor::hasSound() const
{
    return m_sounds && current() >= 0 && current() < m_sounds->count();
}

void QSoundsEditor::documentChanged()
{
    refresh();
    Q_EMIT modificationChanged();
}

void QSoundsEditor::refresh()
{
    ++m_guard;
    const int count = m_sounds ? m_sounds->count() : 0;
    // A maximum of -1 would pull the minimum down with it for good: an
    // empty list keeps the range 0..0 and disables the bar instead.
    if (auto *bar = qobject_cast<QScrollBar *>(m_ui->control(QStringLiteral("snd_sel"))))
        bar->setRange(0, qMax(0, count - 1));
    if (!hasSound()) {
        Q_EMIT setSelPos(0);
        Q_EMIT setPosText(QStringLiteral("0 / 0"));
        Q_EMIT setGroup(0);
        Q_EMIT setNumber(0);
        Q_EMIT setInfoText(tr("Channels: ---\nSample rate: ---\nBits per sample: ---\nDuration: ---"));
    } else {
        const int index = current();
        const QSubItem item = m_sounds->subItem(index);
        const QSoundInfo info = m_sounds->soundInfo(index);
        Q_EMIT setSelPos(index);
        Q_EMIT setPosText(QStringLiteral("%1 / %2").arg(index + 1).arg(count));
        Q_EMIT setGroup(item.group);
        Q_EMIT setNumber(item.index);
        // A sound whose header can't be read (compressed, or no WAV at all) has no facts to show.
        if (info.channels == 0) {
            Q_EMIT setInfoText(tr("Channels: ---\nSample rate: ---\nBits per sample: ---\nDuration: ---"));
        } else {
            const QString layout = info.channels == 1 ? tr("Mono")
                : info.channels == 2                  ? tr("Stereo")
                                                      : tr("Multichannel");
            Q_EMIT setInfoText(tr("Channels: %1 (%2)\nSample rate: %3 Hz\nBits per sample: %4 bits\n"
                                  "Duration: %5 seconds")
                                   .arg(info.channels)
                                   .arg(layout)
                                   .arg(info.sampleRate)
                                   .arg(info.bitsPerSample)
                                   .arg(double(info.duration), 0, 'g'));
        }
    }
    Q_EMIT enabled(count > 0);
    --m_guard;
}

void QSoundsEditor::definePos(int index)
{
    if (!m_sounds)
        return;
    m_sounds->setCurrentIndex(qBound(0, index, qMax(0, m_sounds->count() - 1)));
    refresh();
}

QString QSoundsEditor::folder() const
{
    if (!m_project)
        return QString();
    QString path = m_project->setting(QStringLiteral("snd_path"));
    if (path.isEmpty() && configuration)
        path = configuration->config.value(QStringLiteral("snd_path")).toString();
    return path.isEmpty() ? m_project->setting(QStringLiteral("proj_path")) : path;
}

void QSoundsEditor::rememberFolder(const QString &fileName)
{
    if (m_project)
        m_project->setSetting(QStringLiteral("snd_path"), QFileInfo(fileName).absolutePath());
}

void QSoundsEditor::failed(const QString &title, const QString &fileName)
{
    userPrompt->critical(title, tr("The file \"%1\" couldn't be processed:\n%2")
                                    .arg(QDir::toNativeSeparators(fileName), m_sounds->errorString()));
}

// ---------------------------------------------------------------------------
// The file

void QSoundsEditor::clear()
{
    ensureCurrent();
    if (!m_sounds || !m_sounds->checkDiscard())
        return;
    forceStop();
    m_sounds->clear();
}

void QSoundsEditor::open()
{
    ensureCurrent();
    if (!m_sounds || !m_sounds->checkDiscard())
        return;
    const QString fileName = userDialogs->openFileName(tr("Open sounds"), folder(), sndFilter());
    if (fileName.isEmpty())
        return;
    rememberFolder(fileName);
    forceStop();
    QProgress progress(m_ui->mainWindow(), tr("Loading sounds..."));
    connect(m_sounds, &QSounds::progress, &progress, &QProgress::onProgress);
    if (!m_sounds->load(fileName, false))
        failed(tr("Open sounds"), fileName);
    definePos(0);
}

void QSoundsEditor::save()
{
    ensureCurrent();
    if (!m_sounds)
        return;
    if (m_sounds->fileName().isEmpty()) {
        saveAs();
        return;
    }
    if (!m_sounds->checkSave(0))
        return;
    QProgress progress(m_ui->mainWindow(), tr("Saving sounds..."));
    connect(m_sounds, &QSounds::progress, &progress, &QProgress::onProgress);
    if (!m_sounds->save(m_sounds->fileName(), false))
        failed(tr("Save sounds"), m_sounds->fileName());
}

void QSoundsEditor::saveAs()
{
    ensureCurrent();
    if (!m_sounds || !m_sounds->checkSave(0))
        return;
    const QString start = m_sounds->fileName().isEmpty() ? folder() : m_sounds->fileName();
    const QString fileName = userDialogs->saveFileName(tr("Save sounds"), start, sndFilter());
    if (fileName.isEmpty())
        return;
    rememberFolder(fileName);
    QProgress progress(m_ui->mainWindow(), tr("Saving sounds..."));
    connect(m_sounds, &QSounds::progress, &progress, &QProgress::onProgress);
    if (!m_sounds->save(fileName, false))
        failed(tr("Save sounds"), fileName);
}

void QSoundsEditor::undo()
{
    if (m_sounds)
        m_sounds->undo();
}

void QSoundsEditor::redo()
{
    if (m_sounds)
        m_sounds->redo();
}

// ---------------------------------------------------------------------------
// Find and replace

bool QSoundsEditor::ItemPattern::matches(qint32 group, qint32 number) const
{
    return (!this->group || *this->group == group) && (!this->number || *this->number == number);
}

std::optional<QSoundsEditor::ItemPattern> QSoundsEditor::readPattern(const QString &text)
{
    QRegExp pattern(QStringLiteral("^(\\d{1,5})?(?:,\\s*(\\d{1,5}))?$"));
    if (!pattern.exactMatch(text))
        return std::nullopt;
    ItemPattern item;
    if (!pattern.cap(1).isEmpty())
        item.group = pattern.cap(1).toInt();
    if (!pattern.cap(2).isEmpty())
        item.number = pattern.cap(2).toInt();
    // An empty text, or a lone comma, fits the pattern but names nothing.
    if (!item.group && !item.number)
        return std::nullopt;
    return item;
}

int QSoundsEditor::findFrom(const ItemPattern &pattern, const QQuickFindOptions &options) const
{
    const int count = m_sounds->count();
    const int step = options.value(QQuickFindOption::Backward) ? -1 : 1;
    const bool circular = options.value(QQuickFindOption::Circular);
    const int start = hasSound() ? current() : (step > 0 ? -1 : count);
    // Circular comes round to the current sound last.
    const int steps = circular ? count : (step > 0 ? count - 1 - start : start);
    for (int i = 1; i <= steps; ++i) {
        const int index = ((start + i * step) % count + count) % count;
        const QSubItem item = m_sounds->subItem(index);
        if (pattern.matches(item.group, item.index))
            return index;
    }
    return -1;
}

void QSoundsEditor::noSoundFound()
{
    userPrompt->information(tr("Find"), tr("No sound found!"));
}

void QSoundsEditor::find(const QString &text, const QQuickFindOptions &options)
{
    const std::optional<ItemPattern> pattern = readPattern(text);
    const int found = m_sounds && pattern && m_sounds->count() > 0 ? findFrom(*pattern, options) : -1;
    if (found < 0)
        noSoundFound();
    else
        definePos(found);
}

void QSoundsEditor::replace(const QString &source, const QString &destination, const QQuickFindOptions &options,
                            bool all)
{
    const std::optional<ItemPattern> from = readPattern(source);
    const std::optional<ItemPattern> to = readPattern(destination);
    if (!m_sounds || !from || !to) {
        noSoundFound();
        return;
    }
    const auto replaceAt = [this, &to](int index) {
        const QSubItem item = m_sounds->subItem(index);
        m_sounds->setSubItem(index, to->group.value_or(item.group), to->number.value_or(item.index));
    };
    if (!all) {
        const QSubItem item = m_sounds->subItem(current());
        if (!hasSound() || !from->matches(item.group, item.index)) {
            find(source, options);
            return;
        }
        replaceAt(current());
        const int next = findFrom(*from, options);
        if (next >= 0)
            definePos(next);
        return;
    }
    QList<int> matches;
    for (int i = 0; i < m_sounds->count(); ++i) {
        const QSubItem item = m_sounds->subItem(i);
        if (from->matches(item.group, item.index))
            matches.append(i);
    }
    if (matches.isEmpty()) {
        noSoundFound();
        return;
    }
    m_sounds->undoStack()->beginMacro(QStringLiteral("replace"));
    for (int index : std::as_const(matches))
        replaceAt(index);
    m_sounds->undoStack()->endMacro();
}

// ---------------------------------------------------------------------------
// Sounds

void QSoundsEditor::add()
{
    if (!m_sounds)
        return;
    QStringList files = userDialogs->openFileNames(tr("Add sounds"), folder(), wavFilter());
    if (files.isEmpty())
        return;
    // A plain sort, as the file names read: "10.wav" before "2.wav".
    if (setting("sort_file_names"))
        std::sort(files.begin(), files.end());
    rememberFolder(files.first());
    int group = 0;
    int number = 0;
    int step = 1;
    if (setting("show_addsound_dialog")) {
        const QSubItem item = m_sounds->subItem(current());
        AddSom dialog(m_ui->mainWindow(), item.group, item.index);
        if (runDialog(&dialog) != QDialog::Accepted)
            return;
        group = dialog.group();
        number = dialog.number();
        step = dialog.step();
    }
    int position = m_sounds->count() > 0 ? current() + 1 : 0;
    const int first = position;
    QStringList refused;
    m_sounds->undoStack()->beginMacro(QStringLiteral("add"));
    for (const QString &file : std::as_const(files)) {
        m_sounds->insert(position);
        if (!m_sounds->loadWav(position, file)) {
            refused.append(QDir::toNativeSeparators(file) + QStringLiteral(": ") + m_sounds->errorString());
            m_sounds->remove(position);
            continue;
        }
        m_sounds->setSubItem(position, group, number);
        number += step;
        ++position;
    }
    m_sounds->undoStack()->endMacro();
    if (position > first)
        definePos(position - 1);
    if (!refused.isEmpty())
        userPrompt->warning(tr("Add sounds"),
                            tr("These files couldn't be added:\n%1").arg(refused.join(QLatin1Char('\n'))));
}

void QSoundsEditor::del()
{
    if (!hasSound())
        return;
    if (setting("confirm_delete")
        && !userPrompt->question(tr("Delete"), tr("Do you really want to delete the sound?")))
        return;
    forceStop();
    m_sounds->remove(current());
}

void QSoundsEditor::openWav()
{
    if (!hasSound())
        return;
    const QString fileName = userDialogs->openFileName(tr("Change WAV"), folder(), wavFilter());
    if (fileName.isEmpty())
        return;
    rememberFolder(fileName);
    if (!m_sounds->loadWav(current(), fileName))
        failed(tr("Change WAV"), fileName);
}

void QSoundsEditor::saveWav()
{
    if (!hasSound())
        return;
    const QSubItem item = m_sounds->subItem(current());
    const QString name = QStringLiteral("%1-%2.wav").arg(item.group).arg(item.index);
    const QString start = folder().isEmpty() ? name : folder() + QLatin1Char('/') + name;
    const QString fileName = userDialogs->saveFileName(tr("Save WAV"), start, wavFilter());
    if (fileName.isEmpty())
        return;
    rememberFolder(fileName);
    if (!m_sounds->saveWav(current(), fileName))
        userPrompt->critical(tr("Save WAV"),
                             tr("The file \"%1\" couldn't be written.").arg(QDir::toNativeSeparators(fileName)));
}

void QSoundsEditor::duplicate()
{
    if (!hasSound())
        return;
    m_sounds->duplicate(current());
    definePos(current() + 1);
}

void QSoundsEditor::delGroup()
{
    if (!hasSound())
        return;
    DelGrp dialog(m_ui->mainWindow(), m_sounds->subItem(current()).group);
    if (runDialog(&dialog) != QDialog::Accepted)
        return;
    forceStop();
    m_sounds->removeGroup(dialog.group(), dialog.interval()->all(), dialog.interval()->first(),
                          dialog.interval()->last());
}

void QSoundsEditor::renameGroup()
{
    if (!hasSound())
        return;
    RenGrp dialog(m_ui->mainWindow(), m_sounds->subItem(current()).group);
    if (runDialog(&dialog) != QDialog::Accepted)
        return;
    m_sounds->renameGroup(dialog.group(), dialog.newGroup(), dialog.interval()->all(), dialog.interval()->first(),
                          dialog.interval()->last());
}

// ---------------------------------------------------------------------------
// Playing

void QSoundsEditor::startPlaying(QAction *button, bool checked, bool loop)
{
    if (m_guard)
        return;
    if (!checked || !hasSound()) {
        forceStop();
        return;
    }
    // Unchecking the other button says toggled(false), which would stop
    // the sound this one is about to play.
    ++m_guard;
    (button == m_play ? m_playLoop : m_play)->setChecked(false);
    --m_guard;
    m_sounds->play(current(), loop);
}

void QSoundsEditor::play(bool checked)
{
    startPlaying(m_play, checked, false);
}

void QSoundsEditor::playLoop(bool checked)
{
    startPlaying(m_playLoop, checked, true);
}

void QSoundsEditor::stop(bool checked)
{
    Q_UNUSED(checked)
    forceStop();
}

void QSoundsEditor::forceStop()
{
    ++m_guard;
    m_play->setChecked(false);
    m_playLoop->setChecked(false);
    --m_guard;
    if (m_sounds)
        m_sounds->stop();
}

// ---------------------------------------------------------------------------
// Export and import

void QSoundsEditor::fileExport()
{
    if (!hasSound())
        return;
    ExpDlg dialog(m_ui->mainWindow(), m_sounds->subItem(current()).group);
    if (runDialog(&dialog) != QDialog::Accepted)
        return;
    const QString fileName = userDialogs->saveFileName(
        tr("Export sounds"), folder(), tr("Kestrada Export (*.kse)") + tr(";;Elecbyte SndMaker (*.def)"));
    if (fileName.isEmpty())
        return;
    rememberFolder(fileName);
    QProgress progress(m_ui->mainWindow(), tr("Exporting sounds..."));
    connect(m_sounds, &QSounds::progress, &progress, &QProgress::onProgress);
    const bool done =
        dialog.all() ? m_sounds->exportSounds(fileName) : m_sounds->exportGroup(dialog.group(), fileName);
    if (!done)
        userPrompt->critical(tr("Export sounds"),
                             tr("The file \"%1\" couldn't be written.").arg(QDir::toNativeSeparators(fileName)));
}

void QSoundsEditor::fileImport()
{
    if (!m_sounds)
        return;
    const QString fileName = userDialogs->openFileName(tr("Import sounds"), folder(), tr("Kestrada Export (*.kse)"));
    if (fileName.isEmpty())
        return;
    rememberFolder(fileName);
    const int position = m_sounds->count() > 0 ? current() + 1 : 0;
    QProgress progress(m_ui->mainWindow(), tr("Importing sounds..."));
    connect(m_sounds, &QSounds::progress, &progress, &QProgress::onProgress);
    if (!m_sounds->importSounds(fileName, position))
        userPrompt->critical(tr("Import sounds"),
                             tr("The file \"%1\" couldn't be read.").arg(QDir::toNativeSeparators(fileName)));
}

void QSoundsEditor::projImport()
{
    if (!m_sounds)
        return;
    const QList<QProject *> &projects = m_ui->projects();
    QStringList titles;
    for (int i = 0; i < projects.size(); ++i)
        titles.append(m_ui->tabBar()->tabText(i));
    sndimport dialog(m_ui->mainWindow(), titles, int(projects.indexOf(m_project.data())));
    if (runDialog(&dialog) != QDialog::Accepted)
        return;
    QProject *source = projects.value(dialog.project());
    if (!source || source == m_project) {
        userPrompt->warning(tr("Warning"), tr("You can't import from the destination project!"));
        return;
    }
    const QSounds *from = source->sounds();
    int position = m_sounds->count() > 0 ? current() + 1 : 0;
    const int first = position;
    m_sounds->undoStack()->beginMacro(QStringLiteral("import"));
    for (int i = 0; i < from->count(); ++i) {
        const QSubItem item = from->subItem(i);
        if (!dialog.groups()->all() && (item.group < dialog.groups()->first() || item.group > dialog.groups()->last()))
            continue;
        m_sounds->insert(position);
        m_sounds->setSample(position, from->sample(i));
        m_sounds->setSubItem(position, item.group, item.index);
        ++position;
    }
    m_sounds->undoStack()->endMacro();
    const int imported = position - first;
    if (imported == 0) {
        userPrompt->information(tr("Import from another project"), tr("No sound imported!"));
        return;
    }
    definePos(first);
    userPrompt->information(tr("Import from another project"), tr("%n sound(s) were imported!", nullptr, imported));
}

// ---------------------------------------------------------------------------
// Controls and the organizer

void QSoundsEditor::selPosChanged(int value)
{
    if (!m_guard)
        definePos(value);
}

void QSoundsEditor::grpChanged(int value)
{
    if (!m_guard && hasSound())
        m_sounds->setSubItem(current(), value, m_sounds->subItem(current()).index);
}

void QSoundsEditor::numChanged(int value)
{
    if (!m_guard && hasSound())
        m_sounds->setSubItem(current(), m_sounds->subItem(current()).group, value);
}

void QSoundsEditor::prevGrp()
{
    if (hasSound())
        definePos(m_sounds->previousGroup(current()));
}

void QSoundsEditor::nextGrp()
{
    // 0 means there is no later group: stay.
    const int next = hasSound() ? m_sounds->nextGroup(current()) : 0;
    if (next > 0)
        definePos(next);
}

void QSoundsEditor::prevSnd()
{
    if (hasSound() && current() > 0)
        definePos(current() - 1);
}

void QSoundsEditor::nextSnd()
{
    if (hasSound() && current() + 1 < m_sounds->count())
        definePos(current() + 1);
}

void QSoundsEditor::orgChanged(bool secondary)
{
    Q_UNUSED(secondary)
    refresh();
}

QOrganizableObject *QSoundsEditor::orgObject(bool secondary)
{
    return secondary ? nullptr : m_sounds.data();
}
