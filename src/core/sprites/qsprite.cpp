#include "qsprite.h"

#include "../base/quserprompt.h"
#include "imagecodecs.h"
#include "qrgbpalette.h"
#include "qsprites.h"
#include "spritecommands.h"

#include <QFileInfo>
#include <QImageWriter>
#include <QSaveFile>

#include <algorithm>
#include <cstring>

namespace {

/** Sprite images are 16-bit sizes in every SFF version. */
constexpr int MaxSide = 65535;

/**
 * The part of `image` that holds something: pixels other than index 0 in
 * an indexed image, other than the top left pixel's colour in true colour.
 * A null rectangle when nothing counts or the format is another.
 */
QRect contentBox(const QImage &image)
{
    const bool indexed = image.format() == QImage::Format_Indexed8;
    if (!indexed && image.format() != QImage::Format_RGB32 && image.format() != QImage::Format_ARGB32)
        return QRect();
    int left = 100000;
    int top = 100000;
    int right = 0;
    int bottom = 0;
    const quint32 background = indexed ? 0 : reinterpret_cast<const quint32 *>(image.constScanLine(0))[0];
    for (int y = 0; y < image.height(); ++y) {
        const uchar *line = image.constScanLine(y);
        for (int x = 0; x < image.width(); ++x) {
            const quint32 value = indexed ? line[x] : reinterpret_cast<const quint32 *>(line)[x];
            if (value == background)
                continue;
            left = std::min(left, x);
            right = std::max(right, x);
            top = std::min(top, y);
            bottom = std::max(bottom, y);
        }
    }
    if (left > right || top > bottom)
        return QRect();
    return QRect(QPoint(left, top), QPoint(right, bottom));
}

/** A channel of a packed RGB image as an indexed image, with a gradient of that channel as its colours. */
QImage channelImage(const QImage &rgb, int channel, QRGBPal &gradient)
{
    QImage out(rgb.size(), QImage::Format_Indexed8);
    for (int i = 0; i < QRGBPal::Size; ++i) {
        const uchar value = uchar(i);
        gradient.entries[i] = {channel == 0 ? value : uchar(0), channel == 1 ? value : uchar(0),
                               channel == 2 ? value : uchar(0), 255};
    }
    out.setColorTable(gradient.toColorVector());
    for (int y = 0; y < rgb.height(); ++y) {
        const uchar *in = rgb.constScanLine(y);
        uchar *line = out.scanLine(y);
        for (int x = 0; x < rgb.width(); ++x)
            line[x] = in[x * 3 + channel];
    }
    return out;
}

} // namespace

QSpriteData *QSpriteData::create(QStreamCache *cache, const QByteArray &bytes, int filter, const QImageInfo &info,
                                 quint64 hash)
{
    auto *data = new QSpriteData;
    data->m_info = info;
    data->m_cache = cache;
    data->m_entry = cache->add(bytes, filter, info, hash);
    return data;
}

void QSpriteData::release(QSpriteData *data)
{
    if (data && --data->m_refCount <= 0)
        delete data;
}

QSpriteData::~QSpriteData()
{
    m_cache->release(m_entry);
}

QByteArray QSpriteData::pixels() const
{
    return m_cache->decoded(m_entry);
}

QImage QSpriteData::image() const
{
    return imageFromPixels(pixels(), m_info);
}

void QSpriteData::replace(const QByteArray &bytes, int filter, const QImageInfo &info, quint64 hash)
{
    m_info = info;
    m_cache->replace(m_entry, bytes, filter, info, hash);
}

QSprite::QSprite(QSprites *owner)
    : m_owner(owner)
{
}

QSprite::~QSprite()
{
    QSpriteData::release(m_data);
}

void QSprite::attachData(QSpriteData *data)
{
    if (data == m_data)
        return;
    if (data)
        data->addRef();
    QSpriteData::release(m_data);
    m_data = data;
    m_owner->spriteChanged(this);
}

void QSprite::setItemGroup(int group)
{
    setInfo(group, m_index, m_x, m_y, m_flags, m_palette);
}

void QSprite::setItemIndex(int index)
{
    setInfo(m_group, index, m_x, m_y, m_flags, m_palette);
}

void QSprite::setOffsetX(int x)
{
    setInfo(m_group, m_index, x, m_y, m_flags, m_palette);
}

void QSprite::setOffsetY(int y)
{
    setInfo(m_group, m_index, m_x, y, m_flags, m_palette);
}

void QSprite::setPalette(QSpritePalette *palette)
{
    setInfo(m_group, m_index, m_x, m_y, m_flags, palette);
}

void QSprite::setFlag(int f, bool on)
{
    setInfo(m_group, m_index, m_x, m_y, quint16(on ? (m_flags | f) : (m_flags & ~f)), m_palette);
}

void QSprite::setInfo(int group, int index, int x, int y, quint16 flags, QSpritePalette *palette)
{
    // A palette of another set would dangle when that set removes it.
    if (palette && palette->owner() != m_owner)
        return;
    if (group == m_group && index == m_index && x == m_x && y == m_y && flags == m_flags && palette == m_palette)
        return;
    if (m_owner->undoEnabled())
        m_owner->push(new SpriteChangeInfo(m_owner, this->index()));
    RawSpriteEdits::setSpriteInfo(this, group, index, x, y, flags, palette);
}

