#include "core/base/filelookup.h"
#include "testsupport.h"

#include <QTemporaryDir>
#include <QtTest>

class tst_FileLookup : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QString path(const char *relative) const { return m_dir.filePath(QLatin1String(relative)); }

private Q_SLOTS:
    void initTestCase()
    {
        for (const char *file : {"Sprites/KFM.SFF", "sprites/other.sff", "States/Common.cns", "kfm.def",
                                 "Palettes/Sub/pal1.ACT"})
            QVERIFY(TestSupport::writeFile(path(file), "x"));
    }

    void names_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("found");
        QTest::newRow("as written") << QStringLiteral("kfm.def") << QStringLiteral("kfm.def");
        QTest::newRow("file case") << QStringLiteral("KFM.DEF") << QStringLiteral("kfm.def");
        QTest::newRow("folder and file case") << QStringLiteral("sprites/kfm.sff") << QStringLiteral("Sprites/KFM.SFF");
        QTest::newRow("backslashes") << QStringLiteral("states\\common.CNS") << QStringLiteral("States/Common.cns");
        QTest::newRow("deeper") << QStringLiteral("palettes\\sub\\PAL1.act") << QStringLiteral("Palettes/Sub/pal1.ACT");
        QTest::newRow("dot folders") << QStringLiteral("./states/../KFM.def") << QStringLiteral("kfm.def");
        // Two folders differ only by case: an exact match wins, else the first found.
        QTest::newRow("exact folder wins") << QStringLiteral("sprites/other.sff") << QStringLiteral("sprites/other.sff");
        // What isn't there is given as written, with "/"; an empty name is the folder itself.
        QTest::newRow("missing") << QStringLiteral("sounds\\kfm.snd") << QStringLiteral("sounds/kfm.snd");
        QTest::newRow("missing in a folder found") << QStringLiteral("Sprites/none.sff") << QStringLiteral("Sprites/none.sff");
        QTest::newRow("empty") << QString() << QString();
    }

    void names()
    {
        QFETCH(QString, name);
        QFETCH(QString, found);
        QCOMPARE(findFile(m_dir.path(), name), QDir::cleanPath(m_dir.filePath(found)));
    }

    void absoluteNames()
    {
        const QString upper = m_dir.path() + QStringLiteral("/SPRITES/kfm.sff");
        QCOMPARE(findFile(QStringLiteral("/elsewhere"), upper), QDir::cleanPath(path("Sprites/KFM.SFF")));
    }
};

QTEST_GUILESS_MAIN(tst_FileLookup)
#include "tst_filelookup.moc"
