#include "dialogparts.h"

#include <QCheckBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QSpinBox>
#include <QVBoxLayout>

QSpinBox *itemSpinBox(QWidget *parent, const QString &name, int value)
{
    auto *spin = new QSpinBox(parent);
    spin->setObjectName(name);
    // Groups and numbers are stored as given, negative ones included.
    spin->setRange(-99999, 99999);
    spin->setValue(value);
    return spin;
}

GroupInterval::GroupInterval(QWidget *parent, const QString &text)
    : QWidget(parent)
    , m_interval(new QCheckBox(text, this))
    , m_first(itemSpinBox(this, QStringLiteral("idxFrom"), 0))
    , m_last(itemSpinBox(this, QStringLiteral("idxTo"), 0))
{
    m_interval->setObjectName(QStringLiteral("onlyIdx"));
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(m_interval);
    row->addWidget(new QLabel(tr("from"), this));
    row->addWidget(m_first, 1);
    row->addWidget(new QLabel(tr("to"), this));
    row->addWidget(m_last, 1);
    connect(m_interval, &QCheckBox::toggled, m_first, &QWidget::setEnabled);
    connect(m_interval, &QCheckBox::toggled, m_last, &QWidget::setEnabled);
    setInterval(false, 0, 0);
}

bool GroupInterval::all() const
{
    return !m_interval->isChecked();
}

int GroupInterval::first() const
{
    return qMin(m_first->value(), m_last->value());
}

int GroupInterval::last() const
{
    return qMax(m_first->value(), m_last->value());
}

void GroupInterval::setInterval(bool interval, int first, int last)
{
    m_interval->setChecked(interval);
    m_first->setEnabled(interval);
    m_last->setEnabled(interval);
    m_first->setValue(first);
    m_last->setValue(last);
}

void layOutDialog(QDialog *dialog, const QString &title, QLayout *fields, QWidget *below)
{
    dialog->setWindowTitle(title);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, dialog);
    QObject::connect(buttons, &QDialogButtonBox::accepted, dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, dialog, &QDialog::reject);
    auto *layout = new QVBoxLayout(dialog);
    layout->addLayout(fields);
    if (below)
        layout->addWidget(below);
    layout->addWidget(buttons);
    // Fixed to what the fields need, at any scale.
    layout->setSizeConstraint(QLayout::SetFixedSize);
}
