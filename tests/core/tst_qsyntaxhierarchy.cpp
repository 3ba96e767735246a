#include "core/base/qcodepages.h"
#include "core/text/qsyntaxhierarchy.h"
#include "core/text/qsyntaxtexteditor.h"
#include "testsupport.h"

#include <QRegularExpression>
#include <QSignalSpy>
#include <QTextCodec>
#include <QTextCursor>
#include <QTextDocument>
#include <QtTest>

namespace {

QStringList childTexts(const QSyntaxHierarchyItem *item)
{
    QStringList texts;
    for (const QSyntaxHierarchyItem *child : item->children)
        texts.append(child->value.isEmpty() ? child->text : child->text + QLatin1Char('=') + child->value);
    return texts;
}

const QSyntaxHierarchyItem *section(const QSyntaxHierarchy &hierarchy, const QString &text)
{
    for (const QSyntaxHierarchyItem *item : hierarchy.sections()) {
        if (item->text == text)
            return item;
    }
    return nullptr;
}

QString latin1(const QString &path)
{
    return QString::fromLatin1(TestSupport::readFile(path));
}

} // namespace

class tst_QSyntaxHierarchy : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void emptyTextGivesEmptyTrees()
    {
        QMugenSyntaxHierarchy hierarchy;
        QSignalSpy updated(&hierarchy, &QSyntaxHierarchy::updated);
        hierarchy.rebuild(QString());
        QCOMPARE(updated.count(), 1);
        QVERIFY(hierarchy.sections().isEmpty());
        QCOMPARE(hierarchy.variables().at(0)->children.size(), 60);
        QCOMPARE(hierarchy.variables().at(1)->children.size(), 40);
        QCOMPARE(hierarchy.rowCount(), 0);
        hierarchy.setMode(QSyntaxHierarchy::Variables);
        QCOMPARE(hierarchy.rowCount(), 2);
        QCOMPARE(hierarchy.data(hierarchy.index(0, 0)).toString(), QStringLiteral("Integer"));
        QCOMPARE(hierarchy.data(hierarchy.index(7, 0, hierarchy.index(1, 0))).toString(), QStringLiteral("7"));
    }

    void sectionsAndValues()
    {
        QMugenSyntaxHierarchy hierarchy;
        hierarchy.rebuild(QStringLiteral(
            "; a file\n"
            "junk before any section\n"
            "[INFO]\n"
            "name = \"Kung Fu Man\" ; the name\n"
            "mugenversion=1.0\n"
            "\n"
            ";--------------\n"
            "[FILES]\n"
            "sprite = kfm.sff\n"
            "pal1  =  kfm.act\n"
            "not a key line\n"
            "[Quotes]\n"
            "victory1 = \"You must defeat Sheng Long!\"\n"));
        QVERIFY(hierarchy.sectionExists(QStringLiteral("files")));
        QVERIFY(!hierarchy.sectionExists(QStringLiteral("arcade")));
        QCOMPARE(hierarchy.findValue(QStringLiteral("NAME"), QStringLiteral("info")), QStringLiteral("\"Kung Fu Man\""));
        QCOMPARE(hierarchy.findValue(QStringLiteral("mugenversion"), QStringLiteral("info")), QStringLiteral("1.0"));
        QCOMPARE(hierarchy.findValue(QStringLiteral("pal1"), QStringLiteral("files")), QStringLiteral("kfm.act"));
        QCOMPARE(hierarchy.findValue(QStringLiteral("pal2"), QStringLiteral("files")), QString());
        QCOMPARE(hierarchy.findValue(QStringLiteral("sprite"), QStringLiteral("nothing")), QString());
        QCOMPARE(childTexts(section(hierarchy, QStringLiteral("FILES"))),
                 QStringList({QStringLiteral("sprite=kfm.sff"), QStringLiteral("pal1=kfm.act")}));
        const QSyntaxHierarchyItem *quotes = section(hierarchy, QStringLiteral("Quotes"));
        QCOMPARE(quotes->children.first()->kind, QStringLiteral("quote"));
        QCOMPARE(quotes->children.first()->value, QStringLiteral("You must defeat Sheng Long!"));
        // Lines from 0; the ruler above [FILES] is no comment block.
        QCOMPARE(section(hierarchy, QStringLiteral("FILES"))->line, 7);
        QCOMPARE(hierarchy.data(hierarchy.index(1, 0)).toString(), QStringLiteral("FILES"));
    }

    void statesNestUnderTheirDefinitions()
    {
        QMugenSyntaxHierarchy hierarchy;
        hierarchy.rebuild(QStringLiteral(
            "; Standing\n"
            "[Statedef 0]\n"                // 1
            "type = S\n"
            "anim = 0\n"
            "\n"
            "[State 0, 1]\n"                // 5
            "type = ChangeAnim\n"
            "trigger1 = Anim != 0\n"
            "value = 0\n"
            "[State 0, VarSet]\n"           // 9
            "type = VarSet\n"
            "trigger1 = 1\n"
            "v = 3\n"
            "[Statedef 20]\n"               // 13
            "[State 20, stuff]\n"
            "type = Null\n"
            "trigger1 = var(70) := 1 || fvar(2) := 1.5 || Var( 4 ):=2\n"
            "[State 20, range]\n"
            "type = VarRangeSet\n"
            "first = 57\n"
            "value = 0\n"
            "[State 20, frange]\n"
            "type = varrangeset\n"
            "last = 1\n"
            "fvalue = 0\n"
            "[State 20, set by key]\n"
            "type = VarSet\n"
            "fvar(39) = 1\n"));
        QCOMPARE(hierarchy.sections().size(), 2);
        const QSyntaxHierarchyItem *stand = hierarchy.sections().first();
        QCOMPARE(stand->kind, QStringLiteral("statedef"));
        QCOMPARE(hierarchy.data(hierarchy.index(0, 0)).toString(), QStringLiteral("Statedef 0 - Standing"));
        // Two key lines, then the two controllers.
        QCOMPARE(stand->children.size(), 4);
        QCOMPARE(stand->children.at(1)->kind, QStringLiteral("anim"));
        QCOMPARE(stand->children.at(2)->kind, QStringLiteral("changeanim"));
        QCOMPARE(stand->children.at(2)->text, QStringLiteral("State 0, 1"));
        QCOMPARE(childTexts(stand->children.at(2)).size(), 3);

        const QSyntaxHierarchyItem *integers = hierarchy.variables().at(0);
        const QSyntaxHierarchyItem *floats = hierarchy.variables().at(1);
        QCOMPARE(integers->children.at(3)->users, QStringList(QStringLiteral("Statedef 0")));
        QCOMPARE(integers->children.at(4)->users, QStringList(QStringLiteral("Statedef 20")));
        QCOMPARE(floats->children.at(2)->users, QStringList(QStringLiteral("Statedef 20")));
        // The variable lists end at 59 and 39.
        QVERIFY(integers->children.at(56)->users.isEmpty());
        for (int v : {57, 58, 59})
            QCOMPARE(integers->children.at(v)->users, QStringList(QStringLiteral("Statedef 20")));
        QCOMPARE(floats->children.at(0)->users.size(), 1);
        QCOMPARE(floats->children.at(1)->users.size(), 1);
        QVERIFY(floats->children.at(2)->users.size() == 1); // once, though set twice
        QCOMPARE(floats->children.at(39)->users.size(), 1);
        QCOMPARE(floats->children.at(39)->children.first()->line, 13);
        QVERIFY(floats->children.at(3)->users.isEmpty());

        // itemAtLine goes as deep as the line allows.
        hierarchy.setMode(QSyntaxHierarchy::Sections);
        const QModelIndex atValue = hierarchy.itemAtLine(7);
        QCOMPARE(hierarchy.lineOf(atValue), 7);
        QCOMPARE(hierarchy.data(hierarchy.parent(atValue)).toString(), QStringLiteral("State 0, 1"));
        QCOMPARE(hierarchy.lineOf(hierarchy.itemAtLine(0)), -1);
    }

    void commandsAndAnimations()
    {
        QMugenSyntaxHierarchy hierarchy;
        hierarchy.rebuild(QStringLiteral("[Command]\nname = \"x\"\ncommand = x\n[Command]\nname = \"y\"\n"
                                         "[Command]\nname = \"x\"\n[Command]\n"
                                         "; Stand\n[Begin Action 0]\n0,0, 0,0, 5\n[Begin Action 5]\n"));
        QCOMPARE(hierarchy.uniqueCommands(), 2);
        QCOMPARE(hierarchy.sections().size(), 2);
        const QSyntaxHierarchyItem *commands = hierarchy.sections().at(0);
        QCOMPARE(commands->kind, QStringLiteral("commands"));
        QCOMPARE(childTexts(commands), QStringList({QStringLiteral("x"), QStringLiteral("y"), QStringLiteral("x"),
                                                   QStringLiteral("Command")}));
        const QSyntaxHierarchyItem *animations = hierarchy.sections().at(1);
        QCOMPARE(animations->children.size(), 2);
        QCOMPARE(animations->children.first()->comment, QStringLiteral("Stand"));
    }

    void corpusFiles_data()
    {
        QTest::addColumn<QString>("path");
        const QStringList files =
            TestSupport::corpusFiles({QStringLiteral("*.def"), QStringLiteral("*.cns"), QStringLiteral("*.st")});
        if (files.isEmpty())
            QSKIP("the corpus isn't there");
        for (const QString &file : files)
            QTest::newRow(qPrintable(file.mid(TestSupport::corpusDir().size() + 1))) << file;
    }

    void corpusFiles()
    {
        QFETCH(QString, path);
        const QString text = latin1(path);
        QMugenSyntaxHierarchy hierarchy;
        hierarchy.rebuild(text);
        const auto count = [&text](const QRegularExpression &pattern) {
            int n = 0;
            for (auto it = pattern.globalMatch(text); it.hasNext(); it.next())
                ++n;
            return n;
        };
        if (!path.endsWith(QLatin1String(".def"), Qt::CaseInsensitive)) {
            // State files: a top-level item for each [Statedef].
            static const QRegularExpression statedef(QStringLiteral("(^|\\n)[ \\t]*\\[\\s*statedef"),
                                                     QRegularExpression::CaseInsensitiveOption);
            int found = 0;
            for (const QSyntaxHierarchyItem *item : hierarchy.sections())
                found += item->kind == QLatin1String("statedef");
            QCOMPARE(found, count(statedef));
            return;
        }
        // Every "[" that starts a line is a section of its own.
        static const QRegularExpression header(QStringLiteral("(^|\\n)[ \\t]*\\["));
        int items = 0;
        for (const QSyntaxHierarchyItem *item : hierarchy.sections())
            items += item->kind == QLatin1String("commands") || item->text == QLatin1String("Animations")
                ? int(item->children.size()) : 1;
        QCOMPARE(items, count(header));
        if (!hierarchy.findValue(QStringLiteral("cns"), QStringLiteral("files")).isEmpty()) {
            // A character names its sprites, and itself in [Info].
            QVERIFY(!hierarchy.findValue(QStringLiteral("sprite"), QStringLiteral("files")).isEmpty());
            QVERIFY(!hierarchy.findValue(QStringLiteral("name"), QStringLiteral("info")).isEmpty());
        }
        if (hierarchy.sectionExists(QStringLiteral("bgdef")))
            QVERIFY(!hierarchy.findValue(QStringLiteral("spr"), QStringLiteral("bgdef")).isEmpty());
    }

    void documentsRebuildASecondAfterTheLastEdit()
    {
        buildCodecNames();
        QSyntaxTextEditor document(nullptr, FileStates, false, 0x1010000, true);
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("a.cns"));
        QVERIFY(TestSupport::writeFile(path, "[Statedef 0]\r\ntype = S\r\n"));
        QSignalSpy updated(&document, &QSyntaxTextEditor::hierarchyUpdated);
        // A load rebuilds at once.
        QVERIFY(document.load(path, 0, false));
        QCOMPARE(updated.count(), 1);
        QCOMPARE(document.language(), 1);
        QVERIFY(document.hierarchy()->sectionExists(QStringLiteral("statedef 0")));

        QTextCursor(document.document()).insertText(QStringLiteral("[Statedef 5]\n"));
        QCOMPARE(updated.count(), 1);
        QVERIFY(!document.hierarchy()->sectionExists(QStringLiteral("statedef 5")));
        QTRY_VERIFY_WITH_TIMEOUT(document.hierarchy()->sectionExists(QStringLiteral("statedef 5")), 3000);
        QCOMPARE(updated.count(), 2);

        // With checking off the hierarchy is left alone.
        document.setChecking(false);
        QTextCursor(document.document()).insertText(QStringLiteral("[Statedef 6]\n"));
        document.updateHierarchy();
        QVERIFY(!document.hierarchy()->sectionExists(QStringLiteral("statedef 6")));
    }

    void languageComesFromTheText_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<int>("language");
        QTest::newRow("comment first") << QByteArray("; a\nfunction x() end") << 1;
        QTest::newRow("section first") << QByteArray("\n\n  [Data]\n") << 1;
        QTest::newRow("lua") << QByteArray("-- tool\nfunction main()\nend\n") << 2;
        QTest::newRow("function at position 0") << QByteArray("function main()\nend\n") << 0;
        QTest::newRow("plain") << QByteArray("hello") << 0;
    }

    void languageComesFromTheText()
    {
        QFETCH(QByteArray, text);
        QFETCH(int, language);
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("file.txt"));
        QVERIFY(TestSupport::writeFile(path, text));
        QSyntaxTextEditor document(nullptr, FileStates, false, 0x1010000, true);
        QVERIFY(document.load(path, 0, false));
        QCOMPARE(document.language(), language);
    }
};

QTEST_MAIN(tst_QSyntaxHierarchy)
#include "tst_qsyntaxhierarchy.moc"
