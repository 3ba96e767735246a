#include "options.h"

#include "mugendlg.h"
#include "qactionmanager.h"
#include "qiconsetmanager.h"
#include "qlanguagemanager.h"
#include "qpresetmanager.h"
#include "qstylesheetmanager.h"
#include "screenscale.h"

#include "core/base/apppaths.h"
#include "core/base/qcodepages.h"
#include "core/base/qcolorsetmanager.h"
#include "core/base/qmugenmodel.h"
#include "core/base/qsyntaxformats.h"
#include "core/base/quserdialogs.h"
#include "core/base/quserprompt.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFileInfo>
#include <QFontComboBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeySequenceEdit>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QPixmap>
#include <QPushButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QTableView>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

const char ConfigurationFilter[] = QT_TRANSLATE_NOOP("Options", "Kestrada 3 Configuration (*.ksc3)");

/** A row of widgets side by side, without margins, as one cell of a form. */
QWidget *row(std::initializer_list<QWidget *> widgets, bool stretch = false)
{
    auto *box = new QWidget;
    auto *layout = new QHBoxLayout(box);
    layout->setContentsMargins(0, 0, 0, 0);
    for (QWidget *widget : widgets)
        layout->addWidget(widget);
    if (stretch)
        layout->addStretch(1);
    return box;
}

/** A swatch of `color` for the colour button. */
QIcon swatch(const QColor &color)
{
    QPixmap pixmap(scaledPixels(16), scaledPixels(16));
    pixmap.fill(color.isValid() ? color : QColor(Qt::transparent));
    return QIcon(pixmap);
}

} // namespace

// ---------------------------------------------------------------------------
// The shortcut table's editor

QWidget *QShortcutDelegate::createEditor(QWidget *parent, const QStyleOptionViewItem &, const QModelIndex &) const
{
    auto *editor = new QKeySequenceEdit(parent);
    editor->setClearButtonEnabled(true);
    // The sequence is complete when the user stops pressing keys: take it then,
    // rather than waiting for the focus to leave.
    connect(editor, &QKeySequenceEdit::editingFinished, this, [this, editor] {
        auto *self = const_cast<QShortcutDelegate *>(this);
        // Once only. A conflict's warning takes the focus, and so does the
        // view when the editor closes: the view and the editor would both
        // take that for the end of another edit, and commit the keys again.
        disconnect(editor, &QKeySequenceEdit::editingFinished, self, nullptr);
        editor->removeEventFilter(self);
        Q_EMIT self->commitData(editor);
        Q_EMIT self->closeEditor(editor);
    });
    return editor;
}

void QShortcutDelegate::setEditorData(QWidget *editor, const QModelIndex &index) const
{
    if (auto *edit = qobject_cast<QKeySequenceEdit *>(editor))
        edit->setKeySequence(QKeySequence(index.data(Qt::EditRole).toString(), QKeySequence::NativeText));
}

void QShortcutDelegate::setModelData(QWidget *editor, QAbstractItemModel *model, const QModelIndex &index) const
{
    if (auto *edit = qobject_cast<QKeySequenceEdit *>(editor))
        model->setData(index, QVariant::fromValue(edit->keySequence()), Qt::EditRole);
}

// ---------------------------------------------------------------------------
// The dialog

Options::Options(const QString &applicationDir, QActionManager *actions, QWidget *parent)
    : QDialog(parent)
    , m_applicationDir(applicationDir)
    , m_actions(actions)
    , m_runMugenDlg([](MugenDlg &dialog) { return dialog.exec() == QDialog::Accepted; })
{
    setObjectName(QStringLiteral("Options"));
    setWindowTitle(tr("Options"));
    m_tabs = new QTabWidget(this);
    m_tabs->addTab(buildGeneral(), tr("General"));
    m_tabs->addTab(buildInterface(), tr("Interface"));
    m_tabs->addTab(buildColors(), tr("Colors"));
    m_tabs->addTab(buildImage(), tr("Image"));
    m_tabs->addTab(buildText(), tr("Text"));
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_tabs);
    layout->addWidget(buildButtons());

    if (colorsets)
        m_colorsetInUse = colorsets->current();
    readFields(configuration->config);
    resize(scaledPixels(620), scaledPixels(520));
}

