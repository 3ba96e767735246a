#include "qrgbpalette.h"

#include "imagecodecs.h"
#include "palettefiles.h"
#include "quantiser.h"

#include <QBuffer>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QImageReader>
#include <QSaveFile>

#include <algorithm>
#include <climits>
#include <cstring>
#include <memory>

QRGBPalette::QRGBPalette(QRGBPal *colors, QObject *parent)
    : QObject(parent)
    , m_colors(colors)
{
}

bool QRGBPalette::fromFile(const QString &fileName)
{
    Q_EMIT changing();
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    return load(file, QFileInfo(fileName).suffix());
}

bool QRGBPalette::fromData(const QByteArray &data, const QString &suffix)
{
    Q_EMIT changing();
    QBuffer buffer;
    buffer.setData(data);
    buffer.open(QIODevice::ReadOnly);
    return load(buffer, suffix);
}

namespace {

/**
 * A PNG or BMP read for its colour table. Only the table is wanted, so an
 * image much larger than its file could honestly hold (a hostile header, or
 * a flat picture of millions of pixels) isn't decoded at all.
 */
QImage readPaletteImage(const QByteArray &bytes)
{
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    const QSize size = reader.size();
    const qint64 limit = std::max<qint64>(qint64(4) << 20, qint64(bytes.size()) * 64);
    if (!size.isValid() || qint64(size.width()) * size.height() > limit)
        return QImage();
    return reader.read();
}

} // namespace

bool QRGBPalette::load(QIODevice &device, const QString &suffix)
{
    const QString kind = suffix.toLower();
    if (kind == QLatin1String("png") || kind == QLatin1String("pcx") || kind == QLatin1String("bmp")) {
        const QByteArray bytes = device.readAll();
        const QImage image = kind == QLatin1String("pcx") ? decodePcx(bytes) : readPaletteImage(bytes);
        // Any image with a colour table; a PCX without one is indexed too, and gives nothing.
        const bool indexed = image.format() == QImage::Format_Indexed8 || image.colorCount() > 0;
        if (image.isNull() || !indexed)
            return false;
        // Over the start of the array only: a short table leaves the rest as it was.
        const QList<QRgb> table = image.colorTable();
        for (int i = 0; i < std::min<qsizetype>(table.size(), QRGBPal::Size); ++i)
            m_colors->setRgba(i, table.at(i));
    } else {
        const QByteArray magic = device.peek(4);
        std::unique_ptr<QAbstractPalette> reader;
        if (kind == QLatin1String("aco"))
            reader = std::make_unique<QACOPalette>();
        else if (magic == "RIFF")
            reader = std::make_unique<QRIFFPalette>();
        else if (magic == "JASC")
            reader = std::make_unique<QJascPalette>();
        else if (magic == "ASEF")
            reader = std::make_unique<QASEPalette>();
        else if (magic == "ROWS")
            reader = std::make_unique<QPainterPalette>();
        else
            reader = std::make_unique<QACTPalette>();
        m_colors->clearColors();
        // A file its reader refuses still loads, as whatever it got: all 0
        // for most, so that the user sees that nothing came of it.
        reader->read(device, *m_colors);
    }
    m_colors->entries[0].alpha = 0;
    Q_EMIT changed();
    return true;
}

bool QRGBPalette::toFile(const QString &fileName) const
{
    QRGBPal reversed = *m_colors;
    reversed.reverse();
    QByteArray bytes(768, Qt::Uninitialized);
    for (int i = 0; i < QRGBPal::Size; ++i) {
        bytes[i * 3] = char(reversed.entries[i].red);
        bytes[i * 3 + 1] = char(reversed.entries[i].green);
        bytes[i * 3 + 2] = char(reversed.entries[i].blue);
    }
    QSaveFile file(fileName);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == 768 && file.commit();
}

QString QRGBPalette::openFilter(const QString &allLabel)
{
    return allLabel + QStringLiteral(" (*.act *.pcx *.png *.bmp *.pal *.aco *.ase *.txt);;")
           + tr("Adobe Color Table (*.act);;Personal Computer eXchange (*.pcx);;Portable Network Graphic (*.png);;"
                "Bitmap (*.bmp);;RIFF / Jasc Palette (*.pal);;Adobe Color Swatch (*.aco);;"
                "Adobe Swatch Exchange (*.ase);;Corel Painter Swatches (*.txt)");
}

QString QRGBPalette::saveFilter()
{
    return tr("Adobe Color Table (*.act)");
}

