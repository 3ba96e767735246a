// LZ5 sprites come from any SFF file. Whatever the bytes, decoding stays
// inside its buffers; every pixel it gives is a five-bit run colour or a
// copy of one, so what it decodes encodes and decodes back alike.

#include "fuzzimage.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    FuzzImage::startApplication("fuzz_lz5");
    if (size < FuzzImage::HeaderSize)
        return 0;
    const QImageInfo info = FuzzImage::info(data);
    const QByteArray pixels = decodeLz5(FuzzImage::payload(data, size), info);
    FuzzImage::checkPixels(pixels, info);
    if (!FuzzImage::worthARoundTrip(pixels, info))
        return 0;
    const QImage image = imageFromPixels(pixels, info);
    for (const bool useLZ : {true, false})
        FuzzImage::check(decodeLz5(encodeLz5(image, useLZ), info) == pixels);
    return 0;
}
