#include "palettefiles.h"

#include <QColor>
#include <QIODevice>
#include <QRegExp>
#include <QStringList>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace {

/** Text palettes are a few kilobytes; more than this can't be one, and isn't read. */
constexpr qint64 MaxTextSize = 1 << 20;

/** Seeks to `position` when the device reaches that far; a buffer complains of anything beyond. */
bool seekTo(QIODevice &device, qint64 position)
{
    return position <= device.size() && device.seek(position);
}

/** Big-endian numbers from a device; every read says whether the device had the bytes. */
class BigEndianReader
{
public:
    explicit BigEndianReader(QIODevice &device)
        : m_device(device)
    {
    }

    bool bytes(char *out, qint64 count) { return m_device.read(out, count) == count; }

    bool u16(quint16 &value)
    {
        uchar b[2];
        if (!bytes(reinterpret_cast<char *>(b), 2))
            return false;
        value = quint16((b[0] << 8) | b[1]);
        return true;
    }

    bool u32(quint32 &value)
    {
        uchar b[4];
        if (!bytes(reinterpret_cast<char *>(b), 4))
            return false;
        value = (quint32(b[0]) << 24) | (quint32(b[1]) << 16) | (quint32(b[2]) << 8) | b[3];
        return true;
    }

    /** A float scaled to a channel: times 255, rounded and clamped; 0 for what isn't a number. */
    bool channel(int &value)
    {
        quint32 bits = 0;
        if (!u32(bits))
            return false;
        float f = 0;
        std::memcpy(&f, &bits, sizeof f);
        value = std::isfinite(f) ? int(std::clamp(std::round(double(f) * 255.0), 0.0, 255.0)) : 0;
        return true;
    }

    /** Skips `count` bytes; false when the device doesn't hold them. */
    bool skip(qint64 count)
    {
        if (count < 0 || count > m_device.size() - m_device.pos())
            return false;
        return seekTo(m_device, m_device.pos() + count);
    }

private:
    QIODevice &m_device;
};

void setOpaque(QRGBPalEntry &entry, const QColor &color)
{
    entry = {uchar(color.red()), uchar(color.green()), uchar(color.blue()), 255};
}

int clampChannel(const QString &digits)
{
    return std::min(digits.toInt(), 255);
}

/** The text of a text palette, as far as a palette can reach. */
QString readText(QIODevice &device)
{
    return QString::fromLatin1(device.read(MaxTextSize));
}

/** Red, green, blue and an optional alpha from the captures 1 to 4 of `match`. */
QRGBPalEntry entryOf(const QRegExp &match)
{
    const QString alpha = match.cap(4);
    return {uchar(clampChannel(match.cap(1))), uchar(clampChannel(match.cap(2))), uchar(clampChannel(match.cap(3))),
            uchar(alpha.isEmpty() ? 255 : clampChannel(alpha))};
}

} // namespace

bool QACTPalette::read(QIODevice &device, QRGBPal &colors)
{
    const QByteArray bytes = device.read(768);
    if (bytes.size() < 768)
        return false;
    for (int i = 0; i < QRGBPal::Size; ++i)
        colors.entries[i] = {uchar(bytes[i * 3]), uchar(bytes[i * 3 + 1]), uchar(bytes[i * 3 + 2]), 255};
    colors.reverse();
    return true;
}

bool QRIFFPalette::read(QIODevice &device, QRGBPal &colors)
{
    if (!seekTo(device, 8) || device.read(8) != "PAL data")
        return false;
    const QByteArray size = device.read(4);
    if (size.size() < 4)
        return false;
    // The data chunk counts a 4-byte header (version and count) that this
    // takes 8 for: one colour of the file stays out, as the engine's tools
    // read these files.
    const qint64 length = qint64(uchar(size[0]) | (uchar(size[1]) << 8) | (uchar(size[2]) << 16)
                                 | (quint32(uchar(size[3])) << 24))
                          - 8;
    if (length < 0 || length >= QRGBPal::Bytes + 1 || !seekTo(device, 24))
        return false;
    const QByteArray bytes = device.read(length);
    if (bytes.size() < length)
        return false;
    std::memcpy(colors.bytes(), bytes.constData(), size_t(bytes.size()));
    for (QRGBPalEntry &entry : colors.entries)
        entry.alpha = 255;
    colors.reverse();
    return true;
}

bool QJascPalette::read(QIODevice &device, QRGBPal &colors)
{
    const QStringList lines = readText(device).split(QStringLiteral("\r\n"), Qt::SkipEmptyParts);
    if (lines.size() < 2 || lines.at(0) != QLatin1String("JASC-PAL") || lines.at(1) != QLatin1String("0100"))
        return false;
    // Line 2, the count, isn't trusted: the colour lines are.
    QRegExp pattern(QStringLiteral("^(\\d{1,3})\\s(\\d{1,3})\\s(\\d{1,3})(?:\\s(\\d{1,3}))?$"));
    for (int i = 0; i < QRGBPal::Size && i + 3 < lines.size(); ++i) {
        // A line that isn't a colour still takes its place.
        if (pattern.indexIn(lines.at(i + 3)) >= 0)
            colors.entries[i] = entryOf(pattern);
    }
    return true;
}

