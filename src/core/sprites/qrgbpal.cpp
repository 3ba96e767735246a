#include "qrgbpal.h"

#include <algorithm>
#include <cstring>

QList<QRgb> QRGBPal::toColorVector() const
{
    QList<QRgb> colors(Size);
    for (int i = 0; i < Size; ++i)
        colors[i] = rgba(i);
    return colors;
}

QRGBPal QRGBPal::fromColorVector(const QList<QRgb> &colors)
{
    QRGBPal pal;
    const int n = int(std::min<qsizetype>(colors.size(), Size));
    for (int i = 0; i < n; ++i)
        pal.setRgba(i, colors.at(i));
    return pal;
}

QByteArray QRGBPal::toByteArray() const
{
    return QByteArray(reinterpret_cast<const char *>(bytes()), Bytes);
}

QRGBPal QRGBPal::fromByteArray(const QByteArray &data)
{
    QRGBPal pal;
    std::memcpy(pal.bytes(), data.constData(), size_t(std::min<qsizetype>(data.size(), Bytes)));
    return pal;
}

bool QRGBPal::sameColors(const QRGBPal &other) const
{
    return std::memcmp(bytes(), other.bytes(), Bytes) == 0;
}

void QRGBPal::clearColors()
{
    std::memset(bytes(), 0, Bytes);
}

void QRGBPal::reverse()
{
    std::reverse(std::begin(entries), std::end(entries));
}
