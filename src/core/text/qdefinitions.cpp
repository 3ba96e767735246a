#include "qdefinitions.h"

#include "qsyntaxhierarchy.h"
#include "qtexttokenizer.h"

#include <QFileInfo>
#include <QRegularExpression>
#include <QTextDocument>

QDefinitions::QDefinitions(QProjectOwner *project)
    : QSyntaxTextEditor(project, FileDefinitions, true, DefaultEngineVersion, true)
{
}

void QDefinitions::setType(int type)
{
    if (type == m_type)
        return;
    m_type = type;
    Q_EMIT typeChanged();
}

QString QDefinitions::name() const
{
    return hierarchy()->name();
}

void QDefinitions::setName(const QString &name)
{
    hierarchy()->setName(name);
    Q_EMIT nameChanged(name);
}

bool QDefinitions::load(const QString &fileName, int codepage, bool keepName)
{
    const bool loaded = QSyntaxTextEditor::load(fileName, codepage, keepName);
    m_directory = loaded ? QFileInfo(fileName).absolutePath() : QString();
    return loaded;
}

void QDefinitions::clear()
{
    QSyntaxTextEditor::clear();
    m_directory.clear();
}

QString QDefinitions::discardQuestion() const
{
    return tr("Do you really want to discard the changes made in the definitions?");
}

quint32 packEngineVersion(const QString &text)
{
    // Each part after the second needs its own dot: "1.10" has a part of two
    // digits and is no version at all, not 1.1.0.
    static const QRegularExpression pattern(QStringLiteral("^(\\d)\\.(\\d)(?:\\.(\\d))?(?:\\.(\\d))?$"));
    const QRegularExpressionMatch match = pattern.match(text);
    if (!match.hasMatch())
        return 0;
    quint32 version = 0;
    for (int part = 1; part <= 4; ++part)
        version = version << 8 | quint32(match.captured(part).toUInt());
    return version;
}

void QDefinitions::hierarchyChanged()
{
    const QSyntaxHierarchy *tree = hierarchy();
    // An old "04,14,2001" targets version 0, the oldest engine, on purpose.
    const quint32 version = document()->isEmpty()
        ? DefaultEngineVersion
        : packEngineVersion(tree->findValue(QStringLiteral("mugenversion"), QStringLiteral("info")).trimmed());

    static const QRegularExpression coordinates(QStringLiteral("(\\d*)[^\\d]+(\\d*)"));
    const QRegularExpressionMatch match =
        coordinates.match(tree->findValue(QStringLiteral("localcoord"), QStringLiteral("info")));
    const QSize localcoord = match.hasMatch() ? QSize(match.captured(1).toInt(), match.captured(2).toInt())
                                              : QSize(320, 240);

    static const struct
    {
        const char *section;
        int type;
    } kinds[] = {{"files", Character}, {"bgdef", Stage}, {"scenedef", Storyboard}, {"def", Font}};
    for (const auto &kind : kinds) {
        if (tree->sectionExists(QLatin1String(kind.section))) {
            setType(kind.type);
            break;
        }
    }
    m_localcoord = localcoord;
    if (version != this->version()) {
        setVersion(version);
        Q_EMIT versionChanged();
    }
    Q_EMIT nameChanged(name());
}

namespace {

/** Skips lines up to the next "[", or the end of the text; returns the token there. */
int nextSection(QTextTokenizer &tokenizer, int token)
{
    while (token != QTextTokenizer::EndOfText && token != QTextTokenizer::OpenBracket) {
        if (token != QTextTokenizer::EndOfLine)
            tokenizer.skipLine();
        token = tokenizer.next();
    }
    return token;
}

/** The value of a key line, after its "=": up to the line's end or a ';', trimmed, with "/" for "\". */
QString readValue(QTextTokenizer &tokenizer, int &token)
{
    QString value;
    token = tokenizer.readUntil(value, QLatin1Char('\n'));
    return value.trimmed().replace(QLatin1Char('\\'), QLatin1Char('/'));
}

} // namespace

QDefinitionsFiles QDefinitions::files()
{
    QDefinitionsFiles files;
    files.directory = m_directory;
    const QString text = this->text();
    QTextTokenizer tokenizer(text);
    int token = tokenizer.next();
    if (token == QTextTokenizer::EndOfLine)
        token = tokenizer.next();
    token = nextSection(tokenizer, token);

    while (token == QTextTokenizer::OpenBracket) {
        token = tokenizer.next();
        const QString section = token == QTextTokenizer::Identifier ? tokenizer.text().toLower() : QString();
        const bool known = section == QLatin1String("info") || section == QLatin1String("files")
            || section == QLatin1String("bgdef") || section == QLatin1String("def")
            || (section == QLatin1String("scenedef") && files.sprites.isEmpty());
        if (!known) {
            token = nextSection(tokenizer, token);
            continue;
        }
        token = tokenizer.nextLine(token);

        // Every line up to the next section counts: a line that is no key
        // line, or whose key has no "=", is skipped alone, so a slip in one
        // line never hides the files named below it.
        bool done = false;
        while (!done && token != QTextTokenizer::EndOfText && token != QTextTokenizer::OpenBracket) {
            if (token != QTextTokenizer::Identifier) {
                token = tokenizer.nextLine(token);
                continue;
            }
            const QString key = tokenizer.text().toLower();
            token = tokenizer.next();
            if (token != QTextTokenizer::Equal) {
                token = tokenizer.nextLine(token);
                continue;
            }
            if (section == QLatin1String("files")) {
                if (key == QLatin1String("sprite") || key == QLatin1String("spr")) {
                    files.sprites = readValue(tokenizer, token);
                } else if (key == QLatin1String("anim")) {
                    files.animations = readValue(tokenizer, token);
                } else if (key == QLatin1String("sound")) {
                    files.sounds = readValue(tokenizer, token);
                } else if (key == QLatin1String("cmd")) {
                    files.commands = readValue(tokenizer, token);
                } else if (key.startsWith(QLatin1String("pal"))) {
                    files.palettes.append(readValue(tokenizer, token));
                } else if (key == QLatin1String("cns") || key.startsWith(QLatin1String("st"))) {
                    const QString state = readValue(tokenizer, token);
                    if (!files.states.contains(state))
                        files.states.append(state);
                }
            } else if (section == QLatin1String("info")) {
                if (key == QLatin1String("name")) {
                    token = tokenizer.next();
                    // A quoted name is one token; an unquoted one gives its first word only.
                    hierarchy()->setName(tokenizer.text());
                    done = true;
                }
            } else {
                const bool isSprite = section == QLatin1String("def") ? key == QLatin1String("file")
                                                                      : key == QLatin1String("spr");
                if (isSprite) {
                    QString value = readValue(tokenizer, token);
                    // The engine finds stage sprites from its own root; the
                    // editor from the stage's folder.
                    if (section == QLatin1String("bgdef") && value.startsWith(QLatin1String("stages/"), Qt::CaseInsensitive)
                        && !value.mid(7).contains(QLatin1Char('/')))
                        value = value.mid(7);
                    files.sprites = value;
                    done = true;
                }
            }
            if (!done)
                token = tokenizer.nextLine(token);
        }
        token = nextSection(tokenizer, token);
    }
    return files;
}