Options::~Options()
{
    // Colours edited or loaded here but never applied must not reach the
    // editors at their next look at the colorset.
    if (m_colorsTouched && colorsets)
        colorsets->load(m_colorsetInUse, true);
}

QWidget *Options::buildButtons()
{
    auto *defaults = new QPushButton(tr("Load defaults"));
    defaults->setObjectName(QStringLiteral("loadDefaults"));
    auto *save = new QPushButton(tr("Save..."));
    save->setObjectName(QStringLiteral("saveConfiguration"));
    auto *open = new QPushButton(tr("Open..."));
    open->setObjectName(QStringLiteral("openConfiguration"));
    auto *apply = new QPushButton(tr("Apply"));
    apply->setObjectName(QStringLiteral("apply"));
    auto *close = new QPushButton(tr("Close"));
    close->setObjectName(QStringLiteral("close"));
    connect(defaults, &QPushButton::clicked, this, &Options::loadDefaults);
    connect(save, &QPushButton::clicked, this, &Options::saveConfiguration);
    connect(open, &QPushButton::clicked, this, &Options::openConfiguration);
    connect(apply, &QPushButton::clicked, this, &Options::apply);
    connect(close, &QPushButton::clicked, this, &QDialog::reject);

    auto *box = new QWidget;
    auto *layout = new QHBoxLayout(box);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(defaults);
    layout->addWidget(save);
    layout->addWidget(open);
    layout->addStretch(1);
    layout->addWidget(apply);
    layout->addWidget(close);
    return box;
}

QWidget *Options::buildGeneral()
{
    auto *page = new QWidget;
    auto *layout = new QVBoxLayout(page);

    auto *engines = new QGroupBox(tr("M.U.G.E.N."));
    m_mugens = new QListView;
    m_mugens->setObjectName(QStringLiteral("mugens"));
    m_mugens->setModel(configuration);
    m_mugens->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_mugens->setMinimumHeight(scaledPixels(90));
    connect(m_mugens, &QListView::doubleClicked, this, &Options::editMugen);
    connect(m_mugens->selectionModel(), &QItemSelectionModel::currentChanged, this, &Options::updateEnabled);
    auto *buttons = new QVBoxLayout;
    auto button = [this, buttons](const QString &name, const QString &text, void (Options::*slot)()) {
        auto *made = new QToolButton;
        made->setObjectName(name);
        made->setText(text);
        made->setToolButtonStyle(Qt::ToolButtonTextOnly);
        made->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
        connect(made, &QToolButton::clicked, this, slot);
        buttons->addWidget(made);
        return made;
    };
    button(QStringLiteral("mugenAdd"), tr("Add..."), &Options::addMugen);
    button(QStringLiteral("mugenRemove"), tr("Remove"), &Options::removeMugen);
    button(QStringLiteral("mugenEdit"), tr("Edit"), &Options::editMugen);
    button(QStringLiteral("mugenClear"), tr("Clear"), &Options::clearMugens);
    QToolButton *up = button(QStringLiteral("mugenUp"), tr("Move up"), &Options::moveMugenUp);
    QToolButton *down = button(QStringLiteral("mugenDown"), tr("Move down"), &Options::moveMugenDown);
    up->setArrowType(Qt::UpArrow);
    down->setArrowType(Qt::DownArrow);
    for (QToolButton *arrow : {up, down}) {
        arrow->setToolTip(arrow->text());
        arrow->setToolButtonStyle(Qt::ToolButtonIconOnly);
    }
    buttons->addStretch(1);
    auto *engineLayout = new QHBoxLayout(engines);
    engineLayout->addWidget(m_mugens, 1);
    engineLayout->addLayout(buttons);
    layout->addWidget(engines, 1);

    layout->addWidget(check(QStringLiteral("confirm_close"), tr("Request confirmation on exit")));
    layout->addWidget(check(QStringLiteral("confirm_delete"), tr("Request confirmation on delete")));
    layout->addWidget(check(QStringLiteral("ask_save_palettes"), tr("Ask to save palettes (File: Save / Save as)")));
    layout->addWidget(check(QStringLiteral("backup_onload"), tr("Make a backup on load")));
    layout->addWidget(check(QStringLiteral("enable_file_watcher"), tr("Enable the file modification watcher")));
    layout->addWidget(check(QStringLiteral("sort_file_names"), tr("Sort file names from the open dialog")));

    auto *form = new QFormLayout;
    // Listed by what users weigh first; the stored numbers are the engine's own (0 memory, 1 disk).
    QComboBox *cache = choice(QStringLiteral("cache_type"),
                              {{tr("Hard disk (low memory usage)"), 1}, {tr("Memory (maximum speed)"), 0}});
    form->addRow(tr("Cache:"), row({cache, check(QStringLiteral("cache_compression"), tr("Enable compression"))}));

    m_language = nameChoice(QStringLiteral("language"), QStringList());
    if (languages) {
        for (int i = 0; i < languages->rowCount(); ++i)
            m_language->addItem(languages->entry(i).name, languages->entry(i).code);
    }
    connect(m_language, &QComboBox::currentIndexChanged, this, &Options::languageChosen);
    m_languageInfo = new QLabel;
    m_languageInfo->setObjectName(QStringLiteral("languageInfo"));
    m_languageInfo->setTextInteractionFlags(Qt::TextSelectableByMouse);
    form->addRow(tr("Language:"), m_language);
    form->addRow(QString(), m_languageInfo);
    layout->addLayout(form);
    return page;
}

