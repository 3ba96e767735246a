#include "core/base/qmessages.h"

#include <QSignalSpy>
#include <QtTest>

#include <memory>

class tst_QMessages : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void displayTexts_data()
    {
        QTest::addColumn<int>("file");
        QTest::addColumn<int>("index");
        QTest::addColumn<int>("line");
        QTest::addColumn<int>("fileIndex");
        QTest::addColumn<QString>("expected");
        QTest::newRow("def") << 0 << 4 << 0 << 0 << QStringLiteral("DEF(1): text");
        QTest::newRow("sprite without index") << 1 << -1 << 0 << 0 << QStringLiteral("SFF: text");
        QTest::newRow("sprite") << 1 << 0 << 0 << 0 << QStringLiteral("SFF(1): text");
        QTest::newRow("palette at place 2") << 1 << 2 << 1 << 0 << QStringLiteral("SFF(palette 3): text");
        QTest::newRow("air") << 2 << 3 << 41 << 0 << QStringLiteral("AIR(42): text");
        QTest::newRow("cmd") << 3 << 0 << 0 << 0 << QStringLiteral("CMD(1): text");
        QTest::newRow("second state, line index 9") << 4 << 7 << 9 << 1 << QStringLiteral("ST 2(10): text");
        QTest::newRow("sound") << 5 << 6 << 0 << 0 << QStringLiteral("SND(7): text");
        QTest::newRow("percent signs stay") << 4 << 0 << 0 << 0 << QStringLiteral("ST 1(1): value %1 and %2 here");
    }

    void displayTexts()
    {
        QFETCH(int, file);
        QFETCH(int, index);
        QFETCH(int, line);
        QFETCH(int, fileIndex);
        QFETCH(QString, expected);
        QMessage message;
        message.file = file;
        message.index = index;
        message.line = line;
        // The display ends with the text as it is: never a pattern for arg().
        message.text = expected.section(QLatin1String(": "), 1);
        QCOMPARE(QMessageList::displayText(message, fileIndex), expected);
    }

    void totalsAcrossDocuments()
    {
        QMessageList list;
        QMessages sprites(&list, FileSprites);
        QMessages states(&list, FileStates);
        states.setFileIndex(2);
        QSignalSpy updated(&list, &QMessageList::updated);

        sprites.begin();
        sprites.add(0, QStringLiteral("Empty sprite!"), 0, 0);
        sprites.add(1, QStringLiteral("duplicate"), 1, 0);
        sprites.add(2, QStringLiteral("note"), 1, 0);
        // Within a check the list waits for its end.
        QCOMPARE(updated.count(), 0);
        sprites.end();
        QCOMPARE(updated.count(), 1);

        // Outside a check every message updates the list at once.
        states.add(1, QStringLiteral("warn"), 3, 9);
        QCOMPARE(updated.count(), 2);

        // Rows, errors, warnings; the sprites' messages of any kind and their information.
        QCOMPARE(QList<int>({list.rowCount(), list.errors(), list.warnings(), sprites.count(QMessages::AnySeverity),
                             sprites.count(QMessages::Information)}),
                 QList<int>({4, 1, 2, 3, 1}));

        int fileIndex = -1;
        QCOMPARE(list.message(3, &fileIndex).text, QStringLiteral("warn"));
        QCOMPARE(fileIndex, 2);
        QCOMPARE(list.message(0, &fileIndex).text, QStringLiteral("Empty sprite!"));
        QCOMPARE(fileIndex, 0);
        QCOMPARE(list.data(list.index(3), Qt::DisplayRole).toString(), QStringLiteral("ST 3(10): warn"));

        // Out of range: an empty message.
        QVERIFY(list.message(4).text.isEmpty() && list.message(-1).text.isEmpty());

        // A new check starts from nothing.
        sprites.begin();
        sprites.end();
        QCOMPARE(sprites.count(QMessages::AnySeverity), 0);
        QCOMPARE(list.rowCount(), 1);
    }

    void aDocumentThatGoesTakesItsRowsAtTheNextUpdate()
    {
        QMessageList list;
        QMessages kept(&list, FileCommands);
        auto gone = std::make_unique<QMessages>(&list, FileStates);
        kept.add(0, QStringLiteral("k"), 0, 0);
        gone->add(0, QStringLiteral("g"), 0, 0);
        QCOMPARE(list.rowCount(), 2);
        gone.reset();
        // The row is no longer reachable even before the update...
        QVERIFY(list.message(1).text.isEmpty());
        list.update();
        // ...and the update recounts.
        QCOMPARE(list.rowCount(), 1);
        QCOMPARE(list.errors(), 1);
    }

};

QTEST_MAIN(tst_QMessages)
#include "tst_qmessages.moc"
