#include "delgrp.h"

#include "dialogparts.h"

#include <QFormLayout>
#include <QSpinBox>

DelGrp::DelGrp(QWidget *parent, int group)
    : QDialog(parent)
    , m_group(itemSpinBox(this, QStringLiteral("grp"), group))
    , m_interval(new GroupInterval(this, tr("Only the numbers")))
{
    auto *form = new QFormLayout;
    form->addRow(tr("Group:"), m_group);
    layOutDialog(this, tr("Delete group"), form, m_interval);
}

int DelGrp::group() const
{
    return m_group->value();
}

void DelGrp::setGroup(int group)
{
    m_group->setValue(group);
}
