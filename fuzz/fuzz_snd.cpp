// SND files come from anywhere. Whatever the bytes, a load ends with a list
// or fails cleanly, never reads past the file, and a list that loaded saves
// and loads back as the same list.

#include "core/sounds/qsounds.h"

#include "fuzzinput.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    QTemporaryFile file;
    if (!writeFuzzInput(file, data, size))
        return 0;

    QSounds sounds(nullptr, QStreamCache::Memory, false, -1);
    if (!sounds.load(file.fileName(), false)) {
        if (sounds.count() != 0)
            __builtin_trap();
        return 0;
    }
    sounds.check();
    QTemporaryFile copy;
    if (!copy.open())
        return 0;
    copy.close();
    QSounds again(nullptr, QStreamCache::Memory, false, -1);
    if (!sounds.save(copy.fileName(), true) || !again.load(copy.fileName(), false) || again.dump() != sounds.dump())
        __builtin_trap();
    for (int i = 0; i < sounds.count(); ++i) {
        if (again.sample(i) != sounds.sample(i))
            __builtin_trap();
    }
    return 0;
}
