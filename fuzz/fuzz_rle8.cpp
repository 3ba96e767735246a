// RLE8 sprites come from any SFF file. Whatever the bytes, decoding stays
// inside its buffers, and what it decodes encodes and decodes back alike.

#include "fuzzimage.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    FuzzImage::startApplication("fuzz_rle8");
    if (size < FuzzImage::HeaderSize)
        return 0;
    const QImageInfo info = FuzzImage::info(data);
    const QByteArray pixels = decodeRle8(FuzzImage::payload(data, size), info);
    FuzzImage::checkPixels(pixels, info);
    if (!FuzzImage::worthARoundTrip(pixels, info))
        return 0;
    const QImage image = imageFromPixels(pixels, info);
    FuzzImage::check(decodeRle8(encodeRle8(image), info) == pixels);
    return 0;
}