QWidget *Options::buildInterface()
{
    auto *page = new QWidget;
    auto *layout = new QVBoxLayout(page);
    auto *form = new QFormLayout;
    const QString fromPreset = tr("From the preset");
    m_preset = nameChoice(QStringLiteral("preset"), presets ? presets->names() : QStringList());
    m_iconset = nameChoice(QStringLiteral("iconset"), iconsets ? iconsets->names() : QStringList(), fromPreset);
    m_stylesheet = nameChoice(QStringLiteral("stylesheet"), stylesheets ? stylesheets->names() : QStringList(),
                              fromPreset);
    m_colorset = nameChoice(QStringLiteral("colorset"), colorsets ? colorsets->names() : QStringList(), fromPreset);
    connect(m_preset, &QComboBox::currentIndexChanged, this, &Options::presetChosen);
    connect(m_colorset, &QComboBox::currentIndexChanged, this, &Options::colorsetChosen);
    form->addRow(tr("Preset:"), m_preset);
    form->addRow(tr("Iconset:"), m_iconset);
    form->addRow(tr("Stylesheet:"), m_stylesheet);
    form->addRow(tr("Colorset:"), m_colorset);
    layout->addLayout(form);

    layout->addWidget(new QLabel(tr("Keyboard shortcuts:")));
    m_shortcuts = new QTableView;
    m_shortcuts->setObjectName(QStringLiteral("shortcuts"));
    m_shortcuts->setModel(m_actions);
    m_shortcuts->setItemDelegateForColumn(1, new QShortcutDelegate(m_shortcuts));
    m_shortcuts->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_shortcuts->setSelectionMode(QAbstractItemView::SingleSelection);
    m_shortcuts->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed
                                 | QAbstractItemView::SelectedClicked);
    m_shortcuts->verticalHeader()->hide();
    m_shortcuts->setWordWrap(false);
    if (m_actions) {
        QHeaderView *header = m_shortcuts->horizontalHeader();
        header->setSectionResizeMode(0, QHeaderView::Stretch);
        header->setSectionResizeMode(1, QHeaderView::Interactive);
        header->resizeSection(1, scaledPixels(150));
    }
    layout->addWidget(m_shortcuts, 1);
    return page;
}

