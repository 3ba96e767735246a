#include "errordlg.h"

#include "core/base/qmessages.h"

#include <QDialogButtonBox>
#include <QListView>
#include <QVBoxLayout>

ErrorDlg::ErrorDlg(QWidget *parent)
    : QDialog(parent)
    , m_list(new QListView(this))
{
    setWindowTitle(tr("Issues"));
    setMinimumSize(400, 300);
    setModal(false);
    m_list->setObjectName(QStringLiteral("listView"));
    // A project may have thousands of messages: with one height for all
    // rows the view never measures them one by one.
    m_list->setUniformItemSizes(true);
    m_list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_list->setSelectionMode(QAbstractItemView::SingleSelection);
    connect(m_list, &QListView::doubleClicked, this, &ErrorDlg::dblClick);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_list);
    layout->addWidget(buttons);
}

ErrorDlg::~ErrorDlg() = default;

void ErrorDlg::setModel(QMessageList *model)
{
    m_list->setModel(model);
}

QMessageList *ErrorDlg::model() const
{
    // A list that went with its project left the view on Qt's empty model.
    return qobject_cast<QMessageList *>(m_list->model());
}

void ErrorDlg::dblClick(const QModelIndex &index)
{
    const QMessageList *messages = model();
    if (!messages || !index.isValid())
        return;
    int fileIndex = 0;
    const QMessage message = messages->message(index.row(), &fileIndex);
    Q_EMIT navigateTo(QProjectFileType(message.file), fileIndex, message.index, message.line);
}
