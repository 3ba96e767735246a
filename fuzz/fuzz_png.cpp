// PNG sprites come from any SFF file. Whatever the bytes, decoding allocates
// no more than the data could fill, and what it decodes survives a round trip.

#include "fuzzimage.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    FuzzImage::startApplication("fuzz_png");
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    const QImage image = decodePng(bytes);
    if (image.isNull() || qsizetype(image.width()) * image.height() > FuzzImage::RoundTripPixels)
        return 0;
    const QImage again = decodePng(encodePng(image));
    // Indexes survive; the colours of an indexed image don't, by design.
    FuzzImage::check(FuzzImage::samePixels(again, image));
    return 0;
}