int QSprite::index() const
{
    return int(m_owner->m_sprites.indexOf(const_cast<QSprite *>(this)));
}

bool QSprite::imageIsShared() const
{
    return m_data && m_data->refCount() >= 2;
}

QImageInfo QSprite::imageProperties() const
{
    return m_data ? m_data->info() : QImageInfo();
}

QImage QSprite::image(int mode) const
{
    if (!m_data)
        return QImage();
    QImage image = m_data->image();
    if (image.format() != QImage::Format_Indexed8 || mode == NoColorTable)
        return image;
    const QSpritePalette *palette = m_palette;
    QRemap remap;
    if (mode == Remapped && palette
        && m_owner->remaps()->remapOf(quint32(palette->itemGroup()), quint32(palette->itemIndex()), remap)) {
        if (const QSpritePalette *target = m_owner->palette(int(remap.dstGroup), int(remap.dstIndex)))
            palette = target;
    }
    image.setColorTable(palette && palette->rgbPal() ? palette->rgbPal()->toColorVector() : QList<QRgb>(256, 0));
    return image;
}

bool QSprite::setImage(const QImage &source, int shareMode, bool invertIndexes, int paletteAction,
                       QSubItem paletteItem)
{
    if (source.width() > MaxSide || source.height() > MaxSide)
        return false;
    QSprites *set = m_owner;
    const int position = index();
    // Internal replacements (a crop) keep the format the sprite had: nothing to warn of.
    if (!source.isNull() && source.format() != QImage::Format_Indexed8 && paletteAction != AdaptImage
        && shareMode != InPlace && set->version() < QSprites::Version_201) {
        userPrompt->warning(tr("Warning!"),
                            tr("The image to be set to the sprite %1, %2 (#%3) isn't color indexed.\n"
                               "For the current SFF version, the image will be converted to indexed with an "
                               "optimized palette when you save the file.")
                                .arg(m_group)
                                .arg(m_index)
                                .arg(position + 1));
    }

    set->beginMacro(QStringLiteral("setImage"));
    if (set->undoEnabled())
        set->push(new SpriteChangeImage(set, position));
    if (source.isNull()) {
        attachData(nullptr);
        set->endMacro();
        return true;
    }

    QImage image = source;
    if (image.format() != QImage::Format_Indexed8 && image.format() != QImage::Format_RGB32
        && image.format() != QImage::Format_ARGB32)
        image = image.convertToFormat(QImage::Format_RGB32);
    const bool wasIndexed = image.format() == QImage::Format_Indexed8;
    if (invertIndexes && wasIndexed) {
        // The palette reversal of the add dialogs: index p becomes 255 - p,
        // and the colours follow.
        QList<QRgb> table = image.colorTable();
        table.resize(QRGBPal::Size, 0);
        std::reverse(table.begin(), table.end());
        for (int y = 0; y < image.height(); ++y) {
            uchar *line = image.scanLine(y);
            for (int x = 0; x < image.width(); ++x)
                line[x] = uchar(255 - line[x]);
        }
        image.setColorTable(table);
    }

    if (paletteAction == AdaptImage || paletteAction == SwapPalette) {
        QSpritePalette *palette = set->palette(paletteItem.group, paletteItem.index);
        if (palette && paletteAction == AdaptImage && palette->rgbPal()) {
            image = QRGBPalette::adaptImage(image, *palette->rgbPal());
            setPalette(palette);
        } else if (palette && paletteAction == SwapPalette) {
            setPalette(palette);
        }
    }
    if (image.format() == QImage::Format_Indexed8 && (!m_palette || paletteAction == OwnPalette)) {
        QRGBPal colors = QRGBPal::fromColorVector(image.colorTable());
        colors.entries[0].alpha = 0;
        setPalette(set->addPalette(colors, true, 0, -1));
    }

    storeImage(image, shareMode);
    set->endMacro();
    return true;
}

void QSprite::storeImage(const QImage &image, int shareMode)
{
    QSprites *set = m_owner;
    QImageInfo info;
    info.width = quint16(image.width());
    info.height = quint16(image.height());
    info.format = image.format();
    const QByteArray bytes = imagePixels(image);
    const quint64 hash = QStreamCache::hash(bytes);
    QSpriteData *own = m_data;

    if (shareMode != InPlace && shareMode != NoShare) {
        // An identical image elsewhere is shared instead of stored twice.
        if (QStreamCacheEntry *equal = set->m_cache.findEqual(bytes, own ? own->entry() : nullptr, info)) {
            if (QSprite *holder = set->spriteWithEntry(equal)) {
                attachData(holder->m_data);
                return;
            }
        }
    }
    if (own && own->refCount() > 1 && shareMode != Share && shareMode != InPlace) {
        QList<uint> items;
        if (shareMode == AskToShare) {
            for (int i = 0; i < set->count(); ++i) {
                if (set->at(i) != this && set->at(i)->m_data == own)
                    items.append(uint(i));
            }
            Q_EMIT set->dataSharing(items);
        }
        QSpriteData *fresh = QSpriteData::create(&set->m_cache, bytes, 0, info, hash);
        attachData(fresh);
        // Only sprites that held the image may follow it.
        for (const uint position : std::as_const(items)) {
            QSprite *other = set->at(int(position));
            if (other && other != this && other->m_data == own)
                other->attachData(fresh);
        }
        return;
    }
    if (own) {
        own->replace(bytes, 0, info, hash);
        set->dataReplaced(own);
    } else {
        attachData(QSpriteData::create(&set->m_cache, bytes, 0, info, hash));
    }
}

