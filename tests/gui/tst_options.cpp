#include "core/base/qcodepages.h"
#include "core/base/qcolorsetmanager.h"
#include "core/base/qmugenmodel.h"
#include "core/base/qsyntaxformats.h"
#include "core/base/quserdialogs.h"
#include "core/base/quserprompt.h"
#include "gui/app/mugendlg.h"
#include "gui/app/options.h"
#include "gui/app/qactionmanager.h"
#include "gui/app/qpresetmanager.h"
#include "testsupport.h"

#include <QCheckBox>
#include <QComboBox>
#include <QKeySequenceEdit>
#include <QLineEdit>
#include <QListView>
#include <QMainWindow>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTableView>
#include <QTemporaryDir>
#include <QtTest>

using TestSupport::writeFile;

namespace {

/** What a field shows, as text: a check as "true" or "false", a combo its item's text. */
QString shown(const QWidget *field)
{
    if (auto *box = qobject_cast<const QCheckBox *>(field))
        return box->isChecked() ? QStringLiteral("true") : QStringLiteral("false");
    if (auto *spin = qobject_cast<const QSpinBox *>(field))
        return QString::number(spin->value());
    if (auto *combo = qobject_cast<const QComboBox *>(field))
        return combo->currentText();
    if (auto *edit = qobject_cast<const QLineEdit *>(field))
        return edit->text();
    return QStringLiteral("<no field>");
}

QString setting(const char *key)
{
    return configuration->config.value(QLatin1String(key)).toString();
}

} // namespace

class tst_Options : public QObject
{
    Q_OBJECT

private:
    /** The program's folder, with its presets and colorsets; config.xml is written here. */
    QTemporaryDir m_dir;
    QMugenModel m_configuration;
    QSyntaxFormats m_formats;
    QRecordingUserPrompt *m_prompt = nullptr;
    QRecordingUserDialogs *m_dialogs = nullptr;

    QString path(const char *name) const { return m_dir.filePath(QLatin1String(name)); }

    template <typename Field>
    static Field *field(const Options &options, const char *key)
    {
        auto *found = options.findChild<Field *>(QLatin1String(key));
        if (!found)
            qFatal("no field %s", key);
        return found;
    }

private Q_SLOTS:
    void initTestCase()
    {
        buildCodecNames();
        configuration = &m_configuration;
        syntaxFormats = &m_formats;
        QVERIFY(writeFile(path("presets/Classic.xml"), "<!DOCTYPE ZNLPresetML><preset/>"));
        QVERIFY(writeFile(path("presets/Night.xml"),
                          R"(<preset stylesheet="Dusk" iconset="Moon" colorset="Dark"/>)"));
        QVERIFY(writeFile(path("colorsets/Classic.xml"), R"(<colors><color name="clsn1" value="200,0,0"/></colors>)"));
        QVERIFY(writeFile(path("colorsets/Dark.xml"), R"(<colors><color name="clsn1" value="10,20,30"/></colors>)"));
        presets = new QPresetManager(QDataFolder(path("presets")));
        colorsets = new QColorsetManager(QDataFolder(path("colorsets")));
    }

    void cleanupTestCase()
    {
        delete presets;
        presets = nullptr;
        delete colorsets;
        colorsets = nullptr;
        syntaxFormats = nullptr;
        configuration = nullptr;
    }

    void init()
    {
        m_configuration.clear();
        m_configuration.config.clear();
        m_configuration.loadDefaults();
        for (const char *written : {"config.xml", "shortcuts.xml", "colorsets/Custom.xml"})
            QFile::remove(path(written));
        colorsets->load(QStringLiteral("Classic"), true);
        m_prompt = new QRecordingUserPrompt;
        m_dialogs = new QRecordingUserDialogs;
    }

    void cleanup()
    {
        delete m_dialogs;
        delete m_prompt;
    }

    void fieldsRoundTrip_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("stored");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<QString>("written");

