#pragma once

// Small images, palettes and sprite sets for the tests of the sprite set.

#include "core/base/qmessages.h"
#include "core/base/qprojectfile.h"
#include "core/sprites/qrgbpal.h"
#include "core/sprites/qsprites.h"

#include <QImage>
#include <QList>
#include <QStringList>

namespace SpriteSets {

/** A stage project, as far as a document sees one: none of a character's rules apply. */
class StageOwner : public QProjectOwner
{
public:
    int projectType() const override { return Stage; }
    quint32 engineVersion() const override { return DefaultEngineVersion; }
    QMessageList *messageList() override { return &list; }
    void documentChanged(QProjectFile *) override {}

    QMessageList list;
};

/** The messages of the set's last check, one "severity sprite:index text" or "... palette:..." each. */
inline QStringList messageTexts(const QSprites &set)
{
    QStringList texts;
    for (int i = 0; i < set.messages().count(QMessages::AnySeverity); ++i) {
        const QMessage &m = set.messages().at(i);
        texts.append(QStringLiteral("%1 %2:%3 %4")
                         .arg(m.severity)
                         .arg(m.line ? QLatin1String("palette") : QLatin1String("sprite"))
                         .arg(m.index)
                         .arg(m.text));
    }
    return texts;
}

/** 256 colours that differ with `seed`, entry 0 transparent as the set keeps it. */
inline QRGBPal colors(int seed)
{
    QRGBPal pal;
    for (int i = 0; i < QRGBPal::Size; ++i)
        pal.entries[i] = {uchar(i), uchar(i * 7 + seed), uchar(seed * 13 + i * 3), 255};
    pal.entries[0].alpha = 0;
    return pal;
}

/** An indexed image whose pixels differ with `seed`, with the colours of `seed`. */
inline QImage indexedImage(int width, int height, int seed)
{
    QImage image(width, height, QImage::Format_Indexed8);
    image.setColorTable(colors(seed).toColorVector());
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            image.scanLine(y)[x] = uchar((x * 3 + y * 5 + seed) % 251 + 1);
    }
    return image;
}

/** 32 colours: entries 32 to 255 repeat entry 255. */
inline QRGBPal thirtyTwoColours()
{
    QRGBPal pal = colors(4);
    for (int i = 32; i < QRGBPal::Size; ++i)
        pal.entries[i] = pal.entries[255];
    return pal;
}

/** An indexed image of indexes below 32 only, which five bits hold, without colours. */
inline QImage lowIndexes(int width, int height, int seed = 0)
{
    QImage image(width, height, QImage::Format_Indexed8);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            image.scanLine(y)[x] = uchar((x / 3 + y * (seed + 1)) % 32);
    }
    return image;
}

/** Width, height and format of `image`. */
inline QImageInfo infoOf(const QImage &image)
{
    return QImageInfo{quint16(image.width()), quint16(image.height()), image.format()};
}

/** A 32-bit RGB image whose pixels differ with `seed`. */
inline QImage rgbImage(int width, int height, int seed)
{
    QImage image(width, height, QImage::Format_RGB32);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            image.setPixel(x, y, qRgb(x * 40 + seed, y * 30, (x + y + seed) * 9));
    }
    return image;
}

/**
 * A set with a bit of everything, unmodified and with an empty stack:
 *   sprite 0 (0,0) and sprite 3 (5,1) share an indexed image and palette 0;
 *   sprite 1 (5,0) has its own image and palette 1 (1,1), whose colours
 *   palette 2 (1,2) shares;
 *   sprite 2 (5,2) has a true colour image and no palette;
 *   sprite 4 (7,0) is empty.
 */
inline void fill(QSprites &set)
{
    set.setUndoEnabled(false);
    QSpritePalette *own = set.addPalette(colors(1), false, 0, 0);
    QSpritePalette *character = set.addPalette(colors(2), false, 1, 1);
    set.addPalette(colors(2), false, 1, 2);
    QSprite *a = set.add();
    a->setInfo(0, 0, 10, 20, 0, own);
    a->setImage(indexedImage(8, 6, 1), Share);
    QSprite *b = set.add();
    b->setInfo(5, 0, 3, 4, DecompressOnLoad, character);
    b->setImage(indexedImage(5, 7, 2), Share);
    QSprite *c = set.add();
    c->setInfo(5, 2, -1, -2, 0, nullptr);
    c->setImage(rgbImage(4, 4, 3), Share);
    QSprite *d = set.add();
    d->setInfo(5, 1, 0, 0, 0, own);
    d->setImage(indexedImage(8, 6, 1), Share);
    set.add()->setInfo(7, 0, 1, 1, 0, nullptr);
    set.setUndoEnabled(true);
    set.setModified(false);
}

} // namespace SpriteSets