QWidget *Options::buildColors()
{
    auto *page = new QWidget;
    auto *layout = new QHBoxLayout(page);
    m_colors = new QListView;
    m_colors->setObjectName(QStringLiteral("colors"));
    m_colors->setModel(colorsets);
    m_colors->setEditTriggers(QAbstractItemView::NoEditTriggers);
    layout->addWidget(m_colors, 1);

    m_bold = new QCheckBox(tr("Bold"));
    m_bold->setObjectName(QStringLiteral("bold"));
    m_italic = new QCheckBox(tr("Italic"));
    m_italic->setObjectName(QStringLiteral("italic"));
    m_color = new QPushButton(tr("Color"));
    m_color->setObjectName(QStringLiteral("color"));
    auto *save = new QPushButton(tr("Save"));
    save->setObjectName(QStringLiteral("saveColorset"));
    save->setToolTip(tr("Save the colors as the colorset \"Custom\""));
    save->setEnabled(colorsets != nullptr);
    connect(m_bold, &QCheckBox::toggled, this, &Options::fontStyleToggled);
    connect(m_italic, &QCheckBox::toggled, this, &Options::fontStyleToggled);
    connect(m_color, &QPushButton::clicked, this, &Options::chooseColor);
    connect(save, &QPushButton::clicked, this, &Options::saveColorset);
    if (colorsets)
        connect(m_colors->selectionModel(), &QItemSelectionModel::currentChanged, this, &Options::colorSelected);

    auto *side = new QVBoxLayout;
    side->addWidget(m_bold);
    side->addWidget(m_italic);
    side->addWidget(m_color);
    side->addStretch(1);
    side->addWidget(save);
    layout->addLayout(side);
    colorSelected();
    return page;
}

QWidget *Options::buildImage()
{
    auto *page = new QWidget;
    auto *layout = new QVBoxLayout(page);
    layout->addWidget(check(QStringLiteral("use_opengl"), tr("Use OpenGL hardware acceleration")));
    layout->addWidget(check(QStringLiteral("sprite_over_guides"), tr("Sprite over guide lines")));
    layout->addWidget(check(QStringLiteral("clsn_over_axis"), tr("CLSN over axis")));
    layout->addWidget(check(QStringLiteral("reverse_spr_axis"), tr("Invert sprite axis")));

    auto *form = new QFormLayout;
    m_crosshair = choice(QStringLiteral("crosshair_type"), {{tr("Default"), 0}, {tr("Modern"), 1}, {tr("Custom"), 2}});
    connect(m_crosshair, &QComboBox::currentIndexChanged, this, &Options::updateEnabled);
    form->addRow(tr("Crosshair:"), row({m_crosshair}, true));
    const QString crosshairTitle = tr("Crosshair image");
    m_crosshairFiles = {imageFile(QStringLiteral("crosshair_sprite"), crosshairTitle),
                        imageFile(QStringLiteral("crosshair_animation"), crosshairTitle),
                        imageFile(QStringLiteral("crosshair_extra"), crosshairTitle)};
    form->addRow(tr("Sprite:"), m_crosshairFiles.at(0));
    form->addRow(tr("Animation:"), m_crosshairFiles.at(1));
    form->addRow(tr("Extra:"), m_crosshairFiles.at(2));

    // The renderer's effect numbers: 1 grey, 2 lighter, 3 darker.
    QComboBox *onion = choice(QStringLiteral("onion_effect"),
                              {{tr("Darker"), 3}, {tr("Lighter"), 2}, {tr("Monochrome"), 1}});
    auto *onionOpacity = number(QStringLiteral("onion_opacity"), 0, 100, QStringLiteral(" %"));
    form->addRow(tr("Onion Skin effect:"), row({onion, new QLabel(tr("Opacity:")), onionOpacity}, true));

    m_background = choice(QStringLiteral("background_type"),
                          {{tr("None"), 0}, {tr("Default (240p)"), 1}, {tr("Default (480p)"), 2},
                           {tr("Default (720p)"), 3}, {tr("Default (1080p)"), 4}, {tr("Custom"), 5}});
    connect(m_background, &QComboBox::currentIndexChanged, this, &Options::updateEnabled);
    auto *backgroundX = number(QStringLiteral("background_x"), -9999, 9999);
    auto *backgroundY = number(QStringLiteral("background_y"), -9999, 9999);
    auto *xLabel = new QLabel(tr("X:"));
    auto *yLabel = new QLabel(tr("Y:"));
    m_backgroundPlace = {backgroundX, backgroundY, xLabel, yLabel};
    form->addRow(tr("Background:"), row({m_background, xLabel, backgroundX, yLabel, backgroundY}, true));
    m_backgroundFile = imageFile(QStringLiteral("background_file"), tr("Background image"));
    form->addRow(QString(), m_backgroundFile);

    // The zoom table's rows: 1 goes up to the larger factors, 0 to 4X.
    form->addRow(tr("Zoom mode:"), row({choice(QStringLiteral("zoom_mode"), {{tr("Large range (up to 8X)"), 1},
                                                                             {tr("Small range (up to 4X)"), 0}})},
                                       true));
    // 1 keeps the middle of the work area in place while zooming; anything else keeps the axis.
    form->addRow(tr("Center of zoom:"), row({choice(QStringLiteral("zoom_center"), {{tr("Center of workspace"), 1},
                                                                                  {tr("Sprite's axis"), 0}})},
                                            true));
    form->addRow(tr("CLSN opacity:"), row({number(QStringLiteral("clsn_opacity"), 0, 100, QStringLiteral(" %"))}, true));
    layout->addLayout(form);
    layout->addStretch(1);
    return page;
}

