#pragma once

// The palette file readers behind QRGBPalette::fromFile.
//
// Each reads from the current position of a device into a cleared array,
// in the array's order. Their quirks are those of the files the engine's
// users have: ACT and RIFF store their colours in reverse order, and RIFF
// counts one colour less than it holds. Readers trust nothing: every count
// and length is checked against what the device still holds, a read that
// comes short ends the reading, and nothing is allocated beyond what the
// file could fill.

#include "qrgbpal.h"

class QIODevice;

/** A palette file reader. */
class QAbstractPalette
{
public:
    virtual ~QAbstractPalette() = default;
    /**
     * Reads `device` into `colors`. False when the file isn't of this
     * kind; what was read by then stays.
     */
    virtual bool read(QIODevice &device, QRGBPal &colors) = 0;
};

/** Adobe Color Table: 768 bytes of red, green and blue, reversed; anything after them is ignored. */
class QACTPalette : public QAbstractPalette
{
public:
    bool read(QIODevice &device, QRGBPal &colors) override;
};

/** Microsoft RIFF palette ("RIFF", "PAL data"), reversed, one colour short as the engine's tools read it. */
class QRIFFPalette : public QAbstractPalette
{
public:
    bool read(QIODevice &device, QRGBPal &colors) override;
};

/** JASC-PAL text with CR LF line ends: "red green blue [alpha]" per line. */
class QJascPalette : public QAbstractPalette
{
public:
    bool read(QIODevice &device, QRGBPal &colors) override;
};

/** Adobe Color Swatch, version 1: RGB, HSV, CMYK and grey colours. */
class QACOPalette : public QAbstractPalette
{
public:
    bool read(QIODevice &device, QRGBPal &colors) override;
};

/** Adobe Swatch Exchange: RGB, CMYK and grey colour entries, groups skipped. */
class QASEPalette : public QAbstractPalette
{
public:
    bool read(QIODevice &device, QRGBPal &colors) override;
};

/** Corel Painter swatches: lines "R: r, G: g, B: b [A: a]" after a "ROWS" header. */
class QPainterPalette : public QAbstractPalette
{
public:
    bool read(QIODevice &device, QRGBPal &colors) override;
};