void QRGBPalette::quantize(const QImage &image, int maxColors, int depth)
{
    OctreeQuantizer quantizer(maxColors, depth);
    quantizer.addImage(image);
    const QRGBPal colors = quantizer.palette();
    std::memcpy(m_colors->bytes(), colors.bytes(), QRGBPal::Bytes);
}

QImage QRGBPalette::adaptImage(const QImage &image) const
{
    return adaptImage(image, *m_colors);
}

QImage QRGBPalette::adaptImage(const QImage &image, const QRGBPal &colors)
{
    if (image.isNull())
        return QImage();
    QList<QRgb> table = colors.toColorVector();
    const QList<QRgb> own = image.colorTable();
    const bool keepAlpha = image.format() == QImage::Format_ARGB32
                           || (image.format() == QImage::Format_Indexed8
                               && std::any_of(own.cbegin(), own.cend(), [](QRgb c) { return qAlpha(c) < 255; }));
    if (!keepAlpha) {
        for (QRgb &color : table)
            color |= 0xFF000000u;
    }
    const QImage argb =
        image.format() == QImage::Format_ARGB32 ? image : image.convertToFormat(QImage::Format_ARGB32);
    return argb.convertToFormat(QImage::Format_Indexed8, table);
}

QImage QRGBPalette::reduceToIndexed(const QImage &image)
{
    if (image.isNull())
        return QImage();
    const QImage argb = image.convertToFormat(QImage::Format_ARGB32);
    const auto opaque = [](QRgb pixel) { return qAlpha(pixel) >= 128; };
    OctreeQuantizer quantizer(QRGBPal::Size - 1, 8);
    for (int y = 0; y < argb.height(); ++y) {
        const auto *line = reinterpret_cast<const QRgb *>(argb.constScanLine(y));
        for (int x = 0; x < argb.width(); ++x) {
            if (opaque(line[x]))
                quantizer.addColor(uchar(qRed(line[x])), uchar(qGreen(line[x])), uchar(qBlue(line[x])));
        }
    }
    const QRGBPal leaves = quantizer.palette();
    const int count = quantizer.leafCount();
    QList<QRgb> table(QRGBPal::Size, 0);
    for (int i = 0; i < count; ++i)
        table[i + 1] = leaves.rgba(i);

    QImage indexed(argb.size(), QImage::Format_Indexed8);
    indexed.setColorTable(table);
    QHash<QRgb, uchar> closest;
    for (int y = 0; y < argb.height(); ++y) {
        const auto *line = reinterpret_cast<const QRgb *>(argb.constScanLine(y));
        uchar *out = indexed.scanLine(y);
        for (int x = 0; x < argb.width(); ++x) {
            if (!opaque(line[x])) {
                out[x] = 0;
                continue;
            }
            const QRgb rgb = line[x] | 0xFF000000u;
            auto found = closest.constFind(rgb);
            if (found == closest.cend()) {
                int best = 1;
                int bestDistance = INT_MAX;
                for (int i = 1; i <= count; ++i) {
                    const int dr = qRed(table[i]) - qRed(rgb);
                    const int dg = qGreen(table[i]) - qGreen(rgb);
                    const int db = qBlue(table[i]) - qBlue(rgb);
                    const int distance = dr * dr + dg * dg + db * db;
                    if (distance < bestDistance) {
                        bestDistance = distance;
                        best = i;
                    }
                }
                found = closest.insert(rgb, uchar(best));
            }
            out[x] = *found;
        }
    }
    return indexed;
}

int QRGBPalette::nearestColor(QRgb color) const
{
    return nearestColor(*m_colors, color);
}

int QRGBPalette::nearestColor(const QRGBPal &colors, QRgb color)
{
    int best = 0x7FFFFFFF;
    int bestAlpha = 0x7FFFFFFF;
    int found = 0;
    for (int i = 0; i < QRGBPal::Size; ++i) {
        const QRGBPalEntry &e = colors.entries[i];
        const int dr = int(e.red) - qRed(color);
        const int dg = int(e.green) - qGreen(color);
        const int db = int(e.blue) - qBlue(color);
        const int distance = dr * dr + dg * dg + db * db;
        const int alpha = std::abs(int(e.alpha) - qAlpha(color));
        if (distance < best || (distance == best && alpha < bestAlpha)) {
            best = distance;
            bestAlpha = alpha;
            found = i;
        }
    }
    return found;
}
