// PCX files come from version 1 sprite files and from the user's disk.
// Whatever the bytes, decoding stays inside its buffers and allocates no
// more than the data could fill, and what it decodes survives a round trip.

#include "fuzzimage.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    FuzzImage::startApplication("fuzz_pcx");
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    const QImage image = decodePcx(bytes);
    if (image.isNull())
        return 0;
    FuzzImage::check(qsizetype(image.width()) * image.height() <= 32 * bytes.size());
    if (qsizetype(image.width()) * image.height() > FuzzImage::RoundTripPixels)
        return 0;
    const QImage again = decodePcx(encodePcx(image));
    FuzzImage::check(FuzzImage::samePixels(again, image));
    FuzzImage::check(image.colorTable().isEmpty() || again.colorTable() == image.colorTable());
    return 0;
}