bool QSprite::crop()
{
    if (!m_data)
        return false;
    const QImage image = this->image(Default);
    const QRect box = contentBox(image);
    if (box.isNull() || box == image.rect())
        return false;
    QList<QSprite *> sharers;
    for (QSprite *other : std::as_const(m_owner->m_sprites)) {
        if (other != this && other->m_data == m_data)
            sharers.append(other);
    }
    m_owner->beginMacro(QStringLiteral("crop"));
    // In place: every sprite holding the image is cropped with it, and keeps
    // its place on screen through its axis.
    setImage(image.copy(box), InPlace);
    setInfo(m_group, m_index, m_x - box.left(), m_y - box.top(), m_flags, m_palette);
    for (QSprite *other : std::as_const(sharers)) {
        other->setInfo(other->m_group, other->m_index, other->m_x - box.left(), other->m_y - box.top(),
                       other->m_flags, other->m_palette);
    }
    m_owner->endMacro();
    return true;
}

void QSprite::splitRGB()
{
    if (!m_data)
        return;
    const QImage rgb = image(Default).convertToFormat(QImage::Format_RGB888);
    if (rgb.isNull())
        return;
    QSprites *set = m_owner;
    set->beginMacro(QStringLiteral("splitRGB"));
    QRGBPal gradient;
    const QImage red = channelImage(rgb, 0, gradient);
    // The palette first, so that the indexed image brings none of its own.
    setPalette(set->addPalette(gradient, true, m_group, -1));
    setImage(red, Share, false, Ignore);
    // Both new sprites take the index + 1, so that the check reports the
    // collision and the user picks the numbers.
    const int position = index();
    for (int channel = 1; channel <= 2; ++channel) {
        const QImage image = channelImage(rgb, channel, gradient);
        QSprite *sprite = set->insert(position + channel);
        sprite->setInfo(m_group, m_index + 1, m_x, m_y, m_flags, set->addPalette(gradient, true, m_group, -1));
        sprite->setImage(image, Share, false, Ignore);
    }
    set->endMacro();
}

QSprite *QSprite::duplicate()
{
    const int position = index() + 1;
    QSprite *copy = RawSpriteEdits::newSprite(m_owner);
    RawSpriteEdits::setSpriteInfo(copy, m_group, m_index, m_x, m_y, m_flags, m_palette);
    copy->attachData(m_data);
    RawSpriteEdits::insertSprite(m_owner, position, copy);
    if (m_owner->undoEnabled())
        m_owner->push(new SpriteInsert(m_owner, position));
    return copy;
}

QImage QSprite::alignedImage(const QPoint &maxAxis, const QPoint &maxRest) const
{
    const QImage image = this->image(Default);
    const QSize size(maxAxis.x() + maxRest.x(), maxAxis.y() + maxRest.y());
    if (image.isNull() || size.isEmpty() || size.width() > MaxSide || size.height() > MaxSide)
        return QImage();
    QImage canvas(size, image.format());
    canvas.setColorTable(image.colorTable());
    canvas.fill(0);
    const int bytesPerPixel = image.depth() / 8;
    const int dx = maxAxis.x() - m_x;
    const int dy = maxAxis.y() - m_y;
    // Clipped, for a sprite outside the bounds the canvas was made for.
    const int firstX = std::max(0, -dx);
    const int lastX = std::min(image.width(), canvas.width() - dx);
    for (int y = std::max(0, -dy); y < std::min(image.height(), canvas.height() - dy); ++y) {
        if (firstX >= lastX)
            break;
        std::memcpy(canvas.scanLine(y + dy) + (firstX + dx) * bytesPerPixel,
                    image.constScanLine(y) + firstX * bytesPerPixel, size_t(lastX - firstX) * bytesPerPixel);
    }
    return canvas;
}

bool QSprite::saveAligned(const QString &path, const QPoint &maxAxis, const QPoint &maxRest) const
{
    return writeImage(alignedImage(maxAxis, maxRest), path);
}

bool QSprite::writeImage(const QImage &image, const QString &path)
{
    if (image.isNull())
        return false;
    const QString suffix = QFileInfo(path).suffix().toLower();
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    if (suffix == QLatin1String("pcx")) {
        const QByteArray pcx = encodePcx(image);
        if (pcx.isEmpty() || file.write(pcx) != pcx.size())
            return false;
    } else {
        QImageWriter writer(&file, suffix.toLatin1());
        if (!writer.write(image))
            return false;
    }
    return file.commit();
}
