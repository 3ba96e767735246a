#include "addsom.h"

#include "gui/common/dialogparts.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QRadioButton>
#include <QSpinBox>

AddSom::AddSom(QWidget *parent, int group, int number)
    : QDialog(parent)
    , m_group(itemSpinBox(this, QStringLiteral("grp"), group))
    , m_number(itemSpinBox(this, QStringLiteral("idx"), number))
    , m_one(new QRadioButton(tr("+1"), this))
    , m_ten(new QRadioButton(tr("+10"), this))
{
    m_one->setObjectName(QStringLiteral("OneInc"));
    m_ten->setObjectName(QStringLiteral("TenInc"));
    m_one->setChecked(true);
    auto *steps = new QHBoxLayout;
    steps->addWidget(m_one);
    steps->addWidget(m_ten);
    steps->addStretch(1);
    auto *form = new QFormLayout;
    form->addRow(tr("Group:"), m_group);
    form->addRow(tr("First index:"), m_number);
    form->addRow(tr("Increment:"), steps);
    layOutDialog(this, tr("Add sounds"), form);
}

int AddSom::group() const
{
    return m_group->value();
}

int AddSom::number() const
{
    return m_number->value();
}

int AddSom::step() const
{
    return m_ten->isChecked() ? 10 : 1;
}

void AddSom::setValues(int group, int number, int step)
{
    m_group->setValue(group);
    m_number->setValue(number);
    (step == 10 ? m_ten : m_one)->setChecked(true);
}
