#include "qcodepages.h"

#include <QTextCodec>

#include <algorithm>

QList<QByteArray> codecNames;

void buildCodecNames()
{
    if (!codecNames.isEmpty())
        return;
    for (const QByteArray &name : QTextCodec::availableCodecs()) {
        if (name != "System")
            codecNames.append(name);
    }
    std::sort(codecNames.begin(), codecNames.end());
    codecNames.erase(std::unique(codecNames.begin(), codecNames.end()), codecNames.end());
}

QTextCodec *codecForCodepage(int codepage)
{
    if (codepage > 0 && codepage <= codecNames.size()) {
        if (QTextCodec *codec = QTextCodec::codecForName(codecNames.at(codepage - 1)))
            return codec;
    }
    return QTextCodec::codecForLocale();
}

int codepageOfCodec(const QTextCodec *codec)
{
    if (!codec)
        return 0;
    const QByteArray name = codec->name();
    if (name == "System")
        return 0;
    // Names compare without regard to case: ICU and uchardet spell them differently.
    for (int i = 0; i < codecNames.size(); ++i) {
        if (qstricmp(codecNames.at(i).constData(), name.constData()) == 0)
            return i + 1;
    }
    return 0;
}
