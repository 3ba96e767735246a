#pragma once

#include "qmessages.h"
#include "qprojecttypes.h"

#include <QMetaType>
#include <QString>

class QMessageList;
class QProjectFile;

/**
 * What a document may know of the project that holds it. QProject implements
 * it; a document holds a pointer that may be null, for a document that
 * stands alone (a test, kestrada-cli). Documents never include the project
 * itself, so each can be built and tested without it.
 */
class QProjectOwner
{
public:
    virtual ~QProjectOwner() = default;

    /** The project's kind, a QProjectType value. */
    virtual int projectType() const = 0;
    /** The engine version the project targets, packed one byte per part (1.1 is 0x1010000). */
    virtual quint32 engineVersion() const = 0;
    /**
     * The engine the project is made for, a QEngineTarget value. An owner
     * that doesn't tell makes M.U.G.E.N. content.
     */
    virtual int engineTarget() const { return TargetMugen; }
    /** The list that joins the check messages of all documents of the project. */
    virtual QMessageList *messageList() = 0;
    /** A document tells its project that it changed (modified state, content, name). */
    virtual void documentChanged(QProjectFile *document) = 0;
};

/**
 * The contract of every document of a project, so that the project and the
 * shell treat sprites, sounds and text alike.
 */
class QProjectFile
{
public:
    /** Registers the document's messages with the owner's list, if there is an owner. */
    QProjectFile(QProjectOwner *owner, QProjectFileType fileType);
    virtual ~QProjectFile();

    QProjectFile(const QProjectFile &) = delete;
    QProjectFile &operator=(const QProjectFile &) = delete;

    /**
     * Called before a file dialog or a write. Returns false to stop the save
     * of this document, after telling the user why. `version` is a sprite
     * file version for sprites, and 0 for all other documents.
     */
    virtual bool checkSave(quint32 version) = 0;
    /**
     * Called before the document goes away. True when it isn't modified, or
     * when the user answers Yes to this document's "Discard changes" question.
     */
    virtual bool checkDiscard() = 0;
    /** Whether the document differs from its file. */
    virtual bool isModified() const = 0;
    /** Whether the document holds nothing worth saving. */
    virtual bool isEmpty() const = 0;
    /** Fills messages() with what is wrong with the document. */
    virtual void check() = 0;

    QProjectOwner *owner() const { return m_owner; }
    QProjectFileType fileType() const { return m_fileType; }
    QMessages &messages() { return m_messages; }
    const QMessages &messages() const { return m_messages; }

    /** The place of a state document in its project's list; 0 for the others. */
    int fileIndex() const { return m_messages.fileIndex(); }
    void setFileIndex(int index) { m_messages.setFileIndex(index); }

protected:
    /** Tells the owner, if any, that this document changed. */
    void notifyOwner();

    /**
     * The common discard question: asks `question` under "Discard changes",
     * Yes and No with No the default, when the document is modified and the
     * question isn't empty; passes otherwise.
     */
    bool askDiscard(const QString &question);

private:
    QProjectOwner *m_owner;
    QProjectFileType m_fileType;
    QMessages m_messages;
};

Q_DECLARE_METATYPE(QProjectFile *)
