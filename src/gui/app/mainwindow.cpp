#include "mainwindow.h"

#include "qinterface.h"
#include "qlanguagemanager.h"
#include "qorganizereditor.h"
#include "gui/sounds/qsoundseditor.h"

#include "core/app/qproject.h"
#include "core/base/apppaths.h"
#include "core/base/qmugenmodel.h"
#include "core/base/quserprompt.h"
#include "core/text/qmugensyntaxproperties.h"

#include <QCloseEvent>
#include <QDockWidget>
#include <QEvent>
#include <QListView>
#include <QMenuBar>

MainWindow::MainWindow(bool firstInstance, const EditorSetup &editors, QWidget *parent)
    : QMainWindow(parent)
{
    setupUi();
    // The vocabulary of engine text; a missing file leaves every controller unknown.
    mugenSyntax = new QMugenSyntaxProperties;
    mugenSyntax->load(applicationDir() + QStringLiteral("/syntax_mugen.xml"));
    // The kinds of lines that text documents recognise, process-wide.
    registerProjectElements();
    if (languages)
        connect(languages, &QLanguageManager::langChanged, this, &MainWindow::retranslate);
    mainInterface = new QInterface(this, actions, actList);
    (editors ? editors : addEditors)(mainInterface);
    mainInterface->start(firstInstance);
}

void MainWindow::addEditors(QInterface *ui)
{
    ui->addEditor(new QSoundsEditor(ui));
    ui->addExtraEditor(new QOrganizerEditor(ui));
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

    // Only movable, at the left or the right; its width is the user's to change.
    actions = new QDockWidget(this);
    actions->setObjectName(QStringLiteral("actions"));
    actions->setFeatures(QDockWidget::DockWidgetMovable);
    actions->setAllowedAreas(Qt::LeftDockWidgetArea | Qt::RightDockWidgetArea);
    actList = new QListView(actions);
    actList->setObjectName(QStringLiteral("actList"));
    actList->setMinimumWidth(100);
    actList->setMaximumWidth(480);
    actList->setMinimumHeight(352);
    // The tips are the texts of the list: whole sentences, wrapped.
    actList->setWordWrap(true);
    actList->setTextElideMode(Qt::ElideNone);
    actList->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    actList->setEditTriggers(QAbstractItemView::NoEditTriggers);
    actions->setWidget(actList);
    addDockWidget(Qt::RightDockWidgetArea, actions);
    resizeDocks({actions}, {160}, Qt::Horizontal);

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
    actions->setWindowTitle(tr("Action list"));
    if (mainInterface)
        mainInterface->retranslate();
}

void MainWindow::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        retranslate();
    QMainWindow::changeEvent(event);
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    if (configuration && configuration->config.value(QStringLiteral("confirm_close")).toBool()
        && !userPrompt->question(tr("Close"), tr("Do you really want to close Kestrada?"))) {
        event->ignore();
        return;
    }
    if (!mainInterface) {
        event->accept();
        return;
    }
    mainInterface->fileCloseAll();
    // A refused discard keeps that project, and the program, open.
    const QList<QProject *> &left = mainInterface->projects();
    if (left.size() < 2 && (left.isEmpty() || left.first()->isBlank()))
        event->accept();
    else
        event->ignore();
}