QWidget *Options::buildText()
{
    auto *page = new QWidget;
    auto *layout = new QVBoxLayout(page);
    auto *grid = new QGridLayout;
    grid->addWidget(check(QStringLiteral("code_line_numbers"), tr("Line numbers")), 0, 0);
    grid->addWidget(check(QStringLiteral("code_folding_markers"), tr("Folding markers")), 0, 1);
    grid->addWidget(check(QStringLiteral("code_highlight_line"), tr("Highlight current line")), 1, 0);
    grid->addWidget(check(QStringLiteral("code_highlight_blocks"), tr("Highlight blocks")), 1, 1);
    grid->addWidget(check(QStringLiteral("code_paren_matching"), tr("Parenthesis matching")), 2, 0);
    grid->addWidget(check(QStringLiteral("auto_expand_tree"), tr("Current line navigation")), 2, 1);
    layout->addLayout(grid);

    auto *form = new QFormLayout;
    // Engine text is laid out in columns: only fixed-pitch fonts are offered,
    // but a name typed or read from the configuration stays as it is.
    m_font = new QFontComboBox;
    m_font->setObjectName(QStringLiteral("font_name"));
    m_font->setFontFilters(QFontComboBox::MonospacedFonts);
    m_font->setEditable(true);
    m_fields.append(m_font);
    form->addRow(tr("Editor font:"), m_font);
    form->addRow(tr("Font size:"), row({number(QStringLiteral("font_size"), 4, 96)}, true));

    QList<QPair<QString, int>> pages{{tr("System"), 0}};
    pages.reserve(codecNames.size() + 1);
    for (int i = 0; i < codecNames.size(); ++i)
        pages.append({QString::fromLatin1(codecNames.at(i)), i + 1});
    form->addRow(tr("Default code page:"), choice(QStringLiteral("default_codepage"), pages));
    auto *note = new QLabel(tr("Used when Universal Encoding Detector can't detect the code page."));
    note->setWordWrap(true);
    form->addRow(QString(), note);
    layout->addLayout(form);
    layout->addStretch(1);
    return page;
}

// ---------------------------------------------------------------------------
// Fields

QCheckBox *Options::check(const QString &key, const QString &text)
{
    auto *box = new QCheckBox(text);
    box->setObjectName(key);
    m_fields.append(box);
    return box;
}

QSpinBox *Options::number(const QString &key, int minimum, int maximum, const QString &suffix)
{
    auto *spin = new QSpinBox;
    spin->setObjectName(key);
    spin->setRange(minimum, maximum);
    spin->setSuffix(suffix);
    m_fields.append(spin);
    return spin;
}

QComboBox *Options::choice(const QString &key, const QList<QPair<QString, int>> &items)
{
    auto *combo = new QComboBox;
    combo->setObjectName(key);
    for (const auto &item : items)
        combo->addItem(item.first, item.second);
    m_fields.append(combo);
    return combo;
}

