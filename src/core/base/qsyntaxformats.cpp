#include "qsyntaxformats.h"

#include <QColor>

QSyntaxFormats *syntaxFormats = nullptr;

namespace {

struct Default
{
    const char *name;
    QRgb color;
    bool bold;
    bool italic;
};

// Readable on a light background, each kind apart from its neighbours.
const Default defaultFormats[QSyntaxFormats::Count] = {
    {"comment", qRgb(0, 128, 0), false, true},
    {"number", qRgb(0, 128, 128), false, false},
    {"string", qRgb(163, 21, 21), false, false},
    {"keyword", qRgb(0, 0, 160), true, false},
    {"block", qRgb(128, 0, 128), true, false},
    {"controller", qRgb(160, 0, 80), true, false},
    {"trigger", qRgb(0, 96, 192), false, false},
    {"const", qRgb(0, 112, 96), false, true},
    {"value", qRgb(128, 64, 0), false, false},
};

} // namespace

QSyntaxFormats::QSyntaxFormats()
{
    reset();
}

const QTextCharFormat &QSyntaxFormats::format(int index) const
{
    static const QTextCharFormat none;
    return index >= 0 && index < Count ? m_formats[index] : none;
}

void QSyntaxFormats::setFormat(int index, const QColor &color, bool bold, bool italic)
{
    if (index < 0 || index >= Count)
        return;
    QTextCharFormat format;
    format.setForeground(color);
    format.setFontWeight(bold ? QFont::Bold : QFont::Normal);
    format.setFontItalic(italic);
    format.setProperty(IndexProperty, index);
    m_formats[index] = format;
}

void QSyntaxFormats::reset()
{
    for (int i = 0; i < Count; ++i)
        setFormat(i, QColor(defaultFormats[i].color), defaultFormats[i].bold, defaultFormats[i].italic);
}

QString QSyntaxFormats::name(int index)
{
    return index >= 0 && index < Count ? QLatin1String(defaultFormats[index].name) : QString();
}

int QSyntaxFormats::indexOf(const QString &name)
{
    for (int i = 0; i < Count; ++i) {
        if (name == QLatin1String(defaultFormats[i].name))
            return i;
    }
    return -1;
}

int QSyntaxFormats::indexOf(const QTextFormat &format)
{
    return format.hasProperty(IndexProperty) ? format.intProperty(IndexProperty) : -1;
}

const QSyntaxFormats &QSyntaxFormats::defaults()
{
    static const QSyntaxFormats formats;
    return formats;
}
