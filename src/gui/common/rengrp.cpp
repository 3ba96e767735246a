#include "rengrp.h"

#include "dialogparts.h"

#include <QFormLayout>
#include <QSpinBox>

RenGrp::RenGrp(QWidget *parent, int group)
    : QDialog(parent)
    , m_group(itemSpinBox(this, QStringLiteral("grp"), group))
    , m_newGroup(itemSpinBox(this, QStringLiteral("newGrp"), group))
    , m_interval(new GroupInterval(this, tr("Only the numbers")))
{
    auto *form = new QFormLayout;
    form->addRow(tr("Group:"), m_group);
    form->addRow(tr("New group:"), m_newGroup);
    layOutDialog(this, tr("Rename group"), form, m_interval);
}

int RenGrp::group() const
{
    return m_group->value();
}

int RenGrp::newGroup() const
{
    return m_newGroup->value();
}

void RenGrp::setGroups(int group, int newGroup)
{
    m_group->setValue(group);
    m_newGroup->setValue(newGroup);
}
