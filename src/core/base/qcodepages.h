#pragma once

#include <QByteArray>
#include <QList>

class QTextCodec;

/**
 * The names of the text codecs the system has, sorted, without "System".
 * A `codepage` number is 0 for the system's codec and n for entry n - 1 of
 * this list. Built once at start by buildCodecNames().
 */
extern QList<QByteArray> codecNames;

/** Fills codecNames; later calls do nothing. */
void buildCodecNames();

/** The codec of a codepage number; the system's for 0 or a number out of range. */
QTextCodec *codecForCodepage(int codepage);

/** The codepage number of a codec: its place in codecNames + 1, or 0 for the system's or unknown. */
int codepageOfCodec(const QTextCodec *codec);
