#include "qsoundplayer.h"

#include <QAudioDevice>
#include <QAudioSink>
#include <QIODevice>
#include <QMediaDevices>
#include <QtEndian>

#include <cstring>

namespace {

constexpr quint16 TagPcm = 1;
constexpr quint16 TagFloat = 3;
constexpr quint16 TagExtensible = 0xFFFE;
constexpr int MaxChannels = 32;
constexpr quint32 MaxRate = 768000;

/** Samples read from memory, from the start again at the end when looping. */
class SampleSource : public QIODevice
{
public:
    SampleSource(const QByteArray &samples, bool loop)
        : m_samples(samples)
        , m_loop(loop)
    {
    }

    bool isSequential() const override { return true; }
    qint64 bytesAvailable() const override
    {
        return (m_loop ? m_samples.size() : m_samples.size() - m_position) + QIODevice::bytesAvailable();
    }

protected:
    qint64 readData(char *data, qint64 maxSize) override
    {
        qint64 done = 0;
        while (done < maxSize) {
            if (m_position == m_samples.size()) {
                if (!m_loop)
                    break;
                m_position = 0;
            }
            const qint64 chunk = qMin(maxSize - done, qint64(m_samples.size() - m_position));
            std::memcpy(data + done, m_samples.constData() + m_position, size_t(chunk));
            done += chunk;
            m_position += chunk;
        }
        return done;
    }

    qint64 writeData(const char *, qint64) override { return -1; }

private:
    QByteArray m_samples;
    bool m_loop;
    qsizetype m_position = 0;
};

/** 24-bit little-endian samples as 32-bit ones, the low byte zero. */
QByteArray widen24(const char *data, qsizetype size)
{
    const qsizetype count = size / 3;
    QByteArray out(count * 4, '\0');
    for (qsizetype i = 0; i < count; ++i) {
        out[i * 4 + 1] = data[i * 3];
        out[i * 4 + 2] = data[i * 3 + 1];
        out[i * 4 + 3] = data[i * 3 + 2];
    }
    return out;
}

} // namespace

QSoundPlayer::QSoundPlayer(QObject *parent)
    : QObject(parent)
{
}

QSoundPlayer::~QSoundPlayer()
{
    stop();
}

bool QSoundPlayer::decode(const QByteArray &wav, QAudioFormat *format, QByteArray *samples)
{
    if (wav.size() < 12 || !wav.startsWith("RIFF") || wav.mid(8, 4) != "WAVE")
        return false;
    const char *bytes = wav.constData();
    const qsizetype size = wav.size();
    const char *fmt = nullptr;
    quint32 fmtSize = 0;
    qsizetype dataOffset = -1;
    qsizetype dataSize = 0;
    // Chunks follow each other from offset 12, each padded to an even size.
    for (qsizetype at = 12; at + 8 <= size && dataOffset < 0;) {
        const quint32 chunkSize = qFromLittleEndian<quint32>(bytes + at + 4);
        const qsizetype body = at + 8;
        if (std::memcmp(bytes + at, "fmt ", 4) == 0 && chunkSize <= quint64(size - body)) {
            fmt = bytes + body;
            fmtSize = chunkSize;
        } else if (std::memcmp(bytes + at, "data", 4) == 0) {
            dataOffset = body;
            dataSize = qsizetype(qMin<quint64>(chunkSize, quint64(size - body)));
        }
        at = body + qsizetype(chunkSize) + (chunkSize & 1);
    }
    if (!fmt || fmtSize < 16 || dataOffset < 0)
        return false;

    quint16 tag = qFromLittleEndian<quint16>(fmt);
    const int channels = qFromLittleEndian<quint16>(fmt + 2);
    const quint32 rate = qFromLittleEndian<quint32>(fmt + 4);
    const int bits = qFromLittleEndian<quint16>(fmt + 14);
    // An extensible format names its real encoding in the first two bytes
    // of its sub-format.
    if (tag == TagExtensible && fmtSize >= 26)
        tag = qFromLittleEndian<quint16>(fmt + 24);
    // Beyond these no output goes, and QAudioFormat keeps channels in 16
    // signed bits.
    if (channels <= 0 || channels > MaxChannels || rate == 0 || rate > MaxRate)
        return false;

    QAudioFormat::SampleFormat sampleFormat = QAudioFormat::Unknown;
    if (tag == TagPcm && bits == 8)
        sampleFormat = QAudioFormat::UInt8;
    else if (tag == TagPcm && bits == 16)
        sampleFormat = QAudioFormat::Int16;
    else if (tag == TagPcm && (bits == 24 || bits == 32))
        sampleFormat = QAudioFormat::Int32;
    else if (tag == TagFloat && bits == 32)
        sampleFormat = QAudioFormat::Float;
    if (sampleFormat == QAudioFormat::Unknown)
        return false;

    // Whole frames only: a sink fed half a frame shifts every later one.
    const qsizetype frame = qsizetype(channels) * (bits / 8);
    dataSize -= dataSize % frame;
    format->setSampleFormat(sampleFormat);
    format->setChannelCount(channels);
    format->setSampleRate(int(rate));
    *samples = bits == 24 ? widen24(bytes + dataOffset, dataSize) : QByteArray(bytes + dataOffset, dataSize);
    return true;
}

bool QSoundPlayer::play(const QByteArray &wav, bool loop)
{
    stop();
    QAudioFormat format;
    QByteArray samples;
    if (!decode(wav, &format, &samples) || samples.isEmpty())
        return false;
    // Without a device there is nothing to open, and nothing will ever
    // report back: leave before making a sink.
    const QAudioDevice device = QMediaDevices::defaultAudioOutput();
    if (device.isNull())
        return false;

    m_source = std::make_unique<SampleSource>(samples, loop);
    m_source->open(QIODevice::ReadOnly);
    m_sink = std::make_unique<QAudioSink>(device, format);
    m_sink->start(m_source.get());
    // A sink that can't open fails at once; don't wait for a state change.
    if (m_sink->error() != QAudio::NoError || m_sink->state() == QAudio::StoppedState) {
        stop();
        return false;
    }
    return true;
}

void QSoundPlayer::stop()
{
    if (m_sink)
        m_sink->stop();
    m_sink.reset();
    m_source.reset();
}
