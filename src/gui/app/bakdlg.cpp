#include "bakdlg.h"

#include "core/app/qbakmanager.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QListView>
#include <QVBoxLayout>

std::function<bool(BakDlg &)> BakDlg::runner;

BakDlg::BakDlg(QWidget *parent, const QString &fileName)
    : QDialog(parent)
    , m_backups(new QBakManager(fileName, this))
    , m_list(new QListView(this))
{
    setWindowTitle(tr("Load backup"));
    m_list->setModel(m_backups);
    m_list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_list, &QListView::doubleClicked, this, &QDialog::accept);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel(tr("Choose a backup to be loaded:"), this));
    layout->addWidget(m_list);
    layout->addWidget(buttons);
}

QString BakDlg::selected() const
{
    return m_backups->path(m_list->currentIndex());
}

bool BakDlg::run()
{
    if (runner)
        return runner(*this);
    return exec() == QDialog::Accepted;
}
