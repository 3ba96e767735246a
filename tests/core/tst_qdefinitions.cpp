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
        const auto row = [](const char *name, const char *text, const char *expected) {
            QTest::newRow(name) << QString::fromUtf8(text) << QString::fromUtf8(expected);
        };
        row("empty", "", "2 1010000 320x240");
        row("1.1", "[Info]\nmugenversion = 1.1\n", "2 1010000 320x240");
        row("1.0", "[Info]\nmugenversion = 1.0\n", "2 1000000 320x240");
        row("a date is version 0", "[Info]\nmugenversion = 04,14,2001\n", "2 0 320x240");
        row("a part of two digits", "[Info]\nmugenversion = 1.10\n", "2 0 320x240");
        row("comma", "[Info]\nlocalcoord = 640,480\n", "2 0 640x480");
        row("x", "[Info]\nlocalcoord = 640 x 480\n", "2 0 640x480");
        row("spaces", "[Info]\nlocalcoord = 640  480\n", "2 0 640x480");
        row("no separator", "[Info]\nlocalcoord = 640\n", "2 0 320x240");
        row("files and bgdef", "[BGDef]\n[Files]\n", "1 0 320x240");
        row("every key of [Files]",
            "[Files]\nspr = a.sff\nanim = a.air\nsound = a.snd\ncmd = a.cmd\ncns = a.cns\nst = st.cns\n"
            "stcommon = common1.cns\nPAL1 = 1.act\npal2 =\npalette = p.act\n",
            "1 0 320x240 pal:1.act,,p.act st:a.cns,st.cns,common1.cns spr:a.sff anim:a.air snd:a.snd cmd:a.cmd");
        row("a comment ends the value", "[Files]\npal1 = kfm.act ; comment\n", "1 0 320x240 pal:kfm.act");
        row("backslashes", "[Files]\nsprite = chars\\kfm\\kfm.sff\n", "1 0 320x240 spr:chars/kfm/kfm.sff");
        row("a state file once", "[Files]\nst = a.cns\nst = a.cns\n", "1 0 320x240 st:a.cns");
        // A key without "=" skips its line only, whatever follows it.
        row("no = and a blank line", "[Files]\nsprite kfm.sff\n\nanim = kfm.air\n", "1 0 320x240 anim:kfm.air");
        row("no = and a comment line", "[Files]\ncmd: kfm.cmd\n; states\nst = kfm.cns\n", "1 0 320x240 st:kfm.cns");
        row("a line that is no key", "[Files]\n\"odd\"\nsprite = a.sff\n= b\nsound = a.snd\n",
            "1 0 320x240 spr:a.sff snd:a.snd");
        row("sections the reading skips",
            "; head\n[Data]\nlife = 1000\n[Files]\nsprite = a.sff\n[Statedef 0]\nanim = 0\n", "1 0 320x240 spr:a.sff");
        row("stages/ of a stage", "[BGDef]\nspr = stages/mine.sff\nspr = other.sff\n", "4 0 320x240 spr:mine.sff");
        row("stages/ with a folder", "[BGDef]\nspr = stages/sub/mine.sff\n", "4 0 320x240 spr:stages/sub/mine.sff");
        row("the first scene's sprites", "[SceneDef]\nspr = a.sff\n[SceneDef]\nspr = b.sff\n", "2 0 320x240 spr:a.sff");
        row("a font's file", "[Def]\ntype = bitmap\nfile = f.fnt\n", "8 0 320x240 spr:f.fnt");
        row("a quoted name", "[Info]\nname = \"Kung Fu Man\"\n", "2 0 320x240 name:Kung Fu Man");
        row("an unquoted name", "[Info]\nname = Kung Fu Man\n", "2 0 320x240 name:Kung");
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
