#pragma once

#include <QObject>

class QTextDocument;

/**
 * Owner of one QTextDocument: the text of an engine file, which is the only
 * truth about it. Documents that read structure out of their text build on
 * this class.
 */
class QElementTextEditor : public QObject
{
    Q_OBJECT

public:
    explicit QElementTextEditor(QObject *parent = nullptr);
    ~QElementTextEditor() override;

    /** The text document, owned by this object. */
    QTextDocument *document() const { return m_document; }

private:
    QTextDocument *m_document;
};
