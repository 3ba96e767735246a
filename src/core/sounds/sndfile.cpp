#include "sndfile.h"

#include "../base/filestamp.h"

#include <QCoreApplication>
#include <QIODevice>
#include <QtEndian>

#include <limits>

namespace {

quint32 readUInt32(const char *bytes)
{
    return qFromLittleEndian<quint32>(bytes);
}

QByteArray uint32Bytes(quint32 value)
{
    QByteArray bytes(4, '\0');
    qToLittleEndian(value, bytes.data());
    return bytes;
}

QString tr(const char *text)
{
    return QCoreApplication::translate("SndFile", text);
}

} // namespace

QByteArray Snd::signature()
{
    return QByteArray("ElecbyteSnd", 12);
}

QByteArray Snd::stamp()
{
    QByteArray comment = fileStamp();
    comment.resize(CommentSize, '\0');
    return comment;
}

SndReader::SndReader(QIODevice *device)
    : m_device(device)
    , m_size(device->size())
{
}

bool SndReader::fail(const QString &error)
{
    m_error = error;
    return false;
}

bool SndReader::readHeader()
{
    const QByteArray header = m_device->read(Snd::HeaderSize);
    if (header.size() < 24 || !header.startsWith(Snd::signature()))
        return fail(tr("not an SND file"));
    if (header.size() < Snd::HeaderSize)
        return fail(tr("the header is cut short"));
    // The version at 12 and the offset of the first sub-header at 20 are
    // ignored: every tool puts the first sound at 512.
    m_count = readUInt32(header.constData() + 16);
    // Each sound takes a sub-header at least, so the file's size bounds the
    // count before anything is allocated for it.
    const qint64 room = (m_size - Snd::HeaderSize) / Snd::SubHeaderSize;
    if (qint64(m_count) > room)
        return fail(tr("it announces %1 sounds, but has room for %2 at most").arg(m_count).arg(room));
    return true;
}

bool SndReader::readSound(qint32 &group, qint32 &number, QByteArray &bytes)
{
    bytes.clear();
    const QByteArray header = m_device->read(Snd::SubHeaderSize);
    if (header.size() < Snd::SubHeaderSize)
        return fail(tr("the file ends inside the header of a sound"));
    const quint32 next = readUInt32(header.constData());
    const quint32 length = readUInt32(header.constData() + 4);
    group = qint32(readUInt32(header.constData() + 8));
    number = qint32(readUInt32(header.constData() + 12));
    if (length == 0)
        return true;

    // "next" overrides the length when it points somewhere possible; the
    // engine's own tools leave it 0 on the last sound, and a broken one on
    // the last sound is harmless to the engine, so the length stands then.
    const qint64 position = m_device->pos();
    qint64 size = length;
    if (next != 0 && qint64(next) >= position && qint64(next) <= m_size)
        size = qint64(next) - position;
    if (size > m_size - position)
        return fail(tr("a sound of %1 bytes at offset %2 runs past the end of the file").arg(size).arg(position));
    if (size > std::numeric_limits<int>::max())
        return fail(tr("a sound of %1 bytes is too large").arg(size));
    bytes = m_device->read(size);
    if (bytes.size() != size)
        return fail(tr("the file ends inside a sound"));
    return true;
}

SndWriter::SndWriter(QIODevice *device)
    : m_device(device)
{
}

bool SndWriter::write(const QByteArray &bytes)
{
    if (m_device->write(bytes) == bytes.size())
        return true;
    m_error = m_device->errorString();
    return false;
}

bool SndWriter::writeHeader(quint32 count)
{
    return write(Snd::signature() + QByteArray("\x01\x00\x01\x00", 4) + uint32Bytes(count)
                 + uint32Bytes(Snd::HeaderSize) + Snd::stamp());
}

bool SndWriter::writeSound(qint32 group, qint32 number, const QByteArray &bytes)
{
    const qint64 next = m_device->pos() + Snd::SubHeaderSize + bytes.size();
    // Offsets are 32-bit: a file can't grow beyond 4 GB.
    if (next > qint64(std::numeric_limits<quint32>::max())) {
        m_error = tr("the sounds don't fit in the 4 GB an SND file can address");
        return false;
    }
    return write(uint32Bytes(quint32(next)) + uint32Bytes(quint32(bytes.size())) + uint32Bytes(quint32(group))
                 + uint32Bytes(quint32(number)))
        && write(bytes);
}
