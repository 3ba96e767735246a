// Small WAV and SND files made in memory, for the tests of sound lists, the
// command-line tool and the fuzz seeds.
#pragma once

#include <QByteArray>
#include <QList>
#include <QtEndian>

namespace SndBuilder {

/** `value` in little-endian bytes. */
template <typename T>
QByteArray le(T value)
{
    QByteArray bytes(sizeof(T), '\0');
    qToLittleEndian(value, bytes.data());
    return bytes;
}
inline QByteArray le32(quint32 value) { return le(value); }
inline QByteArray le16(quint16 value) { return le(value); }

/**
 * A WAV file: the RIFF header, a 16-byte format chunk of `tag`, and a data
 * chunk of `frames` frames holding a ramp, so that two sounds differ.
 */
inline QByteArray wav(int channels, int rate, int bits, int frames, quint16 tag = 1)
{
    const int blockAlign = channels * bits / 8;
    QByteArray data(frames * blockAlign, '\0');
    for (int i = 0; i < data.size(); ++i)
        data[i] = char(i * 7 + rate);
    QByteArray format = le16(tag) + le16(quint16(channels)) + le32(quint32(rate))
        + le32(quint32(rate * blockAlign)) + le16(quint16(blockAlign)) + le16(quint16(bits));
    const QByteArray body = QByteArray("WAVE") + "fmt " + le32(16) + format + "data" + le32(quint32(data.size())) + data;
    return QByteArray("RIFF") + le32(quint32(body.size())) + body;
}

/** One sound of an SND file; next and length are written as they come when not negative. */
struct Sound
{
    qint32 group = 0;
    qint32 number = 0;
    QByteArray bytes;
    qint64 next = -1;
    qint64 length = -1;
};

/** An SND file of `sounds`; `count` overrides the count of the header when not negative. */
inline QByteArray snd(const QList<Sound> &sounds, qint64 count = -1)
{
    QByteArray file = QByteArray("ElecbyteSnd", 12) + le32(0x00010001)
        + le32(quint32(count < 0 ? sounds.size() : count)) + le32(512);
    file.resize(512, '\0');
    for (const Sound &sound : sounds) {
        const qint64 next = sound.next >= 0 ? sound.next : file.size() + 16 + sound.bytes.size();
        const qint64 length = sound.length >= 0 ? sound.length : sound.bytes.size();
        file += le32(quint32(next)) + le32(quint32(length)) + le32(quint32(sound.group))
            + le32(quint32(sound.number)) + sound.bytes;
    }
    return file;
}

} // namespace SndBuilder
