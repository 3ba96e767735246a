#include "core/base/qcolorsetmanager.h"
#include "core/base/qsyntaxformats.h"
#include "gui/app/qactionmanager.h"
#include "gui/app/qiconsetmanager.h"
#include "gui/app/qstylesheetmanager.h"
#include "gui/app/screenscale.h"
#include "testsupport.h"

#include <QMainWindow>
#include <QTemporaryDir>
#include <QtTest>

using TestSupport::writeFile;

class tst_Appearance : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;

    QString path(const QString &name) const { return m_dir.filePath(name); }

private Q_SLOTS:
    void cleanup() { setScreenDpi(0); }

    void colorsets()
    {
        QVERIFY(writeFile(path(QStringLiteral("colorsets/Partial.xml")),
                          "<!DOCTYPE ZNLColorsML>\n<colors>\n"
                          "<color name=\"block\" value=\"1,2,3\" bold=\"false\" italic=\"true\"/>\n"
                          "<color name=\"clsn2\" value=\"300,0,0\"/>\n"
                          "<color name=\"clsn1\" value=\"1,2\"/>\n"
                          "<color name=\"nonsense\" value=\"9,9,9\"/>\n</colors>\n"));
        QColorsetManager manager(QDataFolder(path(QStringLiteral("colorsets"))));
        // "Custom" heads the list whether or not it exists.
        QCOMPARE(manager.names(), QStringList({QStringLiteral("Custom"), QStringLiteral("Partial")}));
        QVERIFY(manager.load(QStringLiteral("Partial"), false));
        // Named colours take their values; the rest, and what doesn't match, keep the defaults.
        QCOMPARE(manager.entry(QColorsetManager::Block).color, QColor(1, 2, 3));
        QVERIFY(manager.entry(QColorsetManager::Block).italic);
        QCOMPARE(manager.entry(QColorsetManager::Clsn2).color, QColor(255, 0, 0));
        QCOMPARE(manager.color(QStringLiteral("clsn1")), QColor(255, 0, 0));
        QCOMPARE(manager.color(QStringLiteral("line")), QColor(255, 255, 220));
        // The same colorset again is read only when forced.
        QVERIFY(!manager.load(QStringLiteral("Partial"), false));

        // The nine syntax formats are matched by name, not by place.
        QSyntaxFormats formats;
        manager.applyTo(formats);
        QCOMPARE(formats.format(QSyntaxFormats::Block).foreground().color(), QColor(1, 2, 3));
        QCOMPARE(formats.format(QSyntaxFormats::Number).foreground().color(),
                 manager.entry(QColorsetManager::Number).color);

        // Saved and read back, as the options' "Custom".
        manager.setEntry(QColorsetManager::Line, {QColor(10, 20, 30)});
        QVERIFY(manager.save(QStringLiteral("Custom")));
        QColorsetManager reader(QDataFolder(path(QStringLiteral("colorsets"))));
        QVERIFY(reader.load(QStringLiteral("Custom"), true));
        for (int i = 0; i < QColorsetManager::Count; ++i)
            QCOMPARE(reader.entry(i).color, manager.entry(i).color);
        QCOMPARE(reader.names().count(QStringLiteral("Custom")), 1);
    }

    void stylesheets_data()
    {
        QTest::addColumn<int>("dpi");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("prepared");
        QTest::newRow("a length at 96 dpi") << 96 << "border: [1]px;" << "border: 1px;";
        QTest::newRow("a length at 192 dpi") << 192 << "border: [1]px; width: [220]px" << "border: 2px; width: 440px";
        QTest::newRow("at 144 dpi, whole pixels") << 144 << "[3]" << "4";
        QTest::newRow("a relative image") << 96 << "url(a b/x.png)" << "url(\"/style/a b/x.png\")";
        QTest::newRow("a quoted one") << 96 << "url( 'x.png' )" << "url(\"/style/x.png\")";
        QTest::newRow("a resource") << 96 << "url(:/imgs/x.png)" << "url(\":/imgs/x.png\")";
        QTest::newRow("no brackets, no change") << 96 << "[a] [-1]" << "[a] [-1]";
    }

    void stylesheets()
    {
        QFETCH(int, dpi);
        QFETCH(QString, text);
        QFETCH(QString, prepared);
        setScreenDpi(dpi);
        QCOMPARE(QStylesheetManager::prepare(text, QStringLiteral("/style")), prepared);
    }

    void iconsets()
    {
        const QString set = path(QStringLiteral("iconsets/Mine"));
        QImage image(4, 4, QImage::Format_ARGB32);
        image.fill(Qt::red);
        QVERIFY(QDir().mkpath(set) && image.save(set + QStringLiteral("/add.png")));
        QVERIFY(writeFile(set + QStringLiteral("/Iconset.xml"),
                          "<!DOCTYPE ZNLIconsetML>\n<iconset><icon name=\"spr_add\" file=\"add.png\"/></iconset>\n"));
        QMainWindow window;
        QActionManager actions(&window);
        QAction *add = actions.addAction({1}, QStringLiteral("spr_add"), 74);
        QAction *other = actions.addAction({1}, QStringLiteral("spr_delete"), 75);
        other->setIcon(QIcon(set + QStringLiteral("/add.png")));

        QIconsetManager manager(QDataFolder(path(QStringLiteral("iconsets"))));
        manager.load(QStringLiteral("Missing"), &actions, true);
        QVERIFY(manager.current().isEmpty());
        QVERIFY(add->icon().isNull());
        manager.load(QStringLiteral("Mine"), &actions, true);
        QCOMPARE(manager.current(), QStringLiteral("Mine"));
        QVERIFY(!add->icon().isNull());
        // An action the set has no icon for loses the one it had.
        QVERIFY(other->icon().isNull());
        // Loading the set in use again reads nothing, even when its file changed.
        QVERIFY(writeFile(set + QStringLiteral("/Iconset.xml"), "<!DOCTYPE ZNLIconsetML>\n<iconset/>\n"));
        manager.load(QStringLiteral("Mine"), &actions, true);
        QVERIFY(!manager.iconFile(QStringLiteral("spr_add")).isEmpty());
    }
};

QTEST_MAIN(tst_Appearance)
#include "tst_appearance.moc"
