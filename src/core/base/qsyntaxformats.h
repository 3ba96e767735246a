#pragma once

#include <QString>
#include <QTextCharFormat>

/**
 * The text formats of syntax colouring, shared by every processor: nine
 * formats by index, "comment" to "value". They start with default colours;
 * a colorset replaces them. Each format carries its own index in the
 * property `IndexProperty`, so that whoever reads the formats back from a
 * text layout (tests, exports) knows which of the nine covers a span, even
 * under a diagnostic's underline.
 */
class QSyntaxFormats
{
public:
    enum Index {
        Comment = 0,
        Number = 1,
        String = 2,
        Keyword = 3,
        Block = 4,
        Controller = 5,
        Trigger = 6,
        Const = 7,
        Value = 8,
        Count = 9
    };

    /** The format property that holds a format's index. */
    static constexpr int IndexProperty = QTextFormat::UserProperty + 1;

    /** The default colours. */
    QSyntaxFormats();

    /** The format of `index`; an empty format for an index out of range. */
    const QTextCharFormat &format(int index) const;
    /** Replaces the colour and the weight of a format; an index out of range is ignored. */
    void setFormat(int index, const QColor &color, bool bold, bool italic);
    /** Back to the default colours. */
    void reset();

    /** The name of a format as colorsets write it: "comment", "number"...; empty out of range. */
    static QString name(int index);
    /** The index of a format named by a colorset; -1 for an unknown name. */
    static int indexOf(const QString &name);
    /** The index held by a format taken from a text layout; -1 when it is none of the nine. */
    static int indexOf(const QTextFormat &format);

    /** The defaults, for whoever runs without the process-wide set (a tool, a test). */
    static const QSyntaxFormats &defaults();

private:
    QTextCharFormat m_formats[Count];
};

/** The process-wide format set; created at start by the entry point, may be null. */
extern QSyntaxFormats *syntaxFormats;
