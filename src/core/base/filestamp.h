#pragma once

#include <QByteArray>

/**
 * The text that the program leaves at the start of the comment area of the
 * sprite and sound files it writes: who made it, the program, and where the
 * program comes from, ended by a zero byte. Readers ignore it.
 */
inline QByteArray fileStamp()
{
    return QByteArrayLiteral("Made in Zanarel\nPowered by Kestrada 3\nhttps://kestrada.org/\n") + '\0';
}