QComboBox *Options::nameChoice(const QString &key, const QStringList &names, const QString &fromPreset)
{
    auto *combo = new QComboBox;
    combo->setObjectName(key);
    if (!fromPreset.isEmpty())
        combo->addItem(fromPreset, QString());
    for (const QString &name : names)
        combo->addItem(name, name);
    m_fields.append(combo);
    return combo;
}

QWidget *Options::imageFile(const QString &key, const QString &title)
{
    auto *edit = new QLineEdit;
    edit->setObjectName(key);
    m_fields.append(edit);
    auto *browse = new QToolButton;
    browse->setObjectName(key + QLatin1String("_browse"));
    browse->setText(QStringLiteral("..."));
    connect(browse, &QToolButton::clicked, this, [edit, title] {
        const QString name = userDialogs->openFileName(title, QFileInfo(edit->text()).absolutePath(),
                                                       tr("Portable Network Graphic (*.png)"));
        if (!name.isEmpty())
            edit->setText(name);
    });
    return row({edit, browse});
}

void Options::selectName(QComboBox *combo, const QString &name)
{
    int index = combo->findData(name);
    if (index < 0) {
        combo->addItem(name, name);
        index = combo->count() - 1;
    }
    combo->setCurrentIndex(index);
}

void Options::readFields(const QMap<QString, QVariant> &config)
{
    ++m_filling;
    for (QWidget *field : std::as_const(m_fields)) {
        const QVariant value = config.value(field->objectName());
        if (auto *box = qobject_cast<QCheckBox *>(field)) {
            box->setChecked(value.toBool());
        } else if (auto *spin = qobject_cast<QSpinBox *>(field)) {
            spin->setValue(value.toInt());
        } else if (auto *font = qobject_cast<QFontComboBox *>(field)) {
            // The combo would show the family the name resolves to, and that
            // is what Apply would write; the name itself is what the user chose.
            const QString family = value.toString();
            font->setCurrentFont(QFont(family));
            if (font->currentText() != family)
                font->setEditText(family);
        } else if (auto *combo = qobject_cast<QComboBox *>(field)) {
            // Choices by the value each item stands for, never by place: the
            // lists aren't in the order of their values. A value no item has
            // selects none, and stays as it was at Apply.
            if (combo->count() > 0 && combo->itemData(combo->count() - 1).typeId() == QMetaType::Int) {
                int index = -1;
                for (int i = 0; i < combo->count() && index < 0; ++i) {
                    if (combo->itemData(i).toInt() == value.toInt())
                        index = i;
                }
                combo->setCurrentIndex(index);
            } else {
                selectName(combo, value.toString());
            }
        } else if (auto *edit = qobject_cast<QLineEdit *>(field)) {
            edit->setText(value.toString());
        }
    }
    --m_filling;
    languageChosen();
    updateEnabled();
    reloadColors();
}

void Options::writeFields(QMap<QString, QVariant> &config) const
{
    for (QWidget *field : m_fields) {
        const QString key = field->objectName();
        if (auto *box = qobject_cast<QCheckBox *>(field)) {
            config[key] = box->isChecked();
        } else if (auto *spin = qobject_cast<QSpinBox *>(field)) {
            config[key] = spin->value();
        } else if (auto *combo = qobject_cast<QComboBox *>(field)) {
            if (combo == m_font)
                config[key] = combo->currentText().trimmed();
            else if (combo->currentIndex() >= 0)
                config[key] = combo->currentData();
        } else if (auto *edit = qobject_cast<QLineEdit *>(field)) {
            config[key] = edit->text();
        }
    }
}

// ---------------------------------------------------------------------------
// Apply, defaults, export and import

void Options::apply()
{
    if (colorsets) {
        // Colours edited under any colorset are the user's own: "Custom".
        if (m_colorsEdited)
            saveColorset();
        // The colorset shown is the one the program will use; the preset's
        // load won't read it again, being already the current one.
        if (syntaxFormats)
            colorsets->applyTo(*syntaxFormats);
        m_colorsetInUse = effectiveColorset();
        m_colorsTouched = false;
    }
    writeFields(configuration->config);
    const QString file = settingsFileForWrite(QStringLiteral("config.xml"), m_applicationDir);
    if (!configuration->save(file))
        userPrompt->warning(tr("Options"), tr("The settings can't be written to %1.").arg(file));
    if (m_actions)
        m_actions->save(settingsFileForWrite(QStringLiteral("shortcuts.xml"), m_applicationDir));
    Q_EMIT applied();
}

