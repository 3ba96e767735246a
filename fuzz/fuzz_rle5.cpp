// RLE5 sprites come from any SFF file; nothing writes them, so the check is
// that decoding stays inside its buffers and gives a whole image or nothing.

#include "fuzzimage.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    FuzzImage::startApplication("fuzz_rle5");
    if (size < FuzzImage::HeaderSize)
        return 0;
    const QImageInfo info = FuzzImage::info(data);
    FuzzImage::checkPixels(decodeRle5(FuzzImage::payload(data, size), info), info);
    return 0;
}
