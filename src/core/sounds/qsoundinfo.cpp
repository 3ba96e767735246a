#include "qsoundinfo.h"

#include <QtEndian>

QSoundInfo QSoundInfo::fromWav(const QByteArray &wav)
{
    // "RIFF", size, "WAVE", then the format chunk's id and size: the fields
    // read here sit at fixed places behind them, as every common writer
    // puts the format chunk first.
    constexpr int FormatTag = 20;
    constexpr int FormatEnd = 36;
    QSoundInfo info;
    // Another kind of sound is kept as it is, and not measured.
    if (wav.size() < FormatEnd || !wav.startsWith("RIFF") || wav.mid(8, 4) != "WAVE")
        return info;
    const char *bytes = wav.constData();
    if (qFromLittleEndian<quint16>(bytes + FormatTag) != 1)
        return info;

    // The first "data" anywhere, as the engine's tools look for it. A file
    // without one has nothing to measure, and counts as unreadable.
    const qsizetype data = wav.indexOf("data", 1);
    if (data < 0 || data + 8 > wav.size())
        return info;
    const quint32 dataSize = qFromLittleEndian<quint32>(bytes + data + 4);
    const quint32 byteRate = qFromLittleEndian<quint32>(bytes + 28);
    // Channel and bit counts are 16-bit in the file and 8-bit here; real
    // files never come near the limit.
    info.channels = quint8(qFromLittleEndian<quint16>(bytes + 22));
    info.sampleRate = qFromLittleEndian<quint32>(bytes + 24);
    info.bitsPerSample = quint8(qFromLittleEndian<quint16>(bytes + 34));
    info.duration = byteRate == 0 ? 0.0f : float(dataSize) / float(byteRate);
    return info;
}
