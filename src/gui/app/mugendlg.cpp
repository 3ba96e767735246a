#include "mugendlg.h"

#include "core/base/quserdialogs.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileInfo>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

/** A line edit with a browse button beside it, as one row of a form. */
QWidget *withBrowseButton(QLineEdit *edit, const QString &buttonName, QWidget *parent, QToolButton **button)
{
    auto *row = new QWidget(parent);
    auto *layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(edit);
    *button = new QToolButton(row);
    (*button)->setObjectName(buttonName);
    (*button)->setText(QStringLiteral("..."));
    layout->addWidget(*button);
    return row;
}

} // namespace

MugenDlg::MugenDlg(QWidget *parent)
    : QDialog(parent)
    , m_name(new QLineEdit(this))
    , m_exe(new QLineEdit(this))
    , m_icon(new QLineEdit(this))
    , m_params(new QLineEdit(this))
    , m_templates(new QComboBox(this))
{
    setWindowTitle(tr("M.U.G.E.N."));
    m_name->setObjectName(QStringLiteral("mugenName"));
    m_exe->setObjectName(QStringLiteral("mugenExe"));
    m_icon->setObjectName(QStringLiteral("mugenIcon"));
    m_params->setObjectName(QStringLiteral("mugenParams"));
    m_templates->setObjectName(QStringLiteral("comboBox"));
    m_templates->addItems({tr("Current char vs current char"), tr("Current char vs current char AI"),
                           tr("Current char vs KFM"), tr("Current char vs KFM AI"),
                           tr("KFM vs KFM on current Stage")});
    // No item stands chosen: the parameters are what the installation says.
    m_templates->setCurrentIndex(-1);
    connect(m_templates, &QComboBox::activated, this, &MugenDlg::templateChosen);

    QToolButton *exeButton = nullptr;
    QToolButton *iconButton = nullptr;
    auto *form = new QFormLayout;
    form->addRow(tr("Name:"), m_name);
    form->addRow(tr("Executable:"), withBrowseButton(m_exe, QStringLiteral("browseExe"), this, &exeButton));
    form->addRow(tr("Icon:"), withBrowseButton(m_icon, QStringLiteral("browseIcon"), this, &iconButton));
    form->addRow(tr("Parameters:"), m_params);
    form->addRow(QString(), m_templates);
    connect(exeButton, &QToolButton::clicked, this, &MugenDlg::browseExe);
    connect(iconButton, &QToolButton::clicked, this, &MugenDlg::browseIcon);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(buttons);
    resize(420, sizeHint().height());
}

MugenDlg::~MugenDlg() = default;

QStringList MugenDlg::templates()
{
    return {QStringLiteral("%0 %0"), QStringLiteral("%0 %0 -p2.ai 1"), QStringLiteral("%0 kfm"),
            QStringLiteral("%0 kfm -p2.ai 1"), QStringLiteral("kfm kfm -s %0")};
}

void MugenDlg::setInfo(const QMugenInfo &info)
{
    m_name->setText(info.name);
    m_exe->setText(info.exe);
    m_icon->setText(info.icon);
    m_params->setText(info.params);
}

QMugenInfo MugenDlg::info() const
{
    return QMugenInfo{m_name->text(), m_exe->text(), m_params->text(), m_icon->text()};
}

void MugenDlg::templateChosen(int index)
{
    const QStringList all = templates();
    if (index >= 0 && index < all.size())
        m_params->setText(all.at(index));
}

void MugenDlg::browseExe()
{
    QString filter = tr("M.U.G.E.N. executable (*.exe)");
#ifndef Q_OS_WIN
    // Engines built for this system, such as Ikemen GO's, have no ".exe".
    filter += QStringLiteral(";;") + tr("All files (*)");
#endif
    const QString name = userDialogs->openFileName(tr("M.U.G.E.N. executable"),
                                                   QFileInfo(m_exe->text()).absolutePath(), filter);
    if (!name.isEmpty())
        m_exe->setText(name);
}

void MugenDlg::browseIcon()
{
    const QString name = userDialogs->openFileName(tr("M.U.G.E.N. icon"), QFileInfo(m_icon->text()).absolutePath(),
                                                   tr("Portable Network Graphic (*.png)"));
    if (!name.isEmpty())
        m_icon->setText(name);
}
