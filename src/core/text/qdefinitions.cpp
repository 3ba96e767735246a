#include "qdefinitions.h"

#include "qsyntaxhierarchy.h"
#include "qtexttokenizer.h"

#include <QFileInfo>
#include <QRegularExpression>
#include <QTextBlock>
#include <QTextCursor>
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
    const bool hadName = !this->fileName().isEmpty();
    const bool loaded = QSyntaxTextEditor::load(fileName, codepage, keepName);
    // A backup read over the project leaves the project where it is: its
    // next backup and its test runs start from the real folder.
    if (!loaded)
        m_directory.clear();
    else if (!keepName || !hadName)
        m_directory = QFileInfo(fileName).absolutePath();
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
    // Content made for Ikemen GO says so with the version of Ikemen GO it needs.
    m_definedTarget = tree->findValue(QStringLiteral("ikemenversion"), QStringLiteral("info")).trimmed().isEmpty()
        ? TargetMugen
        : TargetIkemen;
    applyTarget();
    Q_EMIT nameChanged(name());
}

void QDefinitions::applyTarget()
{
    const int target = m_chosenTarget >= 0 ? m_chosenTarget : m_definedTarget;
    if (target == this->target())
        return;
    setTarget(target);
    Q_EMIT targetChanged();
}

void QDefinitions::chooseTarget(int target, bool inDefinitions)
{
    if (!inDefinitions) {
        m_chosenTarget = target;
        applyTarget();
        return;
    }
    writeTarget(target);
    m_chosenTarget = -1;
    updateHierarchy();
}

namespace {

/** The key of a line "key = value ; comment", lower-cased; empty for any other line. */
QString keyOf(const QString &line)
{
    const QString code = line.section(QLatin1Char(';'), 0, 0);
    const int equal = int(code.indexOf(QLatin1Char('=')));
    return equal < 0 ? QString() : code.left(equal).trimmed().toLower();
}

/** The name of a header line "[Name]", lower-cased; a null text for any other line. */
QString headerOf(const QString &line)
{
    const QString code = line.section(QLatin1Char(';'), 0, 0).trimmed();
    if (!code.startsWith(QLatin1Char('[')))
        return QString();
    return code.mid(1).section(QLatin1Char(']'), 0, 0).trimmed().toLower();
}

} // namespace

void QDefinitions::writeTarget(int target)
{
    const QString key = QStringLiteral("ikemenversion");
    QTextBlock info;
    QTextBlock mugenVersion;
    QList<QTextBlock> lines;
    bool named = false;
    bool inInfo = false;
    for (QTextBlock block = document()->begin(); block.isValid(); block = block.next()) {
        const QString header = headerOf(block.text());
        if (!header.isNull()) {
            inInfo = header == QLatin1String("info");
            if (inInfo && !info.isValid())
                info = block;
        } else if (inInfo && keyOf(block.text()) == key) {
            lines.append(block);
            named = named || !block.text().section(QLatin1Char(';'), 0, 0).section(QLatin1Char('='), 1).trimmed().isEmpty();
        } else if (inInfo && !mugenVersion.isValid() && keyOf(block.text()) == QLatin1String("mugenversion")) {
            mugenVersion = block;
        }
    }
    if (target == TargetIkemen && named)
        return;

    // For M.U.G.E.N. every line goes; for Ikemen GO, lines without a version
    // make way for one that has it.
    QTextCursor cursor(document());
    cursor.beginEditBlock();
    for (int i = int(lines.size()) - 1; i >= 0; --i) {
        const QTextBlock &line = lines.at(i);
        if (line.next().isValid()) {
            cursor.setPosition(line.position());
            cursor.setPosition(line.next().position(), QTextCursor::KeepAnchor);
        } else {
            // The last line takes the line end before it along.
            cursor.setPosition(qMax(0, line.position() - 1));
            cursor.setPosition(line.position() + line.length() - 1, QTextCursor::KeepAnchor);
        }
        cursor.removeSelectedText();
    }
    if (target == TargetIkemen) {
        // Beside mugenversion, where a reader looks for the engine.
        const QTextBlock after = mugenVersion.isValid() ? mugenVersion : info;
        if (after.isValid()) {
            cursor.setPosition(after.position() + after.length() - 1);
            cursor.insertText(QLatin1Char('\n') + key + QStringLiteral(" = 1.0"));
        } else {
            cursor.setPosition(0);
            cursor.insertText(QStringLiteral("[Info]\n") + key + QStringLiteral(" = 1.0\n"));
        }
    }
    cursor.endEditBlock();
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
