// RLE5, read as the engine reads it. A packet starts with a run byte r and
// a control byte c: the run writes r + 1 pixels of one colour, which is the
// whole byte after c when c's top bit is set and 0 otherwise. Then follow
// c & 0x7F short packets of one byte each: colour in the low five bits,
// length - 1 in the top three. (Reading the colour as five bits and the
// count as c & 31 garbles any sprite with more than 31 short packets in a
// row, which the engine displays fine.)

#include "imagecodecs.h"
#include "imagecodecs_p.h"

#include <cstring>

using namespace ImageCodecsPrivate;

namespace {

/** Writes pixels at the width of the image and skips the padding at each line end. */
class LineWriter
{
public:
    LineWriter(uchar *pixels, qsizetype width, qsizetype stride, qsizetype height)
        : m_line(pixels)
        , m_lastLine(pixels + stride * (height - 1))
        , m_out(pixels)
        , m_lineEnd(pixels + width)
        , m_width(width)
        , m_stride(stride)
    {
    }

    /** Writes `count` pixels of `value`; false once the image is full. */
    bool fill(uchar value, qsizetype count)
    {
        while (count > 0) {
            if (m_out == m_lineEnd && !nextLine())
                return false;
            const qsizetype n = qMin(count, qsizetype(m_lineEnd - m_out));
            std::memset(m_out, value, size_t(n));
            m_out += n;
            count -= n;
        }
        return true;
    }

private:
    bool nextLine()
    {
        if (m_line == m_lastLine)
            return false;
        m_line += m_stride;
        m_out = m_line;
        m_lineEnd = m_line + m_width;
        return true;
    }

    uchar *m_line;
    uchar *const m_lastLine;
    uchar *m_out;
    uchar *m_lineEnd;
    const qsizetype m_width;
    const qsizetype m_stride;
};

} // namespace

QByteArray decodeRle5(const QByteArray &data, const QImageInfo &info)
{
    const qsizetype stride = info.bytesPerLine();
    const qsizetype size = stride * info.height;
    if (data.isEmpty() || size <= 0 || stride < info.width
        || !dataCanFill(qsizetype(info.width) * info.height, data.size(), 256, 2))
        return QByteArray();
    QByteArray pixels(size, '\0');
    LineWriter writer(reinterpret_cast<uchar *>(pixels.data()), info.width, stride, info.height);

    const uchar *in = reinterpret_cast<const uchar *>(data.constData());
    const uchar *const end = in + data.size();
    while (end - in >= 2) {
        const qsizetype run = qsizetype(*in++) + 1;
        const uchar control = *in++;
        uchar colour = 0;
        if (control & 0x80) {
            if (in == end)
                break;
            colour = *in++;
        }
        if (!writer.fill(colour, run))
            break;
        const qsizetype packets = qMin(qsizetype(control & 0x7F), qsizetype(end - in));
        for (qsizetype i = 0; i < packets; ++i) {
            const uchar packet = *in++;
            if (!writer.fill(packet & 0x1F, (packet >> 5) + 1))
                return pixels;
        }
    }
    return pixels;
}
