#include "sndimport.h"

#include "gui/common/dialogparts.h"

#include <QComboBox>
#include <QFormLayout>

sndimport::sndimport(QWidget *parent, const QStringList &projects, int current)
    : QDialog(parent)
    , m_projects(new QComboBox(this))
    , m_groups(new GroupInterval(this, tr("Only the groups")))
{
    m_projects->setObjectName(QStringLiteral("projList"));
    m_projects->addItems(projects);
    m_projects->setCurrentIndex(current);
    auto *form = new QFormLayout;
    form->addRow(tr("Project:"), m_projects);
    layOutDialog(this, tr("Import from another project"), form, m_groups);
}

int sndimport::project() const
{
    return m_projects->currentIndex();
}

void sndimport::setProject(int index)
{
    m_projects->setCurrentIndex(index);
}
