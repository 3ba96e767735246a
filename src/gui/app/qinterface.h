#pragma once

#include <QFileSystemWatcher>
#include <QList>
#include <QObject>

class QMainWindow;
class QProject;

/**
 * The controller behind the main window: it owns the open projects, one
 * tab each, and receives the files that other instances hand over.
 */
class QInterface : public QObject
{
    Q_OBJECT

public:
    explicit QInterface(QMainWindow *mainWindow);
    ~QInterface() override;

    /**
     * The start, once, as the last act of building the main window: one
     * blank project, and for the first instance a watch on the hand-over
     * file, then the files handed over so far.
     */
    void start(bool firstInstance);

    const QList<QProject *> &projects() const { return m_projects; }
    QProject *currentProject() const { return m_current; }

    /** Reads the hand-over file and opens what it names; see fileChanged(). */
    void consumeHandOver();

public Q_SLOTS:
    /** Opens a new blank project as the last tab and makes it current. */
    void newProject(bool fromTemplate = true);
    /**
     * Opens the project of a DEF file. Nothing is said when it can't be
     * read. A lone blank first project makes way for it.
     */
    void openProject(const QString &fileName);
    /** Closes the project at `index` if its documents may be dropped; one tab always stays. */
    void projTabsClosed(int index);
    /** The hand-over file changed: open what it names and bring the window forward. */
    void fileChanged(const QString &path);

Q_SIGNALS:
    /** The list of projects or the current one changed. */
    void projectsChanged();

private:
    QProject *createProject();
    void addProject(QProject *project);
    /** Loads a handed-over file of any kind but DEF into the last project. */
    void openDocument(const QString &fileName, const QString &suffix);

    QFileSystemWatcher m_watcher;
    QMainWindow *m_mainWindow;
    QList<QProject *> m_projects;
    QProject *m_current = nullptr;
};

/** The one interface of the program; null while the palette editor runs alone. */
extern QInterface *mainInterface;
