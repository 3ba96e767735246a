#include "options.h"
#include "qinterface.h"

#include "core/base/apppaths.h"

void QInterface::toolsOptions()
{
    Options dialog(applicationDir(), &m_actions, m_mainWindow);
    connect(&dialog, &Options::applied, this, &QInterface::applyConfig);
    dialog.exec();
}
