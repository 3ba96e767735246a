#include "qspritepalette.h"

#include "../base/quserprompt.h"
#include "qrgbpalette.h"
#include "qsprites.h"
#include "spritecommands.h"

#include <algorithm>
#include <cstring>

namespace {

void releaseColors(QRGBPal *colors)
{
    if (colors && --colors->refCount <= 0)
        delete colors;
}

} // namespace

QSpritePalette::QSpritePalette(QSprites *owner)
    : m_owner(owner)
{
}

QSpritePalette::~QSpritePalette()
{
    releaseColors(m_colors);
}

void QSpritePalette::attachColors(QRGBPal *colors)
{
    if (colors == m_colors)
        return;
    if (colors)
        ++colors->refCount;
    releaseColors(m_colors);
    m_colors = colors;
    m_owner->paletteChanged(this);
}

QList<QRgb> QSpritePalette::colors() const
{
    return m_colors ? m_colors->toColorVector() : QList<QRgb>();
}

void QSpritePalette::setItemGroup(int group)
{
    setInfo(group, m_index, m_colorCount);
}

void QSpritePalette::setItemIndex(int index)
{
    setInfo(m_group, index, m_colorCount);
}

void QSpritePalette::setColorCount(int count)
{
    setInfo(m_group, m_index, count);
}

void QSpritePalette::setInfo(int group, int index, int colorCount)
{
    // A palette of no colours would be saved as a link to the first one.
    colorCount = std::clamp(colorCount, 1, QRGBPal::Size);
    if (group == m_group && index == m_index && colorCount == m_colorCount)
        return;
    if (m_owner->undoEnabled())
        m_owner->push(new PaletteChangeInfo(m_owner, this->index()));
    RawSpriteEdits::setPaletteInfo(this, group, index, colorCount);
}

int QSpritePalette::index() const
{
    return m_owner->palettes()->indexOf(this);
}

bool QSpritePalette::isShared() const
{
    return m_colors && m_colors->refCount >= 2;
}

void QSpritePalette::setColors(const QList<QRgb> &colors, int shareMode)
{
    setColors(QRGBPal::fromColorVector(colors), shareMode);
}

void QSpritePalette::setColors(const QRGBPal &colors, int shareMode)
{
    if (m_owner->undoEnabled())
        m_owner->push(new PaletteChangeColors(m_owner, index()));
    if (shareMode != NoShare) {
        if (QSpritePalette *twin = m_owner->paletteWithColors(colors, this)) {
            attachColors(twin->m_colors);
            return;
        }
    }
    bool forAll = true;
    if (isShared()) {
        if (shareMode == NoShare)
            forAll = false;
        else if (shareMode == AskToShare)
            forAll = userPrompt->question(tr("Palette changes"),
                                          tr("Do you want to use this colors in all other instances of this palette?"),
                                          false);
    }
    if (!m_colors || !forAll) {
        auto *own = new QRGBPal(colors);
        own->refCount = 0;
        attachColors(own);
        return;
    }
    // In place: every palette sharing the array changes with it.
    std::memcpy(m_colors->bytes(), colors.bytes(), QRGBPal::Bytes);
    m_owner->colorsReplaced(m_colors);
}

bool QSpritePalette::fromFile(const QString &fileName)
{
    // Readers of images copy their colours over the start of the array: the
    // rest keeps the colours the palette had.
    QRGBPal colors = m_colors ? *m_colors : QRGBPal();
    QRGBPalette reader(&colors);
    if (!reader.fromFile(fileName))
        return false;
    setColors(colors, Share);
    return true;
}

bool QSpritePalette::toFile(const QString &fileName) const
{
    if (!m_colors)
        return false;
    QRGBPal colors = *m_colors;
    return QRGBPalette(&colors).toFile(fileName);
}
