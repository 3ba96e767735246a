// The data that comes with the program, checked against the program itself:
// every preset names only what exists, every command has its texts and its
// icon in each iconset, every colorset has every colour, every settings file
// reads without a warning. It fails when a command is added without them.
#include "core/base/apppaths.h"
#include "core/base/atomicfile.h"
#include "core/base/qcolorsetmanager.h"
#include "core/base/qmugenmodel.h"
#include "core/base/qsyntaxformats.h"
#include "gui/app/mainwindow.h"
#include "gui/app/qiconsetmanager.h"
#include "gui/app/qinterface.h"
#include "gui/app/qpresetmanager.h"
#include "gui/app/qstylesheetmanager.h"
#include "testsupport.h"

#include <QDirIterator>
#include <QDomDocument>
#include <QFileInfo>
#include <QRegularExpression>
#include <QtTest>

namespace {

QStringList warnings;

void collectWarnings(QtMsgType type, const QMessageLogContext &, const QString &message)
{
    if (type != QtDebugMsg && type != QtInfoMsg)
        warnings.append(message);
}

QDataFolder shipped(const QString &folder)
{
    return QDataFolder(TestSupport::binDir() + QLatin1Char('/') + folder);
}

} // namespace

class tst_AppData : public QObject
{
    Q_OBJECT

private:
    QMugenModel m_configuration;
    QSyntaxFormats m_formats;
    MainWindow *m_window = nullptr;

private Q_SLOTS:
    void initTestCase()
    {
        configuration = &m_configuration;
        syntaxFormats = &m_formats;
        presets = new QPresetManager(shipped(QStringLiteral("presets")));
        iconsets = new QIconsetManager(shipped(QStringLiteral("iconsets")));
        stylesheets = new QStylesheetManager(shipped(QStringLiteral("styles")));
        colorsets = new QColorsetManager(shipped(QStringLiteral("colorsets")));
        QFile::remove(settingsFileForWrite(QStringLiteral("shortcuts.xml")));
        qInstallMessageHandler(collectWarnings);
        m_window = new MainWindow(false);
        qInstallMessageHandler(nullptr);
        QVERIFY2(warnings.isEmpty(), qPrintable(warnings.join(QLatin1Char('\n'))));
    }

    void cleanupTestCase()
    {
        delete m_window;
        QFile::remove(settingsFileForWrite(QStringLiteral("shortcuts.xml")));
        delete presets;
        delete iconsets;
        delete stylesheets;
        delete colorsets;
        presets = nullptr;
        iconsets = nullptr;
        stylesheets = nullptr;
        colorsets = nullptr;
        syntaxFormats = nullptr;
        configuration = nullptr;
    }

    void presetsNameWhatExists_data()
    {
        QTest::addColumn<QString>("preset");
        for (const QString &name : presets->names())
            QTest::newRow(qPrintable(name)) << name;
        QVERIFY(presets->names().contains(QStringLiteral("Classic")));
        QVERIFY(presets->names().size() >= 2);
    }

    void presetsNameWhatExists()
    {
        QFETCH(QString, preset);
        QDomDocument document;
        const QDomElement root =
            readXmlRoot(document, shipped(QStringLiteral("presets")).find(preset + QStringLiteral(".xml")), QStringLiteral("preset"));
        QVERIFY(!root.isNull());
        for (const char *attribute : {"stylesheet", "iconset"}) {
            const QString folder = QLatin1String(attribute) == QLatin1String("iconset") ? QStringLiteral("iconsets")
                                                                                       : QStringLiteral("styles");
            QVERIFY2(shipped(folder).folderNames().contains(root.attribute(QLatin1String(attribute))),
                     attribute);
        }
        QVERIFY(colorsets->names().contains(root.attribute(QStringLiteral("colorset"))));
        QStringList unknown;
        for (QDomElement e = root.firstChildElement(); !e.isNull(); e = e.nextSiblingElement()) {
            const QString name = e.attribute(QStringLiteral("name"));
            if (e.tagName() == QLatin1String("toolbar") && !mainInterface->layout(name))
                unknown.append(QStringLiteral("toolbar ") + name);
            if (e.tagName() == QLatin1String("panel")
                && !mainInterface->panelPage(e.attribute(QStringLiteral("parent"), QStringLiteral("editor"))
                                                 == QLatin1String("editor"),
                                             name))
                unknown.append(QStringLiteral("panel ") + name);
            for (QDomElement child = e.firstChildElement(); !child.isNull(); child = child.nextSiblingElement()) {
                const QString item = child.attribute(QStringLiteral("name"));
                if (child.tagName() == QLatin1String("button") && !mainInterface->actions().action(item))
                    unknown.append(QStringLiteral("button ") + item);
                if (child.tagName() == QLatin1String("control") && !mainInterface->controlNamed(item))
                    unknown.append(QStringLiteral("control ") + item);
            }
        }
        QVERIFY2(unknown.isEmpty(), qPrintable(unknown.join(QStringLiteral(", "))));
    }

