#pragma once

// The engine's image encodings: RLE8, RLE5, LZ5, PCX and the PNG wrapper.
//
// The engine reads what the encoders write and the engine's own tools wrote
// what the decoders read, so both sides are byte-exact contracts. Every
// function is pure: bytes or images in, bytes or images out, no I/O and no
// messages.
//
// Decoders trust nothing. They never read or write outside a buffer; a
// stream that ends early leaves the rest of the image at 0; a stream that
// goes wrong (an LZ offset before the start of the image) stops there and
// keeps what was decoded so far.
//
// Allocation rule: a decoder allocates an image only if its data could
// fill it at the encoding's best possible ratio (RLE8 and PCX write at most
// 63 bytes for 2 bytes of data, RLE5 at most 256 for 2, LZ5 at most 263 for
// 2, deflate in PNG at most 1032 for 1). A header that claims more than
// that, like a 64k x 64k PCX with ten bytes of data, gives an empty result
// instead of gigabytes of zeros.

#include "qimageinfo.h"

#include <QByteArray>
#include <QImage>

/**
 * The pixels of `image` in the toolkit's line layout: bytesPerLine() times
 * height bytes from the first line. The padding at the end of each line
 * reads 0, as in everything the decoders give, so that equal images give
 * equal bytes whatever their padding held.
 */
QByteArray imagePixels(const QImage &image);

/**
 * A new image of `info`'s size and format holding `pixels`, which must be
 * exactly info.byteCount() bytes. Gives a null image otherwise. Indexed
 * images come without a colour table.
 */
QImage imageFromPixels(const QByteArray &pixels, const QImageInfo &info);

/**
 * Decodes RLE8 into info.byteCount() bytes in the toolkit's line layout.
 * A line holds depth * width / 8 bytes of data; a depth of 0 never wraps.
 * Empty for empty data, for a format without a line layout, or when the
 * data can't justify the image's size.
 */
QByteArray decodeRle8(const QByteArray &data, const QImageInfo &info);
/**
 * Encodes the first depth * width / 8 bytes of each line of `image` (depth
 * as QImageInfo counts it for the image's format) as RLE8. Runs span line
 * ends and never exceed 63. Empty for an empty image or another format.
 */
QByteArray encodeRle8(const QImage &image);

/**
 * Decodes RLE5 as the engine does into info.byteCount() bytes, one byte per
 * pixel, width pixels on each line at info's line stride. There is no
 * encoder: nothing saves this format.
 */
QByteArray decodeRle5(const QByteArray &data, const QImageInfo &info);

/**
 * Decodes LZ5 into info.byteCount() bytes, one byte per pixel, width pixels
 * on each line at info's line stride.
 */
QByteArray decodeLz5(const QByteArray &data, const QImageInfo &info);
/**
 * Encodes an indexed image as LZ5. Runs keep the low five bits of their
 * colour; with `useLZ` false only runs are written. Empty for an empty or
 * non-indexed image.
 */
QByteArray encodeLz5(const QImage &image, bool useLZ);

/**
 * Decodes a PCX file: 8-bit indexed (with the colour table that follows
 * the byte 12 after the pixels, if there is one), 24-bit RGB or 32-bit
 * ARGB. A null image for a bad or unsupported header.
 */
QImage decodePcx(const QByteArray &data);
/**
 * Encodes an image as PCX version 5: one plane for an indexed image
 * followed by its colour table, three for RGB, four for ARGB; other
 * formats are converted to the nearest of these first. Empty when the image
 * is null or too large for PCX's 16-bit sizes.
 */
QByteArray encodePcx(const QImage &image);

/** Decodes a PNG file; a null image when it can't be read. */
QImage decodePng(const QByteArray &data);
/**
 * Encodes an image as PNG. An indexed image is written with an all-black
 * colour table of 256 entries: sprite files keep their palettes apart, and
 * the PNG only carries the indexes. Empty when encoding fails.
 */
QByteArray encodePng(const QImage &image);
