#include "core/base/qmugenmodel.h"
#include "gui/app/mugrundlg.h"

#include <QDialogButtonBox>
#include <QListView>
#include <QPushButton>
#include <QtTest>

class tst_MugRunDlg : public QObject
{
    Q_OBJECT

private:
    static void fill(QMugenModel &model)
    {
        model.add(QStringLiteral("One"), QStringLiteral("/1/mugen.exe"), QStringLiteral("%0 %0"), QString());
        model.add(QStringLiteral("Two"), QStringLiteral("/2/mugen.exe"), QStringLiteral("%0 kfm"), QString());
        model.add(QStringLiteral("Three"), QStringLiteral("/3/Ikemen_GO"), QStringLiteral("kfm kfm -s %0"), QString());
    }

    static QPushButton *okButton(const MugRunDlg &dialog)
    {
        return dialog.findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Ok);
    }

private Q_SLOTS:
    void startsOnTheLastOneUsed_data()
    {
        QTest::addColumn<QVariant>("last");
        QTest::addColumn<int>("row");
        QTest::newRow("never used") << QVariant() << 0;
        QTest::newRow("the second") << QVariant(QStringLiteral("1")) << 1;
        QTest::newRow("one that is gone") << QVariant(7) << 0;
    }

    void startsOnTheLastOneUsed()
    {
        QFETCH(QVariant, last);
        QFETCH(int, row);
        QMugenModel model;
        fill(model);
        if (last.isValid())
            model.config[QStringLiteral("last_mugen")] = last;
        MugRunDlg dialog(nullptr, &model);
        QCOMPARE(dialog.params(), model.installation(row).params);
        QCOMPARE(dialog.exe(), model.installation(row).exe);
        QCOMPARE(model.config.value(QStringLiteral("last_mugen")).toInt(), row);
    }

    void exeRemembersTheChoice()
    {
        QMugenModel model;
        fill(model);
        MugRunDlg dialog(nullptr, &model);
        dialog.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dialog));
        auto *list = dialog.findChild<QListView *>(QStringLiteral("list"));
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualRect(model.index(2)).center());
        // Only asking for the executable stores the row.
        QVERIFY(!model.config.contains(QStringLiteral("last_mugen")));
        QCOMPARE(dialog.params(), QStringLiteral("kfm kfm -s %0"));
        QCOMPARE(dialog.exe(), QStringLiteral("/3/Ikemen_GO"));
        QCOMPARE(model.config.value(QStringLiteral("last_mugen")).toInt(), 2);
    }

    void withoutASelectionThereIsNothing()
    {
        QMugenModel model;
        MugRunDlg dialog(nullptr, &model);
        QVERIFY(!okButton(dialog)->isEnabled());
        QCOMPARE(dialog.exe(), QString());
        QCOMPARE(dialog.params(), QString());
        QVERIFY(!model.config.contains(QStringLiteral("last_mugen")));

        fill(model);
        MugRunDlg filled(nullptr, &model);
        QVERIFY(okButton(filled)->isEnabled());
        filled.findChild<QListView *>(QStringLiteral("list"))->clearSelection();
        QVERIFY(!okButton(filled)->isEnabled());
        QCOMPARE(filled.exe(), QString());
    }
};

QTEST_MAIN(tst_MugRunDlg)
#include "tst_mugrundlg.moc"
