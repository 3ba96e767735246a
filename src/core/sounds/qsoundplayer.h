#pragma once

#include <QAudioFormat>
#include <QByteArray>
#include <QObject>

#include <memory>

class QAudioSink;
class QIODevice;

/**
 * Plays one WAV file from memory, once or looped, through the default
 * audio output of Qt Multimedia, and stops it.
 *
 * Playing never blocks and never waits for the output: without an audio
 * device, or when the output can't be opened, play() does nothing and
 * returns false. Uncompressed PCM (8, 16, 24 and 32 bits) and 32-bit float
 * play; compressed formats don't.
 */
class QSoundPlayer : public QObject
{
    Q_OBJECT

public:
    explicit QSoundPlayer(QObject *parent = nullptr);
    ~QSoundPlayer() override;

    /** Stops what plays, then plays `wav`; false when nothing plays. The bytes are copied. */
    bool play(const QByteArray &wav, bool loop);
    /** Stops playing; nothing when nothing plays. */
    void stop();

    /**
     * The format and the samples of the WAV file `wav`, as an audio output
     * takes them: the chunks are walked from the RIFF header to the "fmt "
     * and "data" chunks, 24-bit samples widen to 32 bits, and a data chunk
     * that claims more than the file holds is cut to what is there, in
     * whole frames. False for a file that isn't a WAV, or whose encoding
     * isn't PCM or float.
     */
    static bool decode(const QByteArray &wav, QAudioFormat *format, QByteArray *samples);

private:
    std::unique_ptr<QIODevice> m_source;
    std::unique_ptr<QAudioSink> m_sink;
};