    void everyActionHasItsTextsAndIcons_data()
    {
        QTest::addColumn<QString>("iconset");
        for (const QString &name : iconsets->names())
            QTest::newRow(qPrintable(name)) << name;
        QVERIFY(iconsets->names().contains(QStringLiteral("Classic")));
    }

    void everyActionHasItsTextsAndIcons()
    {
        QFETCH(QString, iconset);
        QActionManager &actions = mainInterface->actions();
        iconsets->load(iconset, &actions, true);
        QStringList missing;
        for (QAction *action : actions.actions()) {
            const QActionInfo *info = actions.info(action);
            const QString file = iconsets->iconFile(info->name);
            if (actions.translation().title(info->titleId).isEmpty() || action->toolTip().isEmpty())
                missing.append(info->name + QStringLiteral(" (texts)"));
            if (file.isEmpty() || !QFileInfo::exists(file) || QIcon(file).pixmap(24).isNull())
                missing.append(info->name + QStringLiteral(" (icon)"));
        }
        QVERIFY2(missing.isEmpty(), qPrintable(missing.join(QStringLiteral(", "))));
        QVERIFY(actions.actions().size() > 10);
    }

    void colorsetsHaveEveryColour()
    {
        const QRegularExpression value(QStringLiteral("^(\\d{1,3}),(\\d{1,3}),(\\d{1,3})$"));
        for (const QString &name : colorsets->names()) {
            if (name == QColorsetManager::customName())
                continue;
            QDomDocument document;
            const QDomElement root = readXmlRoot(document, shipped(QStringLiteral("colorsets")).find(name + QStringLiteral(".xml")),
                                                 QStringLiteral("colors"));
            QSet<QString> named;
            for (QDomElement e = root.firstChildElement(); !e.isNull(); e = e.nextSiblingElement()) {
                QVERIFY2(QColorsetManager::indexOf(e.attribute(QStringLiteral("name"))) >= 0,
                         qPrintable(name + QLatin1Char(' ') + e.attribute(QStringLiteral("name"))));
                QVERIFY2(value.match(e.attribute(QStringLiteral("value"))).hasMatch(), qPrintable(name));
                named.insert(e.attribute(QStringLiteral("name")));
            }
            QCOMPARE(named.size(), int(QColorsetManager::Count));
        }
    }

    void settingsFilesReadWithoutWarnings()
    {
        // Every XML file that comes with the program is well formed.
        QDirIterator files(TestSupport::binDir(), {QStringLiteral("*.xml")}, QDir::Files,
                           QDirIterator::Subdirectories);
        int count = 0;
        while (files.hasNext()) {
            QFile file(files.next());
            QVERIFY(file.open(QIODevice::ReadOnly));
            QDomDocument document;
            QString error;
            QVERIFY2(document.setContent(&file, &error), qPrintable(file.fileName() + QStringLiteral(": ") + error));
            ++count;
        }
        QVERIFY(count > 5);
        // Each look, applied as the options would, says nothing.
        warnings.clear();
        qInstallMessageHandler(collectWarnings);
        for (const QString &preset : presets->names())
            for (const QString &stylesheet : stylesheets->names())
                presets->load(preset, QString(), stylesheet, QString());
        qInstallMessageHandler(nullptr);
        QVERIFY2(warnings.isEmpty(), qPrintable(warnings.join(QLatin1Char('\n'))));
    }

    void shortcutsSurviveARoundTrip()
    {
        // The bindings that come with the program, read by the program and
        // written again, give the same bytes, but for the commands that don't
        // exist yet.
        const QString source = QStringLiteral(KESTRADA_SOURCE_DATA_DIR "/shortcuts.xml");
        QActionManager &actions = mainInterface->actions();
        QVERIFY(actions.load(source));
        QTemporaryDir dir;
        const QString written = dir.filePath(QStringLiteral("shortcuts.xml"));
        QVERIFY(actions.save(written));
        QByteArray expected;
        const QRegularExpression entry(QStringLiteral("action=\"([^\"]+)\""));
        for (const QByteArray &line : TestSupport::readFile(source).split('\n')) {
            const QRegularExpressionMatch match = entry.match(QString::fromUtf8(line));
            if (!match.hasMatch() || actions.action(match.captured(1)))
                expected += line + '\n';
        }
        expected.chop(1);
        QCOMPARE(TestSupport::readFile(written), expected);
    }
};

QTEST_MAIN(tst_AppData)
#include "tst_appdata.moc"
