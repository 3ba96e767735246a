// Palette files come from anywhere on the user's disk. The first byte of
// the input picks the suffix the file is opened under, which decides the
// reader as the file dialog would; the rest is the file. Whatever it holds,
// a load stays inside its buffers, ends, and leaves entry 0 transparent
// when it says it loaded.

#include "core/sprites/qrgbpalette.h"

#include "fuzzimage.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    FuzzImage::startApplication("fuzz_palettefiles");
    if (size < 1)
        return 0;
    static const char *const suffixes[] = {"act", "pal", "txt", "aco", "ase", "png", "pcx", "bmp"};
    const QString suffix = QLatin1String(suffixes[data[0] & 7]);
    const QByteArray file(reinterpret_cast<const char *>(data + 1), qsizetype(size - 1));

    QRGBPal colors;
    QRGBPalette palette(&colors);
    const bool loaded = palette.fromData(file, suffix);
    // Only images can fail: every other file loads, as whatever its reader got.
    const bool image = (data[0] & 7) >= 5;
    FuzzImage::check(loaded || image);
    FuzzImage::check(!loaded || colors.entries[0].alpha == 0);
    return 0;
}
