#include "gui/app/mugendlg.h"

#include <QComboBox>
#include <QLineEdit>
#include <QtTest>

class tst_MugenDlg : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void choosingATemplateWritesIt()
    {
        MugenDlg dialog(nullptr);
        auto *combo = dialog.findChild<QComboBox *>(QStringLiteral("comboBox"));
        auto *params = dialog.findChild<QLineEdit *>(QStringLiteral("mugenParams"));
        QVERIFY(combo && params);
        // What the installation says stands until the user chooses.
        dialog.setInfo({QStringLiteral("Mugen"), QStringLiteral("/m/mugen.exe"), QStringLiteral("%0 custom"),
                        QStringLiteral("/m/icon.png")});
        QCOMPARE(params->text(), QStringLiteral("%0 custom"));
        const QStringList expected{QStringLiteral("%0 %0"), QStringLiteral("%0 %0 -p2.ai 1"), QStringLiteral("%0 kfm"),
                                   QStringLiteral("%0 kfm -p2.ai 1"), QStringLiteral("kfm kfm -s %0")};
        for (int i = 0; i < combo->count(); ++i) {
            QTest::keyClick(combo, Qt::Key_Down);
            QCOMPARE(combo->currentIndex(), i);
            QCOMPARE(params->text(), expected.at(i));
        }
        // The user's own edit after a choice is what the dialog gives.
        params->setText(QStringLiteral("kfm %0"));
        const QMugenInfo info = dialog.info();
        QCOMPARE(info.name, QStringLiteral("Mugen"));
        QCOMPARE(info.exe, QStringLiteral("/m/mugen.exe"));
        QCOMPARE(info.params, QStringLiteral("kfm %0"));
        QCOMPARE(info.icon, QStringLiteral("/m/icon.png"));
    }
};

QTEST_MAIN(tst_MugenDlg)
#include "tst_mugendlg.moc"