void Options::loadDefaults()
{
    // Into the fields only: like every other change here, it takes effect at
    // "Apply", and "Close" leaves the configuration as it was.
    QMugenModel defaults;
    readFields(defaults.config);
}

void Options::saveConfiguration()
{
    QString name = userDialogs->saveFileName(tr("Save configuration"), m_applicationDir, tr(ConfigurationFilter));
    if (name.isEmpty())
        return;
    if (QFileInfo(name).suffix().isEmpty())
        name += QLatin1String(".ksc3");
    // What the dialog shows is what goes out, applied or not.
    QMugenModel copy;
    copy.config = configuration->config;
    for (const QMugenInfo *info : std::as_const(configuration->mugens))
        copy.add(info->name, info->exe, info->params, info->icon);
    writeFields(copy.config);
    if (!copy.save(name))
        userPrompt->warning(tr("Save configuration"), tr("The configuration can't be written to %1.").arg(name));
}

void Options::openConfiguration()
{
    const QString name = userDialogs->openFileName(tr("Open configuration"), m_applicationDir, tr(ConfigurationFilter));
    if (name.isEmpty())
        return;
    // Tried aside first: a file that isn't a configuration must not leave
    // the program with the defaults and no installations.
    QMugenModel trial;
    if (!trial.load(name)) {
        userPrompt->warning(tr("Open configuration"), tr("%1 is not a Kestrada configuration.").arg(name));
        return;
    }
    configuration->importConfiguration(name);
    readFields(configuration->config);
}

// ---------------------------------------------------------------------------
// Installations

int Options::selectedMugen() const
{
    const QModelIndex current = m_mugens->currentIndex();
    return current.isValid() ? current.row() : -1;
}

void Options::selectMugen(int row)
{
    m_mugens->setCurrentIndex(configuration->index(row));
}

bool Options::runMugenDlg(QMugenInfo &info)
{
    MugenDlg dialog(this);
    dialog.setInfo(info);
    if (!m_runMugenDlg(dialog))
        return false;
    info = dialog.info();
    return true;
}

void Options::addMugen()
{
    QMugenInfo info;
    if (!runMugenDlg(info))
        return;
    configuration->add(info.name, info.exe, info.params, info.icon);
    selectMugen(configuration->count() - 1);
}

void Options::editMugen()
{
    const int row = selectedMugen();
    if (row < 0)
        return;
    QMugenInfo info = configuration->installation(row);
    if (runMugenDlg(info))
        configuration->setInstallation(row, info);
}

void Options::removeMugen()
{
    const int row = selectedMugen();
    if (row < 0)
        return;
    configuration->remove(row);
    if (configuration->count() > 0)
        selectMugen(qMin(row, configuration->count() - 1));
    updateEnabled();
}

void Options::clearMugens()
{
    if (configuration->count() == 0
        || !userPrompt->question(tr("Clear"), tr("Remove every M.U.G.E.N. from the list?")))
        return;
    configuration->clear();
    updateEnabled();
}

void Options::moveMugenUp()
{
    const int row = selectedMugen();
    if (row <= 0)
        return;
    configuration->move(row, row - 1);
    selectMugen(row - 1);
}

void Options::moveMugenDown()
{
    const int row = selectedMugen();
    if (row < 0 || row + 1 >= configuration->count())
        return;
    configuration->move(row, row + 1);
    selectMugen(row + 1);
}

// ---------------------------------------------------------------------------
// Looks and colours

bool Options::presetLooks(QString &stylesheet, QString &iconset, QString &colorset) const
{
    return presets && presets->looks(m_preset->currentData().toString(), stylesheet, iconset, colorset);
}

void Options::presetChosen()
{
    if (m_filling)
        return;
    QString stylesheet;
    QString iconset;
    QString colorset;
    if (!presetLooks(stylesheet, iconset, colorset))
        return;
    ++m_filling;
    selectName(m_stylesheet, stylesheet);
    selectName(m_iconset, iconset);
    selectName(m_colorset, colorset);
    --m_filling;
    reloadColors();
}

