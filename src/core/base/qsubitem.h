#pragma once

#include <QtGlobal>

/**
 * A pair of group and index that names a sprite, a palette or a sound.
 * Signed 32-bit in memory; the engine's files hold 16 bits of each.
 */
struct QSubItem
{
    qint32 group = 0;
    qint32 index = 0;

    friend bool operator==(const QSubItem &a, const QSubItem &b)
    {
        return a.group == b.group && a.index == b.index;
    }
    friend bool operator!=(const QSubItem &a, const QSubItem &b) { return !(a == b); }
};
