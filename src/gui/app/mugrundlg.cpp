#include "mugrundlg.h"

#include "core/base/qmugenmodel.h"

#include <QDialogButtonBox>
#include <QItemSelectionModel>
#include <QLabel>
#include <QListView>
#include <QPushButton>
#include <QVBoxLayout>

MugRunDlg::MugRunDlg(QWidget *parent, QMugenModel *model)
    : QDialog(parent)
    , m_model(model)
    , m_list(new QListView(this))
{
    setWindowTitle(tr("Run in M.U.G.E.N."));
    m_list->setObjectName(QStringLiteral("list"));
    m_list->setModel(model);
    m_list->setSelectionMode(QAbstractItemView::SingleSelection);
    m_list->setEditTriggers(QAbstractItemView::NoEditTriggers);

    auto *note = new QLabel(tr("M.U.G.E.N. will fail if you try to test a char created with a new format in an "
                               "older version (default format is 1.1)."),
                            this);
    note->setWordWrap(true);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    m_ok = buttons->button(QDialogButtonBox::Ok);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_list, &QListView::doubleClicked, this, &QDialog::accept);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel(tr("Choose the target:"), this));
    layout->addWidget(m_list);
    layout->addWidget(note);
    layout->addWidget(buttons);

    // Start on the installation used last; the first when that one is gone.
    int last = model->config.value(QStringLiteral("last_mugen")).toInt();
    if (last < 0 || last >= model->rowCount())
        last = 0;
    if (model->rowCount() > 0)
        m_list->setCurrentIndex(model->index(last));
    // Without a target there is nothing to accept.
    const auto updateOk = [this] { m_ok->setEnabled(selectedRow() >= 0); };
    connect(m_list->selectionModel(), &QItemSelectionModel::selectionChanged, this, updateOk);
    updateOk();
}

MugRunDlg::~MugRunDlg() = default;

int MugRunDlg::selectedRow() const
{
    const QModelIndexList rows = m_list->selectionModel()->selectedRows();
    return rows.isEmpty() ? -1 : rows.first().row();
}

QString MugRunDlg::exe() const
{
    const int row = selectedRow();
    if (row < 0)
        return QString();
    m_model->config[QStringLiteral("last_mugen")] = row;
    return m_model->installation(row).exe;
}

QString MugRunDlg::params() const
{
    const int row = selectedRow();
    return row < 0 ? QString() : m_model->installation(row).params;
}
