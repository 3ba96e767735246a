#pragma once

#include <QByteArray>
#include <QString>

class QIODevice;

/**
 * The engine's sound container: a 512-byte header, then the sounds back to
 * back, each a 16-byte sub-header (next, length, group, number, all 32-bit
 * little-endian) followed by the bytes of one WAV file.
 */
namespace Snd {

constexpr int HeaderSize = 512;
constexpr int SubHeaderSize = 16;
/** The comment area of the header, behind the first 24 bytes. */
constexpr int CommentSize = 488;

/** "ElecbyteSnd" and one zero byte: the first 12 bytes of every SND file. */
QByteArray signature();
/**
 * The comment area as this program writes it: its stamp, then zeros, 488
 * bytes in all.
 */
QByteArray stamp();

} // namespace Snd

/**
 * Reads an SND file from a device, one sound at a time, trusting nothing:
 * the count is checked against what the file can hold before anything is
 * read, and no sound reads past the end of the file.
 *
 * The device must be open for reading, positioned at the start, and not
 * sequential: its size bounds every count and length.
 * Sounds are expected back to back, as every tool writes them; the "next"
 * offset of a sub-header only corrects the size of its sound.
 */
class SndReader
{
public:
    explicit SndReader(QIODevice *device);

    /**
     * Reads the 512-byte header. False, with errorString() set, when the
     * signature doesn't match or the count promises more sounds than the
     * file has room for.
     */
    bool readHeader();
    /** The number of sounds the header announces. */
    quint32 count() const { return m_count; }

    /**
     * Reads the next sound. `bytes` is empty for a sound without data.
     * False, with errorString() set, when the file ends inside the
     * sub-header or the data.
     */
    bool readSound(qint32 &group, qint32 &number, QByteArray &bytes);

    QString errorString() const { return m_error; }

private:
    bool fail(const QString &error);

    QIODevice *m_device;
    qint64 m_size;
    quint32 m_count = 0;
    QString m_error;
};

/**
 * Writes an SND file: the header with this program's stamp, then each
 * sound with "next" pointing right behind its data, on the last sound too.
 */
class SndWriter
{
public:
    explicit SndWriter(QIODevice *device);

    bool writeHeader(quint32 count);
    /** Writes one sound; empty `bytes` give an empty sound of length 0. */
    bool writeSound(qint32 group, qint32 number, const QByteArray &bytes);

    QString errorString() const { return m_error; }

private:
    bool write(const QByteArray &bytes);

    QIODevice *m_device;
    QString m_error;
};