bool QPainterPalette::read(QIODevice &device, QRGBPal &colors)
{
    const QStringList lines = readText(device).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    QRegExp pattern(
        QStringLiteral("^R:\\s?(\\d{1,3}),\\s?G:\\s?(\\d{1,3}),\\s?B:\\s?(\\d{1,3})(?:\\s?A:\\s?(\\d{1,3}))?"));
    int filled = 0;
    // Lines that aren't colours (the header) take no place.
    for (const QString &line : lines) {
        if (filled == QRGBPal::Size)
            break;
        if (pattern.indexIn(line) >= 0)
            colors.entries[filled++] = entryOf(pattern);
    }
    return true;
}

bool QACOPalette::read(QIODevice &device, QRGBPal &colors)
{
    BigEndianReader in(device);
    quint16 version = 0;
    quint16 count = 0;
    if (!in.u16(version) || version != 1 || !in.u16(count))
        return false;
    // Only the first section: version 2 repeats the colours with names after it.
    int filled = 0;
    for (int c = 0; c < count && filled < QRGBPal::Size; ++c) {
        quint16 space = 0;
        quint16 w = 0;
        quint16 x = 0;
        quint16 y = 0;
        quint16 z = 0;
        if (!in.u16(space) || !in.u16(w) || !in.u16(x) || !in.u16(y) || !in.u16(z))
            break;
        QRGBPalEntry &entry = colors.entries[filled];
        switch (space) {
        case 0:
            entry = {uchar(w / 257), uchar(x / 257), uchar(y / 257), 255};
            break;
        case 1:
            setOpaque(entry, QColor::fromHsv(std::clamp(qRound(w / 182.5487), 0, 359), x / 257, y / 257, 255));
            break;
        case 2:
            setOpaque(entry, QColor::fromCmyk(255 - w / 257, 255 - x / 257, 255 - y / 257, 255 - z / 257, 255));
            break;
        case 8: {
            const uchar grey = uchar(std::clamp(255 - qRound(w / 39.2157), 0, 255));
            entry = {grey, grey, grey, 255};
            break;
        }
        default:
            // A colour space we can't show takes no entry.
            continue;
        }
        ++filled;
    }
    return true;
}

bool QASEPalette::read(QIODevice &device, QRGBPal &colors)
{
    BigEndianReader in(device);
    quint16 major = 0;
    quint16 minor = 0;
    quint32 blocks = 0;
    if (!seekTo(device, 4) || !in.u16(major) || !in.u16(minor) || major != 1 || minor != 0 || !in.u32(blocks))
        return false;
    int filled = 0;
    // Every block takes at least six bytes, so a huge count ends with the file.
    for (qint64 b = 0; b < qint32(blocks) && filled < QRGBPal::Size; ++b) {
        quint16 type = 0;
        quint32 length = 0;
        if (!in.u16(type) || !in.u32(length))
            break;
        if (type == 0xC001 || type == 0xC002) {
            quint16 name = 0;
            if (!in.u16(name) || !in.skip(qint64(name) * 2))
                break;
            continue;
        }
        if (type != 1) {
            if (!in.skip(length))
                break;
            continue;
        }
        quint16 name = 0;
        char model[4];
        if (!in.u16(name) || !in.skip(qint64(name) * 2) || !in.bytes(model, 4))
            break;
        QRGBPalEntry entry;
        bool read = true;
        bool fills = true;
        int c[4] = {0, 0, 0, 0};
        if (std::memcmp(model, "RGB ", 4) == 0) {
            read = in.channel(c[0]) && in.channel(c[1]) && in.channel(c[2]);
            entry = {uchar(c[0]), uchar(c[1]), uchar(c[2]), 255};
        } else if (std::memcmp(model, "CMYK", 4) == 0) {
            read = in.channel(c[0]) && in.channel(c[1]) && in.channel(c[2]) && in.channel(c[3]);
            setOpaque(entry, QColor::fromCmyk(c[0], c[1], c[2], c[3], 255));
        } else if (std::memcmp(model, "Gray", 4) == 0) {
            read = in.channel(c[0]);
            entry = {uchar(c[0]), uchar(c[0]), uchar(c[0]), 255};
        } else {
            read = in.skip(12);
            fills = false;
        }
        if (!read)
            break;
        if (fills)
            colors.entries[filled++] = entry;
        // The colour type (global, spot, normal) means nothing here.
        if (!in.skip(2))
            break;
    }
    return true;
}
