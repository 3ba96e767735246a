#pragma once

#include "../base/qprojectfile.h"
#include "qelementtexteditor.h"

#include <QString>
#include <QTimer>

class QSyntaxHierarchy;
class QSyntaxProcessor;

/**
 * A text document of a project: a state file, the commands, the animation
 * text or the DEF. Loads a file with its encoding, saves with CR LF line
 * ends and no byte order mark, and answers the project file contract.
 */
class QSyntaxTextEditor : public QElementTextEditor, public QProjectFile
{
    Q_OBJECT

public:
    /**
     * `project` may be null for a document that stands alone. `parseElements`
     * and `checking` decide whether structure is read from the text and
     * whether the text is checked; `version` is the engine version it is
     * checked against.
     */
    QSyntaxTextEditor(QProjectOwner *project, QProjectFileType fileType, bool parseElements,
                      quint32 version, bool checking);
    ~QSyntaxTextEditor() override;

    /**
     * Reads `fileName`, decoding it with the codec of `codepage` (0 for the
     * system's) unless it starts with a byte order mark. With `keepName` the
     * document keeps the name and path it had. False, with the document as
     * it was, when the file can't be read.
     */
    virtual bool load(const QString &fileName, int codepage, bool keepName);
    /**
     * Writes the text to `fileName` with CR LF line ends, in UTF-8 when
     * `asUtf8` and otherwise in the encoding it was read with. Unless
     * `asCopy`, the document then takes that name and is unmodified. The
     * write is atomic; false leaves the earlier file untouched and the
     * document as it was, after telling the user the path and the reason.
     */
    bool save(const QString &fileName, bool asUtf8, bool asCopy);
    /** `text` in the document's own encoding (UTF-8 with `asUtf8`), without a byte order mark. */
    QByteArray encode(const QString &text, bool asUtf8 = false) const;
    /**
     * Decodes the bytes of a text file. A byte order mark decides; then the
     * encoding that detection names; then the codec of `codepage` (0 for the
     * system's). An encoding is only taken when it gives the same bytes back
     * on saving, so a file opened and saved never changes: a file that no
     * other encoding reads losslessly is read as Latin-1. `actual` receives
     * the codepage number of the codec used.
     */
    static QString decode(const QByteArray &bytes, int codepage, int *actual = nullptr);

    /** Empties the document, forgets its name and goes back to UTF-8. */
    virtual void clear();

    /** The plain text, with "\n" line ends. */
    QString text() const;
    /** The whole path of the file, empty for a new document. */
    QString fileName() const override;
    /**
     * Takes the name of `path` without reading or writing it: the file the
     * next save goes to, and the one watched for changes made elsewhere.
     */
    void setFileName(const QString &path);
    /** Reads the file again after a change made elsewhere, keeping the document's encoding as the fallback. */
    void reload(const QString &path) override;
    /** The bare file name. */
    QString title() const;
    /** The encoding that save() uses when not asked for UTF-8, as a codepage number. */
    int codepage() const { return m_codepage; }
    void setCodepage(int codepage) { m_codepage = codepage; }
    /** The engine version the text is checked against. */
    quint32 version() const;
    /** Sets the version of the processor, which then checks the text again. */
    virtual void setVersion(quint32 version);
    /** The engine the text is checked for, a QEngineTarget value. */
    int target() const { return m_target; }
    /** Sets the target of the processor, which then checks the text again. */
    void setTarget(int target);
    bool parsesElements() const { return m_parseElements; }
    /** Whether the text is checked: the hierarchy follows it, and the processor reports errors. */
    bool isChecking() const { return m_checking; }
    void setChecking(bool checking);

    /** The language of the text: 0 none, 1 engine text, 2 Lua. Decided from the text at load. */
    int language() const { return m_language; }
    /**
     * Sets the language and with it the processor, which colours and checks
     * the text at once. Nothing happens when the language stays.
     */
    void setLanguage(int language);
    /** The processor of the text's language. Owned; replaced when the language changes. */
    QSyntaxProcessor *processor() const { return m_processor; }
    /** The section tree of the text, rebuilt a second after the last edit. Owned by the processor. */
    QSyntaxHierarchy *hierarchy() const;

    bool checkSave(quint32 version) override;
    bool checkDiscard() override;
    bool isModified() const override;
    bool isEmpty() const override;
    void check() override;

Q_SIGNALS:
    /** The modified state or the text changed. */
    void changed();
    /** The hierarchy was rebuilt. */
    void hierarchyUpdated();

public Q_SLOTS:
    /**
     * Rebuilds the hierarchy now, when checking is on, then tells the
     * subclass and the project, and fills the messages from the diagnostics.
     */
    void updateHierarchy();
    /** The text changed: the hierarchy follows a second after the last change. */
    void docChanged();

protected:
    /** The question asked before unsaved changes are dropped; empty to drop them silently. */
    virtual QString discardQuestion() const;
    /** Keeps name comments and parameters bound to their headers, then tells listeners. */
    void processChanges(QList<QTextElementChange> &changes) override;
    /** Runs after every rebuild of the hierarchy; subclasses read what they need from it. */
    virtual void hierarchyChanged();

private:
    /** The processor stops following the document, which is left uncoloured. */
    void detachProcessor();
    /** Detaches and deletes the processor. */
    void dropProcessor();

    QSyntaxProcessor *m_processor = nullptr;
    QTimer m_hierarchyTimer;
    int m_language = 0;
    bool m_parseElements;
    bool m_checking;
    /** The version of every processor the document has, the next one included. */
    quint32 m_version;
    /** The target of every processor the document has, as m_version. */
    int m_target = TargetMugen;
    int m_codepage;
};
