#include "mainwindow.h"

#include "qinterface.h"

#include "core/app/qproject.h"
#include "core/base/apppaths.h"
#include "core/base/qmugenmodel.h"
#include "core/text/qmugensyntaxproperties.h"

#include <QEvent>
#include <QMenuBar>

MainWindow::MainWindow(bool firstInstance, QWidget *parent)
    : QMainWindow(parent)
{
    setupUi();
    // The vocabulary of engine text; a missing file leaves every controller unknown.
    mugenSyntax = new QMugenSyntaxProperties;
    mugenSyntax->load(applicationDir() + QStringLiteral("/syntax_mugen.xml"));
    // The kinds of lines that text documents recognise, process-wide.
    registerProjectElements();
    mainInterface = new QInterface(this);
    mainInterface->start(firstInstance);
}

MainWindow::~MainWindow()
{
    delete mainInterface;
    mainInterface = nullptr;
    if (configuration)
        configuration->save(settingsFileForWrite(QStringLiteral("config.xml")));
    releaseProjectElements();
    delete mugenSyntax;
    mugenSyntax = nullptr;
}

void MainWindow::setupUi()
{
    setObjectName(QStringLiteral("MainWindow"));
    setWindowIcon(QIcon(QStringLiteral(":/imgs/Imgs/mugen.png")));
    menuFile = menuBar()->addMenu(QString());
    menuFile->setObjectName(QStringLiteral("menuFile"));
    menuEdit = menuBar()->addMenu(QString());
    menuEdit->setObjectName(QStringLiteral("menuEdit"));
    menuView = menuBar()->addMenu(QString());
    menuView->setObjectName(QStringLiteral("menuView"));
    menuTools = menuBar()->addMenu(QString());
    menuTools->setObjectName(QStringLiteral("menuTools"));
    menuHelp = menuBar()->addMenu(QString());
    menuHelp->setObjectName(QStringLiteral("menuHelp"));

    auto *central = new QWidget(this);
    central->setObjectName(QStringLiteral("centralWidget"));
    setCentralWidget(central);

    if (configuration) {
        resize(configuration->config[QStringLiteral("window_width")].toInt(),
               configuration->config[QStringLiteral("window_height")].toInt());
    }
    retranslate();
}

void MainWindow::retranslate()
{
    setWindowTitle(tr("Kestrada"));
    menuFile->setTitle(tr("Project"));
    menuEdit->setTitle(tr("Edit"));
    menuView->setTitle(tr("View"));
    menuTools->setTitle(tr("Tools"));
    menuHelp->setTitle(tr("Help"));
}

void MainWindow::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        retranslate();
    QMainWindow::changeEvent(event);
}