        // Checks, each against its default, with the spellings a file may hold.
        QTest::newRow("confirm_close 0") << "confirm_close" << "0" << "false" << "false";
        QTest::newRow("backup_onload 1") << "backup_onload" << "1" << "true" << "true";
        const QMugenModel defaults;
        for (const char *key : {"confirm_delete", "ask_save_palettes", "enable_file_watcher", "sort_file_names",
                                "cache_compression", "use_opengl", "code_line_numbers", "code_folding_markers",
                                "code_highlight_line", "code_highlight_blocks", "code_paren_matching",
                                "auto_expand_tree"}) {
            const QString other = defaults.config.value(QLatin1String(key)).toBool() ? QStringLiteral("false")
                                                                                      : QStringLiteral("true");
            QTest::newRow(key) << key << other << other << other;
        }
        // Keys without a default: a missing one reads as false.
        QTest::newRow("sprite_over_guides") << "sprite_over_guides" << "true" << "true" << "true";
        QTest::newRow("clsn_over_axis") << "clsn_over_axis" << "true" << "true" << "true";
        QTest::newRow("reverse_spr_axis, missing") << "reverse_spr_axis" << "" << "false" << "false";

        // Choices whose lists aren't in the order of their values.
        QTest::newRow("cache in memory") << "cache_type" << "0" << "Memory (maximum speed)" << "0";
        QTest::newRow("cache on disk") << "cache_type" << "1" << "Hard disk (low memory usage)" << "1";
        QTest::newRow("onion darker") << "onion_effect" << "3" << "Darker" << "3";
        QTest::newRow("onion lighter") << "onion_effect" << "2" << "Lighter" << "2";
        QTest::newRow("onion monochrome") << "onion_effect" << "1" << "Monochrome" << "1";
        QTest::newRow("zoom small") << "zoom_mode" << "0" << "Small range (up to 4X)" << "0";
        QTest::newRow("zoom large") << "zoom_mode" << "1" << "Large range (up to 8X)" << "1";
        QTest::newRow("zoom on the workspace") << "zoom_center" << "1" << "Center of workspace" << "1";
        QTest::newRow("zoom on the axis") << "zoom_center" << "0" << "Sprite's axis" << "0";
        QTest::newRow("crosshair custom") << "crosshair_type" << "2" << "Custom" << "2";
        QTest::newRow("crosshair modern") << "crosshair_type" << "1" << "Modern" << "1";
        QTest::newRow("background none") << "background_type" << "0" << "None" << "0";
        QTest::newRow("background 1080p") << "background_type" << "4" << "Default (1080p)" << "4";
        QTest::newRow("background custom") << "background_type" << "5" << "Custom" << "5";
        // A value no item stands for selects none, and Apply leaves the key alone.
        QTest::newRow("background 7, no image") << "background_type" << "7" << "" << "changed";
        QTest::newRow("system code page") << "default_codepage" << "0" << "System" << "0";
        QTest::newRow("third code page") << "default_codepage" << "3" << QString::fromLatin1(codecNames.value(2)) << "3";

        QTest::newRow("onion_opacity") << "onion_opacity" << "40" << "40" << "40";
        QTest::newRow("clsn_opacity") << "clsn_opacity" << "75" << "75" << "75";
        QTest::newRow("background_x") << "background_x" << "-12" << "-12" << "-12";
        QTest::newRow("background_y") << "background_y" << "34" << "34" << "34";
        QTest::newRow("font_size") << "font_size" << "13" << "13" << "13";
        QTest::newRow("background_file") << "background_file" << "/x/back.png" << "/x/back.png" << "/x/back.png";
        QTest::newRow("crosshair_sprite") << "crosshair_sprite" << "/x/s.png" << "/x/s.png" << "/x/s.png";
        QTest::newRow("crosshair_animation") << "crosshair_animation" << "/x/a.png" << "/x/a.png" << "/x/a.png";
        QTest::newRow("crosshair_extra") << "crosshair_extra" << "/x/e.png" << "/x/e.png" << "/x/e.png";
        // A font the system may not have keeps its name.
        QTest::newRow("font_name") << "font_name" << "Courier" << "Courier" << "Courier";

