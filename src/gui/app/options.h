#pragma once

#include <QDialog>
#include <QList>
#include <QMap>
#include <QStyledItemDelegate>
#include <QVariant>

#include <functional>

class MugenDlg;
struct QMugenInfo;
class QActionManager;
class QCheckBox;
class QComboBox;
class QFontComboBox;
class QLabel;
class QLineEdit;
class QListView;
class QPushButton;
class QSpinBox;
class QTabWidget;
class QTableView;

/**
 * Edits the keys column of the shortcut table with a QKeySequenceEdit: the
 * keys are pressed, not typed, so modifiers and special keys come out as
 * the manager stores them.
 */
class QShortcutDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &option,
                          const QModelIndex &index) const override;
    void setEditorData(QWidget *editor, const QModelIndex &index) const override;
    void setModelData(QWidget *editor, QAbstractItemModel *model, const QModelIndex &index) const override;
};

/**
 * The options of the program, in five tabs: the settings of the
 * configuration store, the engine installations, the looks, the colours of
 * a colorset and the keyboard shortcuts.
 *
 * Each field of the store is a widget named by its key. The fields are
 * filled from the store when the dialog opens and written back by "Apply",
 * which also saves config.xml, so that what was applied survives a crash.
 * The installations, the colours and the shortcuts are live models: their
 * changes take effect at once (the colours at "Apply").
 */
class Options : public QDialog
{
    Q_OBJECT

public:
    /**
     * `applicationDir` is the folder of the program, beside which config.xml
     * and shortcuts.xml are written. `actions` gives the shortcut table; it
     * may be null, which leaves the table empty.
     */
    Options(const QString &applicationDir, QActionManager *actions, QWidget *parent = nullptr);
    ~Options() override;

    /** Runs the dialog that edits one installation; true when it was accepted. */
    using MugenDlgRunner = std::function<bool(MugenDlg &)>;
    /** Replaces the default runner (exec()): tests answer the dialog without a modal loop. */
    void setMugenDlgRunner(const MugenDlgRunner &runner) { m_runMugenDlg = runner; }

    /** The stylesheet, iconset and colorset that the chosen preset brings; false when it can't be read. */
    bool presetLooks(QString &stylesheet, QString &iconset, QString &colorset) const;

public Q_SLOTS:
    /**
     * Writes every field into the configuration, the edited colours as the
     * "Custom" colorset, then config.xml and shortcuts.xml, and sends
     * applied().
     */
    void apply();
    /** Fills the fields with the default values; the configuration changes at "Apply". */
    void loadDefaults();
    /** Writes the configuration, as the fields stand, to a ".ksc3" file the user names. */
    void saveConfiguration();
    /** Replaces the configuration and the installations by those of a ".ksc3" file, and reads the fields again. */
    void openConfiguration();

    void addMugen();
    void editMugen();
    void removeMugen();
    void clearMugens();
    void moveMugenUp();
    void moveMugenDown();

    /** Writes the colours as the "Custom" colorset, which the colorset field then names. */
    void saveColorset();
    /** Asks for the colour of the selected entry. */
    void chooseColor();

Q_SIGNALS:
    /** The configuration was written: whoever caches a setting reads it again. */
    void applied();

private Q_SLOTS:
    void presetChosen();
    void colorsetChosen();
    void languageChosen();
    void colorSelected();
    void fontStyleToggled();
    void updateEnabled();

private:
    QWidget *buildGeneral();
    QWidget *buildInterface();
    QWidget *buildColors();
    QWidget *buildImage();
    QWidget *buildText();
    QWidget *buildButtons();

    // A field is a widget named by its key, filled and read by its kind.
    QCheckBox *check(const QString &key, const QString &text);
    QSpinBox *number(const QString &key, int minimum, int maximum, const QString &suffix = QString());
    /** A combo of fixed choices, each with the value it stands for. */
    QComboBox *choice(const QString &key, const QList<QPair<QString, int>> &items);
    /** A combo of names; `fromPreset`, when given, is the item of an empty name. */
    QComboBox *nameChoice(const QString &key, const QStringList &names, const QString &fromPreset = QString());
    /** A file name with a button that asks for an image. */
    QWidget *imageFile(const QString &key, const QString &title);

    void readFields(const QMap<QString, QVariant> &config);
    void writeFields(QMap<QString, QVariant> &config) const;
    /** Selects the name `name` in `combo`, adding it when the list doesn't have it, so nothing is lost. */
    static void selectName(QComboBox *combo, const QString &name);

    /** The colorset in effect with the fields as they stand: the named one, or the preset's own. */
    QString effectiveColorset() const;
    /** Loads the colorset in effect into the colours tab. */
    void reloadColors();
    int selectedColor() const;
    int selectedMugen() const;
    void selectMugen(int row);
    /** Runs MugenDlg over `info`; true when accepted, with `info` changed. */
    bool runMugenDlg(QMugenInfo &info);

    QString m_applicationDir;
    QActionManager *m_actions;
    MugenDlgRunner m_runMugenDlg;
    /** Raised while the dialog fills its own fields: their slots do nothing then. */
    int m_filling = 0;

    QList<QWidget *> m_fields;
    QTabWidget *m_tabs = nullptr;

    QListView *m_mugens = nullptr;
    QComboBox *m_language = nullptr;
    QLabel *m_languageInfo = nullptr;

    QComboBox *m_preset = nullptr;
    QComboBox *m_iconset = nullptr;
    QComboBox *m_stylesheet = nullptr;
    QComboBox *m_colorset = nullptr;
    QTableView *m_shortcuts = nullptr;

    QListView *m_colors = nullptr;
    QCheckBox *m_bold = nullptr;
    QCheckBox *m_italic = nullptr;
    QPushButton *m_color = nullptr;
    /** The colorset the program uses, put back when the dialog closes over edits never applied. */
    QString m_colorsetInUse;
    /** The colours held differ from those in use. */
    bool m_colorsTouched = false;
    /** The colours were edited since the last load or save. */
    bool m_colorsEdited = false;

    QComboBox *m_crosshair = nullptr;
    QComboBox *m_background = nullptr;
    QList<QWidget *> m_crosshairFiles;
    QList<QWidget *> m_backgroundPlace;
    QWidget *m_backgroundFile = nullptr;
    QFontComboBox *m_font = nullptr;
};
