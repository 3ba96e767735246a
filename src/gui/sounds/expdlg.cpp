#include "expdlg.h"

#include "gui/common/dialogparts.h"

#include <QGridLayout>
#include <QRadioButton>
#include <QSpinBox>

ExpDlg::ExpDlg(QWidget *parent, int group)
    : QDialog(parent)
    , m_all(new QRadioButton(tr("All sounds"), this))
    , m_one(new QRadioButton(tr("Only the group:"), this))
    , m_group(itemSpinBox(this, QStringLiteral("grp"), group))
{
    m_all->setObjectName(QStringLiteral("allSnd"));
    m_one->setObjectName(QStringLiteral("oneGrp"));
    connect(m_one, &QRadioButton::toggled, m_group, &QWidget::setEnabled);
    auto *choice = new QGridLayout;
    choice->addWidget(m_all, 0, 0, 1, 2);
    choice->addWidget(m_one, 1, 0);
    choice->addWidget(m_group, 1, 1);
    layOutDialog(this, tr("Export sounds"), choice);
    setChoice(true, group);
}

bool ExpDlg::all() const
{
    return m_all->isChecked();
}

int ExpDlg::group() const
{
    return m_group->value();
}

void ExpDlg::setChoice(bool all, int group)
{
    (all ? m_all : m_one)->setChecked(true);
    m_group->setEnabled(!all);
    m_group->setValue(group);
}
