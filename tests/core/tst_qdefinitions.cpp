#include "core/base/qcodepages.h"
#include "core/text/qdefinitions.h"

#include <QTextDocument>
#include <QtTest>

namespace {

/**
 * What the document read: "type version widthxheight", then each field of
 * files() that isn't empty as "field:value", lists joined by ",".
 */
QString readingOf(QDefinitions &definitions)
{
    definitions.updateHierarchy();
    const QDefinitionsFiles f = definitions.files();
    const QSize size = definitions.localcoord();
    const QStringList fields = {QStringLiteral("%1 %2 %3x%4").arg(definitions.type()).arg(definitions.version(), 0, 16)
                                    .arg(size.width()).arg(size.height()),
                                QLatin1String("pal:") + f.palettes.join(QLatin1Char(',')),
                                QLatin1String("st:") + f.states.join(QLatin1Char(',')), QLatin1String("spr:") + f.sprites,
                                QLatin1String("anim:") + f.animations, QLatin1String("snd:") + f.sounds,
                                QLatin1String("cmd:") + f.commands, QLatin1String("name:") + definitions.name()};
    QStringList out;
    for (const QString &field : fields) {
        if (!field.endsWith(QLatin1Char(':')))
            out.append(field);
    }
    return out.join(QLatin1Char(' '));
}

} // namespace

class tst_QDefinitions : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        buildCodecNames();
    }

    void reading_data()
    {
        QTest::addColumn<QString>("text");
        // Every document starts as a storyboard (2), which a text without a known section keeps.
        QTest::addColumn<QString>("expected");
        QTest::newRow("empty") << QString() << QStringLiteral("2 1010000 320x240");
        QTest::newRow("1.1") << QStringLiteral("[Info]\nmugenversion = 1.1\n") << QStringLiteral("2 1010000 320x240");
        QTest::newRow("1.0") << QStringLiteral("[Info]\nmugenversion = 1.0\n") << QStringLiteral("2 1000000 320x240");
        QTest::newRow("a date is version 0") << QStringLiteral("[Info]\nmugenversion = 04,14,2001\n") << QStringLiteral("2 0 320x240");
        QTest::newRow("a part of two digits") << QStringLiteral("[Info]\nmugenversion = 1.10\n") << QStringLiteral("2 0 320x240");
        QTest::newRow("comma") << QStringLiteral("[Info]\nlocalcoord = 640,480\n") << QStringLiteral("2 0 640x480");
        QTest::newRow("x") << QStringLiteral("[Info]\nlocalcoord = 640 x 480\n") << QStringLiteral("2 0 640x480");
        QTest::newRow("spaces") << QStringLiteral("[Info]\nlocalcoord = 640  480\n") << QStringLiteral("2 0 640x480");
        QTest::newRow("no separator") << QStringLiteral("[Info]\nlocalcoord = 640\n") << QStringLiteral("2 0 320x240");
        QTest::newRow("files and bgdef") << QStringLiteral("[BGDef]\n[Files]\n") << QStringLiteral("1 0 320x240");
        QTest::newRow("every key of [Files]")
            << QStringLiteral("[Files]\nspr = a.sff\nanim = a.air\nsound = a.snd\ncmd = a.cmd\ncns = a.cns\n"
                              "st = st.cns\nstcommon = common1.cns\nPAL1 = 1.act\npal2 =\npalette = p.act\n")
            << QStringLiteral("1 0 320x240 pal:1.act,,p.act st:a.cns,st.cns,common1.cns spr:a.sff anim:a.air snd:a.snd cmd:a.cmd");
        QTest::newRow("a comment ends the value") << QStringLiteral("[Files]\npal1 = kfm.act ; comment\n")
                                                  << QStringLiteral("1 0 320x240 pal:kfm.act");
        QTest::newRow("backslashes") << QStringLiteral("[Files]\nsprite = chars\\kfm\\kfm.sff\n")
                                     << QStringLiteral("1 0 320x240 spr:chars/kfm/kfm.sff");
        QTest::newRow("a state file once") << QStringLiteral("[Files]\nst = a.cns\nst = a.cns\n") << QStringLiteral("1 0 320x240 st:a.cns");
        // A key without "=" skips its line only, whatever follows it.
        QTest::newRow("no = and a blank line") << QStringLiteral("[Files]\nsprite kfm.sff\n\nanim = kfm.air\n")
                                               << QStringLiteral("1 0 320x240 anim:kfm.air");
        QTest::newRow("no = and a comment line") << QStringLiteral("[Files]\ncmd: kfm.cmd\n; states\nst = kfm.cns\n")
                                                 << QStringLiteral("1 0 320x240 st:kfm.cns");
        QTest::newRow("a line that is no key") << QStringLiteral("[Files]\n\"odd\"\nsprite = a.sff\n= b\nsound = a.snd\n")
                                               << QStringLiteral("1 0 320x240 spr:a.sff snd:a.snd");
        QTest::newRow("sections the reading skips")
            << QStringLiteral("; head\n[Data]\nlife = 1000\n[Files]\nsprite = a.sff\n[Statedef 0]\nanim = 0\n")
            << QStringLiteral("1 0 320x240 spr:a.sff");
        QTest::newRow("stages/ of a stage") << QStringLiteral("[BGDef]\nspr = stages/mine.sff\nspr = other.sff\n")
                                            << QStringLiteral("4 0 320x240 spr:mine.sff");
        QTest::newRow("stages/ with a folder") << QStringLiteral("[BGDef]\nspr = stages/sub/mine.sff\n")
                                               << QStringLiteral("4 0 320x240 spr:stages/sub/mine.sff");
        QTest::newRow("the first scene's sprites")
            << QStringLiteral("[SceneDef]\nspr = a.sff\n[SceneDef]\nspr = b.sff\n") << QStringLiteral("2 0 320x240 spr:a.sff");
        QTest::newRow("a font's file") << QStringLiteral("[Def]\ntype = bitmap\nfile = f.fnt\n") << QStringLiteral("8 0 320x240 spr:f.fnt");
        QTest::newRow("a quoted name") << QStringLiteral("[Info]\nname = \"Kung Fu Man\"\n") << QStringLiteral("2 0 320x240 name:Kung Fu Man");
        QTest::newRow("an unquoted name") << QStringLiteral("[Info]\nname = Kung Fu Man\n") << QStringLiteral("2 0 320x240 name:Kung");
    }

    void reading()
    {
        QFETCH(QString, text);
        QFETCH(QString, expected);
        QDefinitions definitions(nullptr);
        definitions.setType(Storyboard);
        definitions.document()->setPlainText(text);
        QCOMPARE(readingOf(definitions), expected);
    }
};

QTEST_MAIN(tst_QDefinitions)
#include "tst_qdefinitions.moc"
