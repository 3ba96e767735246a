// Sprite files come from anywhere. Whatever the bytes, a load ends with a
// set or fails and leaves it empty, never reads outside the file, and a set
// that loaded and can be saved saves into a file that loads again.

#include "core/base/quserprompt.h"
#include "core/sprites/qsprites.h"

#include "fuzzinput.h"

#include <QBuffer>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    // The input stays in memory: the reader takes any random-access device.
    makeFuzzApplication();
    // Messages of broken files are expected; nobody needs to read them.
    QRecordingUserPrompt prompt;

    QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    QSprites sprites(nullptr, QStreamCache::Memory, false, -1);
    if (!sprites.fromDevice(&buffer, QStringLiteral("fuzz.sff"), false)) {
        if (sprites.count() != 0 || sprites.paletteCount() != 0)
            __builtin_trap();
        return 0;
    }
    for (int i = 0; i < sprites.count(); ++i)
        sprites.at(i)->image(Default);
    sprites.check();
    if (sprites.count() > 64 || !sprites.checkSave(sprites.version()))
        return 0;
    QTemporaryFile copy;
    if (!copy.open())
        return 0;
    copy.close();
    // A save may refuse (an empty sprite, an image that can't be decoded),
    // but what it writes is a sprite file.
    QSprites again(nullptr, QStreamCache::Memory, false, -1);
    if (sprites.toFile(copy.fileName(), 0, true) && !again.fromFile(copy.fileName(), false))
        __builtin_trap();
    return 0;
}
