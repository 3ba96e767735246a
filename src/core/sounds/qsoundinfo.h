#pragma once

#include <QByteArray>
#include <QtGlobal>

/**
 * What the header of a WAV file says about its sound. All zero for a
 * compressed WAV (a format tag other than 1, PCM) or one that can't be read.
 */
struct QSoundInfo
{
    quint8 channels = 0;
    /** Samples per second, Hz. */
    quint32 sampleRate = 0;
    quint8 bitsPerSample = 0;
    /** Seconds: the size of the data chunk over the byte rate; 0 when the byte rate is 0. */
    float duration = 0;

    /**
     * Reads the header of the WAV file `wav`. The format fields come from
     * their fixed places behind the RIFF header (offsets 20 to 35); the
     * data chunk is the first "data" in the bytes at an index above 0.
     */
    static QSoundInfo fromWav(const QByteArray &wav);

    friend bool operator==(const QSoundInfo &a, const QSoundInfo &b)
    {
        return a.channels == b.channels && a.sampleRate == b.sampleRate && a.bitsPerSample == b.bitsPerSample
            && a.duration == b.duration;
    }
};
