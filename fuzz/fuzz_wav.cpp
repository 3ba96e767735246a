// A WAV file reaches the header reader and the player's decoder from a
// sound file or straight from disk. Whatever the bytes, both stay inside
// them, and the decoder gives whole frames.

#include "core/sounds/qsoundinfo.h"
#include "core/sounds/qsoundplayer.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray wav = QByteArray::fromRawData(reinterpret_cast<const char *>(data), qsizetype(size));
    (void)QSoundInfo::fromWav(wav);
    QAudioFormat format;
    QByteArray samples;
    if (QSoundPlayer::decode(wav, &format, &samples)) {
        const int frame = format.bytesPerFrame();
        if (frame <= 0 || samples.size() % frame != 0 || samples.size() > qsizetype(size) * 2)
            __builtin_trap();
    }
    return 0;
}
