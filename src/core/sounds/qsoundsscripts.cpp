// Sound lists as sets of WAV files with a script that names them: the
// export for Elecbyte SndMaker and the program's own export, and the import
// of the latter.

#include "qsounds.h"

#include "../base/atomicfile.h"
#include "../base/filelookup.h"
#include "../base/quserprompt.h"
#include "../text/qtexttokenizer.h"
#include "soundcommands.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>

namespace {

/** The tokenizer's current line is done with: move to the first token of the next one. */
int nextLine(QTextTokenizer &tokenizer, int token)
{
    if (token == QTextTokenizer::EndOfText)
        return token;
    if (token != QTextTokenizer::EndOfLine)
        tokenizer.skipLine();
    return tokenizer.next();
}

} // namespace

bool QSounds::exportSounds(const QString &fileName)
{
    QList<int> indexes;
    for (int i = 0; i < count(); ++i)
        indexes.append(i);
    return exportItems(indexes, fileName);
}

bool QSounds::exportGroup(qint32 group, const QString &fileName)
{
    QList<int> indexes;
    for (int i = 0; i < count(); ++i) {
        if (m_sounds.at(i)->group == group)
            indexes.append(i);
    }
    return exportItems(indexes, fileName);
}

bool QSounds::exportItems(const QList<int> &indexes, const QString &fileName)
{
    const QFileInfo script(fileName);
    const QDir folder = script.absoluteDir();
    const bool sndMaker = script.suffix().compare(QLatin1String("def"), Qt::CaseInsensitive) == 0;
    // SndMaker's script starts with the name of the SND it makes.
    QString text = sndMaker ? script.completeBaseName() + QLatin1Char('\n') : QString();
    QHash<QString, int> used;
    bool ok = true;
    bool allow = true;
    for (int i : indexes) {
        const QSoundItem *item = m_sounds.at(i);
        // An empty sound has no WAV to write, and a script line without a
        // file would break the import.
        if (item->data) {
            QString name = QStringLiteral("%1-%2").arg(item->group).arg(item->number);
            // Two sounds with one name would overwrite each other's file.
            const int seen = ++used[name];
            if (seen > 1)
                name += QStringLiteral(" (%1)").arg(seen);
            name += QLatin1String(".wav");
            ok = saveWav(i, folder.filePath(name)) && ok;
            if (sndMaker)
                text += QStringLiteral("%1\n%2\n%3\n").arg(name).arg(item->group).arg(item->number);
            else
                text += QStringLiteral("\n[SoundDef]\ngroup = %1\nsample = %2\nfile = %3\n")
                            .arg(item->group)
                            .arg(item->number)
                            .arg(name);
        }
        Q_EMIT progress(uint(i), 0, allow);
        if (!allow)
            break;
    }
    const QByteArray bytes = sndMaker ? text.toLatin1() : text.toUtf8();
    return writeFileAtomically(fileName, bytes) && ok;
}

bool QSounds::importSounds(const QString &fileName, int position)
{
    QFile file(fileName);
    if (!QFileInfo(fileName).isFile() || !file.open(QIODevice::ReadOnly))
        return false;
    const QString folder = QFileInfo(fileName).absolutePath();
    QTextTokenizer tokenizer(QString::fromUtf8(file.readAll()));
    if (position < 0 || position > count())
        position = count();

    const Macro macro(this, QStringLiteral("import"));
    // What couldn't be imported, one line each, told at the end.
    QStringList leftOut;
    int token = tokenizer.next();
    while (token != QTextTokenizer::EndOfText) {
        // Lines are skipped up to a section.
        if (token != QTextTokenizer::OpenBracket) {
            token = nextLine(tokenizer, token);
            continue;
        }
        token = tokenizer.next();
        const bool soundDef = token == QTextTokenizer::Identifier && tokenizer.text() == QLatin1String("SoundDef");
        token = nextLine(tokenizer, token);
        if (!soundDef)
            continue;

        const bool undo = m_undoEnabled;
        m_undoEnabled = false;
        insert(position);
        QString failure = tr("no file is named");
        while (token != QTextTokenizer::EndOfText && token != QTextTokenizer::OpenBracket) {
            if (token != QTextTokenizer::Identifier) {
                token = nextLine(tokenizer, token);
                continue;
            }
            const QString key = tokenizer.text().toLower();
            if (key == QLatin1String("file")) {
                token = tokenizer.next();
                if (token == QTextTokenizer::Equal) {
                    QString name;
                    token = tokenizer.readUntil(name, QLatin1Char('\n'));
                    failure = loadWav(position, findFile(folder, name.trimmed()))
                        ? QString() : QStringLiteral("%1: %2").arg(name.trimmed(), errorString());
                }
                token = nextLine(tokenizer, token);
                continue;
            }
            const bool group = key == QLatin1String("group");
            if (group || key == QLatin1String("number") || key == QLatin1String("sample")) {
                token = tokenizer.next();
                if (token == QTextTokenizer::Equal) {
                    token = tokenizer.next();
                    bool number = false;
                    const int value = tokenizer.toInt(&number);
                    if (token == QTextTokenizer::Integer && number) {
                        const QSubItem item = subItem(position);
                        setSubItem(position, group ? value : item.group, group ? item.index : value);
                    }
                }
            }
            token = nextLine(tokenizer, token);
        }
        // A section whose sound got no data leaves nothing behind.
        const bool filled = m_sounds.at(position)->data != nullptr;
        if (!filled) {
            const QSubItem item = subItem(position);
            leftOut.append(QStringLiteral("%1,%2: %3").arg(item.group).arg(item.index).arg(failure));
            remove(position);
        }
        m_undoEnabled = undo;
        if (filled) {
            if (undo)
                m_undoStack.push(new SoundInsert(this, position));
            ++position;
        }
    }
    if (!leftOut.isEmpty())
        userPrompt->warning(tr("Import sounds"), tr("These sounds couldn't be imported and were left out:\n%1")
                                                     .arg(leftOut.join(QLatin1Char('\n'))));
    return true;
}