void Options::colorsetChosen()
{
    if (!m_filling)
        reloadColors();
}

QString Options::effectiveColorset() const
{
    const QString named = m_colorset->currentData().toString();
    if (!named.isEmpty())
        return named;
    QString stylesheet;
    QString iconset;
    QString colorset;
    return presetLooks(stylesheet, iconset, colorset) ? colorset : m_colorsetInUse;
}

void Options::reloadColors()
{
    if (!colorsets)
        return;
    const QString name = effectiveColorset();
    // The colours in use are read again from their file only when they were
    // touched: opening the dialog reads nothing it doesn't need.
    if (name != colorsets->current() || m_colorsTouched) {
        colorsets->load(name, true);
        m_colorsTouched = name != m_colorsetInUse;
    }
    m_colorsEdited = false;
    colorSelected();
}

int Options::selectedColor() const
{
    const QModelIndex current = m_colors->currentIndex();
    return colorsets && current.isValid() ? current.row() : -1;
}

void Options::colorSelected()
{
    const int index = selectedColor();
    const QColorsetManager::Entry entry = colorsets ? colorsets->entry(index) : QColorsetManager::Entry();
    ++m_filling;
    m_bold->setChecked(entry.bold);
    m_italic->setChecked(entry.italic);
    --m_filling;
    // Highlights and ranges are backgrounds: only their colour can change.
    const bool styled = QColorsetManager::hasFontStyle(index);
    m_bold->setEnabled(styled);
    m_italic->setEnabled(styled);
    m_color->setEnabled(index >= 0);
    m_color->setIcon(swatch(entry.color));
}

void Options::fontStyleToggled()
{
    const int index = selectedColor();
    if (m_filling || index < 0)
        return;
    QColorsetManager::Entry entry = colorsets->entry(index);
    entry.bold = m_bold->isChecked();
    entry.italic = m_italic->isChecked();
    colorsets->setEntry(index, entry);
    m_colorsEdited = m_colorsTouched = true;
}

void Options::chooseColor()
{
    const int index = selectedColor();
    if (index < 0)
        return;
    QColorsetManager::Entry entry = colorsets->entry(index);
    const QColor chosen = userDialogs->color(entry.color, tr("Color"));
    if (!chosen.isValid())
        return;
    entry.color = chosen;
    colorsets->setEntry(index, entry);
    m_colorsEdited = m_colorsTouched = true;
    colorSelected();
}

void Options::saveColorset()
{
    if (!colorsets)
        return;
    const QString custom = QColorsetManager::customName();
    if (!colorsets->save(custom)) {
        userPrompt->warning(tr("Save"), tr("The colorset \"%1\" can't be written.").arg(custom));
        return;
    }
    m_colorsEdited = false;
    // The colours held are now those of "Custom", which the field names.
    ++m_filling;
    selectName(m_colorset, custom);
    --m_filling;
}

void Options::languageChosen()
{
    if (!languages)
        return;
    const QString code = m_language->currentData().toString();
    for (int i = 0; i < languages->rowCount(); ++i) {
        const QLanguageManager::Entry entry = languages->entry(i);
        if (entry.code == code) {
            m_languageInfo->setText(tr("Author:") + QLatin1Char(' ') + entry.author + QLatin1Char('\n')
                                    + tr("Contact:") + QLatin1Char(' ') + entry.contact);
            return;
        }
    }
    m_languageInfo->clear();
}

void Options::updateEnabled()
{
    const bool custom = m_crosshair->currentData().toInt() == 2;
    for (QWidget *file : std::as_const(m_crosshairFiles))
        file->setEnabled(custom);
    const int background = m_background->currentData().toInt();
    for (QWidget *place : std::as_const(m_backgroundPlace))
        place->setEnabled(background != 0);
    m_backgroundFile->setEnabled(background == 5);

    const bool selected = selectedMugen() >= 0;
    for (const char *name : {"mugenRemove", "mugenEdit", "mugenUp", "mugenDown"})
        findChild<QWidget *>(QLatin1String(name))->setEnabled(selected);
}
