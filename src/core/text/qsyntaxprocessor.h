#pragma once

#include "../base/qprojecttypes.h"

#include <QSyntaxHighlighter>

#include <memory>

class QSyntaxHierarchy;
class QSyntaxProperties;
class QTextDocument;

/**
 * The language of a text document: colours its lines, checks them, and
 * stores what it found in each block's QTextEditorBlockData (diagnostics,
 * brackets, fold levels). It runs line by line as a QSyntaxHighlighter, so
 * a line's result depends only on its text and on the block state that the
 * line before left behind. It also owns the section tree of its language,
 * which its document rebuilds a second after the last edit.
 */
class QSyntaxProcessor : public QSyntaxHighlighter
{
    Q_OBJECT

public:
    /** The kinds: no language, engine text, Lua. */
    enum Kind { NullKind = 0, MugenKind = 1, LuaKind = 2 };

    ~QSyntaxProcessor() override;

    /** The section tree of this language; owned by the processor. */
    virtual QSyntaxHierarchy *hierarchy() const;
    /** Highlights and checks every line again, from the first. */
    virtual void rehighlightAll();

    /** One of Kind. */
    int syntaxKind() const { return m_syntaxKind; }
    /** The vocabulary read from the language's description file; may be null. Not owned. */
    const QSyntaxProperties *properties() const { return m_properties; }
    /** The engine version the text is checked against, packed one byte a part. */
    quint32 version() const { return m_version; }
    /** Stores the version and, when it changed, checks everything again. */
    void setVersion(quint32 version);
    /**
     * The engine the text is made for, a QEngineTarget value: what only
     * Ikemen GO reads is correct for it, and told of for M.U.G.E.N.
     */
    int target() const { return m_target; }
    /** Stores the target and, when it changed, checks everything again. */
    void setTarget(int target);
    /** Whether errors are reported; colours, warnings and notices come either way. */
    bool isChecking() const { return m_checking; }
    /** Switches error reporting and, when it changed, checks everything again. */
    void setChecking(bool checking);

protected:
    /**
     * The processor takes `hierarchy`. It starts without a document: the
     * concrete class attaches one at the end of its construction, once its
     * highlightBlock() can run.
     */
    QSyntaxProcessor(int kind, QSyntaxHierarchy *hierarchy, const QSyntaxProperties *properties,
                     quint32 version, bool checking, int target = TargetMugen);

    /** Installs on `document` (may be null) and highlights all of it at once. */
    void attach(QTextDocument *document);
    void setProperties(const QSyntaxProperties *properties) { m_properties = properties; }

private:
    std::unique_ptr<QSyntaxHierarchy> m_hierarchy;
    int m_syntaxKind;
    const QSyntaxProperties *m_properties;
    quint32 m_version;
    bool m_checking;
    int m_target;
};

/** The processor of text without a language: no colours, no diagnostics, an empty tree. */
class QNullSyntaxProcessor : public QSyntaxProcessor
{
    Q_OBJECT

public:
    /** `version` is only kept, for the document's next processor to take. */
    QNullSyntaxProcessor(QTextDocument *document, quint32 version);

protected:
    /** Forgets whatever an earlier processor stored on the line. */
    void highlightBlock(const QString &text) override;
};