        // Names: a name the program doesn't know is kept, not replaced.
        QTest::newRow("preset") << "preset" << "Night" << "Night" << "Night";
        QTest::newRow("iconset of the preset") << "iconset" << "" << "From the preset" << "";
        QTest::newRow("unknown stylesheet") << "stylesheet" << "Dusk" << "Dusk" << "Dusk";
        QTest::newRow("colorset") << "colorset" << "Dark" << "Dark" << "Dark";
        QTest::newRow("unknown language") << "language" << "xx-yy" << "xx-yy" << "xx-yy";
    }

    void fieldsRoundTrip()
    {
        QFETCH(QString, key);
        QFETCH(QString, stored);
        QFETCH(QString, shown);
        QFETCH(QString, written);
        // As read from a file: a string, whatever the key's type.
        if (stored.isEmpty())
            m_configuration.config.remove(key);
        else
            m_configuration.config[key] = stored;
        Options options(m_dir.path(), nullptr);
        QCOMPARE(::shown(options.findChild<QWidget *>(key)), shown);
        // Apply writes what the field shows, whatever the store holds meanwhile.
        m_configuration.config[key] = QStringLiteral("changed");
        options.apply();
        QCOMPARE(m_configuration.config.value(key).toString(), written);
    }

    void applyWritesTheConfigurationFile()
    {
        m_configuration.add(QStringLiteral("Mugen"), QStringLiteral("/m/mugen.exe"), QStringLiteral("%0 %0"), QString());
        Options options(m_dir.path(), nullptr);
        QSignalSpy applied(&options, &Options::applied);
        field<QComboBox>(options, "onion_effect")->setCurrentIndex(0);
        options.apply();
        QCOMPARE(applied.count(), 1);
        QMugenModel written;
        QVERIFY(written.load(path("config.xml")));
        QCOMPARE(written.config.value(QStringLiteral("onion_effect")).toString(), QStringLiteral("3"));
        QCOMPARE(written.count(), 1);
        QCOMPARE(written.installation(0).exe, QStringLiteral("/m/mugen.exe"));
    }

    void loadDefaults()
    {
        m_configuration.config[QStringLiteral("onion_effect")] = 3;
        m_configuration.config[QStringLiteral("font_size")] = 20;
        m_configuration.config[QStringLiteral("confirm_close")] = false;
        Options options(m_dir.path(), nullptr);
        options.loadDefaults();
        QCOMPARE(field<QComboBox>(options, "onion_effect")->currentText(), QStringLiteral("Monochrome"));
        QCOMPARE(field<QSpinBox>(options, "font_size")->value(), 10);
        QVERIFY(field<QCheckBox>(options, "confirm_close")->isChecked());
        // Nothing changes before Apply.
        QCOMPARE(setting("font_size"), QStringLiteral("20"));
        options.apply();
        const QMugenModel defaults;
        for (const char *key : {"onion_effect", "font_size", "confirm_close"})
            QCOMPARE(setting(key), defaults.config.value(QLatin1String(key)).toString());
    }

    void exportThenImport()
    {
        m_configuration.add(QStringLiteral("One"), QStringLiteral("/1.exe"), QStringLiteral("%0"), QString());
        m_configuration.add(QStringLiteral("Two"), QStringLiteral("/2.exe"), QStringLiteral("%0 kfm"),
                            QStringLiteral("/2.png"));
        m_configuration.config[QStringLiteral("unknown_key")] = QStringLiteral("kept");
        Options options(m_dir.path(), nullptr);
        // What the dialog shows goes out, applied or not; the extension is added.
        field<QComboBox>(options, "cache_type")->setCurrentIndex(0);
        m_dialogs->answer({path("exported")});
        options.saveConfiguration();
        QCOMPARE(m_dialogs->calls.last().title, QStringLiteral("Save configuration"));
        QCOMPARE(m_dialogs->calls.last().filter, QStringLiteral("Kestrada 3 Configuration (*.ksc3)"));
        QCOMPARE(setting("cache_type"), QStringLiteral("0"));

        m_configuration.clear();
        m_configuration.config[QStringLiteral("unknown_key")] = QStringLiteral("lost");
        // A file that isn't a configuration changes nothing, and says so.
        QVERIFY(writeFile(path("broken.ksc3"), "<settings/>"));
        m_dialogs->answer({path("broken.ksc3"), path("exported.ksc3")});
        options.openConfiguration();
        QCOMPARE(m_prompt->calls.size(), 1);
        QCOMPARE(m_prompt->calls.first().title, QStringLiteral("Open configuration"));
        QCOMPARE(setting("unknown_key"), QStringLiteral("lost"));

        options.openConfiguration();
        QCOMPARE(m_dialogs->calls.last().title, QStringLiteral("Open configuration"));
        QCOMPARE(setting("cache_type"), QStringLiteral("1"));
        QCOMPARE(setting("unknown_key"), QStringLiteral("kept"));
        QCOMPARE(m_configuration.count(), 2);
        QCOMPARE(m_configuration.installation(1).icon, QStringLiteral("/2.png"));
        // The fields show what was read.
        QCOMPARE(field<QComboBox>(options, "cache_type")->currentData().toInt(), 1);
    }

    void aPresetBringsItsLooks()
    {
        Options options(m_dir.path(), nullptr);
        auto *preset = field<QComboBox>(options, "preset");
        preset->setCurrentIndex(preset->findData(QStringLiteral("Night")));
        QCOMPARE(field<QComboBox>(options, "stylesheet")->currentData().toString(), QStringLiteral("Dusk"));
        QCOMPARE(field<QComboBox>(options, "iconset")->currentData().toString(), QStringLiteral("Moon"));
        QCOMPARE(field<QComboBox>(options, "colorset")->currentData().toString(), QStringLiteral("Dark"));
        // The colours tab edits the preset's colorset.
        QCOMPARE(colorsets->color(QStringLiteral("clsn1")), QColor(10, 20, 30));
        // A preset that names no looks brings the classic ones.
        preset->setCurrentIndex(preset->findData(QStringLiteral("Classic")));
        QCOMPARE(field<QComboBox>(options, "colorset")->currentData().toString(), QStringLiteral("Classic"));
        QCOMPARE(colorsets->color(QStringLiteral("clsn1")), QColor(200, 0, 0));
    }

    void shortcutsEditedInTheTable()
    {
        QMainWindow window;
        QActionManager actions(&window);
        QAction *first = actions.addAction({1}, QStringLiteral("test_first"), 74);
        QAction *second = actions.addAction({1}, QStringLiteral("test_second"), 75);
        Options options(m_dir.path(), &actions);
        auto *table = field<QTableView>(options, "shortcuts");
        options.show();
        // An editor committed or closed twice is a view's warning, not an error: make it one.
        QTest::failOnWarning(QRegularExpression(QStringLiteral("^QAbstractItemView::")));
        // Keys pressed in the table's editor: the binding is taken when the
        // user stops pressing, and the editor closes.
        auto press = [&](int row, const QKeySequence &keys) {
            const QModelIndex index = table->model()->index(row, 1);
            table->setCurrentIndex(index);
            table->edit(index);
            auto *editor = table->viewport()->findChild<QKeySequenceEdit *>();
            QVERIFY(editor);
            QTest::keyClick(editor, Qt::Key(keys[0].key()), keys[0].keyboardModifiers());
            QTRY_VERIFY(!table->viewport()->findChild<QKeySequenceEdit *>());
        };
        const QKeySequence keys(Qt::CTRL | Qt::Key_K);
        press(0, keys);
        QCOMPARE(actions.keys(first), keys);
        QCOMPARE(table->model()->index(0, 1).data().toString(), keys.toString(QKeySequence::NativeText));

        // The same key for a command of the same editor is refused.
        press(1, keys);
        QCOMPARE(m_prompt->calls.size(), 1);
        QCOMPARE(m_prompt->calls.first().title, QStringLiteral("Conflict!"));
        QCOMPARE(m_prompt->calls.first().text,
                 QStringLiteral("This shortcut conflict with another that resides in the same scope."));
        QVERIFY(actions.keys(second).isEmpty());

        // Apply keeps the bindings beside the program.
        options.apply();
        QVERIFY(TestSupport::readFile(path("shortcuts.xml")).contains("test_first"));
    }

    void customColorset()
    {
        Options options(m_dir.path(), nullptr);
        auto *list = field<QListView>(options, "colors");
        auto *bold = field<QCheckBox>(options, "bold");
        // Nothing chosen, nothing to change.
        QVERIFY(!field<QWidget>(options, "color")->isEnabled());
        // A highlight is a background: no weight or slant.
        list->setCurrentIndex(colorsets->index(QColorsetManager::Line));
        QVERIFY(!bold->isEnabled());

        list->setCurrentIndex(colorsets->index(QColorsetManager::Trigger));
        bold->setChecked(!bold->isChecked());
        m_dialogs->answer({QColor(1, 2, 3)});
        options.chooseColor();
        const QColorsetManager::Entry edited = colorsets->entry(QColorsetManager::Trigger);
        QCOMPARE(edited.color, QColor(1, 2, 3));
        options.saveColorset();
        QCOMPARE(field<QComboBox>(options, "colorset")->currentData().toString(), QStringLiteral("Custom"));

        QColorsetManager reader(QDataFolder(path("colorsets")));
        QVERIFY(reader.load(QStringLiteral("Custom"), true));
        QCOMPARE(reader.entry(QColorsetManager::Trigger).color, edited.color);
        QCOMPARE(reader.entry(QColorsetManager::Trigger).bold, edited.bold);
        QCOMPARE(reader.color(QStringLiteral("clsn1")), QColor(200, 0, 0));
        // Applied, the colours reach the syntax formats and the configuration.
        options.apply();
        QCOMPARE(setting("colorset"), QStringLiteral("Custom"));
        QCOMPARE(m_formats.format(QSyntaxFormats::indexOf(QStringLiteral("trigger"))).foreground().color(),
                 QColor(1, 2, 3));
    }

    void colorsNeverAppliedAreDropped()
    {
        {
            Options options(m_dir.path(), nullptr);
            field<QListView>(options, "colors")->setCurrentIndex(colorsets->index(QColorsetManager::Clsn1));
            m_dialogs->answer({QColor(9, 9, 9)});
            options.chooseColor();
        }
        QCOMPARE(colorsets->color(QStringLiteral("clsn1")), QColor(200, 0, 0));
        QVERIFY(!QFile::exists(path("colorsets/Custom.xml")));
    }

    void installations()
    {
        Options options(m_dir.path(), nullptr);
        QMugenInfo answer{QStringLiteral("Mugen"), QStringLiteral("/m.exe"), QStringLiteral("%0 %0"), QString()};
        bool accept = true;
        options.setMugenDlgRunner([&](MugenDlg &dialog) {
            dialog.setInfo(answer);
            return accept;
        });
        options.addMugen();
        answer.name = QStringLiteral("Ikemen");
        options.addMugen();
        QCOMPARE(m_configuration.count(), 2);
        // The new one is selected: up moves it first.
        options.moveMugenUp();
        QCOMPARE(m_configuration.installation(0).name, QStringLiteral("Ikemen"));
        answer.params = QStringLiteral("kfm %0");
        options.editMugen();
        QCOMPARE(m_configuration.installation(0).params, QStringLiteral("kfm %0"));
        // A cancelled dialog changes nothing.
        accept = false;
        answer.params = QStringLiteral("lost");
        options.editMugen();
        options.addMugen();
        QCOMPARE(m_configuration.count(), 2);
        QCOMPARE(m_configuration.installation(0).params, QStringLiteral("kfm %0"));
        options.moveMugenDown();
        options.removeMugen();
        QCOMPARE(m_configuration.count(), 1);
        QCOMPARE(m_configuration.installation(0).name, QStringLiteral("Mugen"));
        // Clearing asks first; No, the default, keeps the list.
        options.clearMugens();
        QCOMPARE(m_configuration.count(), 1);
        m_prompt->answer({true});
        options.clearMugens();
        QCOMPARE(m_configuration.count(), 0);
    }
};

QTEST_MAIN(tst_Options)
#include "tst_options.moc"
