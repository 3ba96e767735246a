#include "qmugensyntaxprocessor.h"

#include "../base/qsyntaxformats.h"
#include "qsyntaxhierarchy.h"

#include <QTextDocument>

#include <limits>

namespace {

bool isBlank(QChar c)
{
    return c == QLatin1Char(' ') || c == QLatin1Char('\t') || c == QLatin1Char('\r');
}

bool isDigit(QChar c)
{
    return c >= QLatin1Char('0') && c <= QLatin1Char('9');
}

const QSyntaxFormats &formats()
{
    return syntaxFormats ? *syntaxFormats : QSyntaxFormats::defaults();
}

bool isRelational(int type)
{
    using P = QMugenSyntaxProcessor;
    return type == P::Equal || type == P::NotEqual || type == P::Less || type == P::LessEqual
        || type == P::Greater || type == P::GreaterEqual;
}

bool isParen(int type)
{
    using P = QMugenSyntaxProcessor;
    return type == P::OpenParen || type == P::CloseParen || type == P::OpenBracket || type == P::CloseBracket;
}

bool oneOf(const QString &word, std::initializer_list<const char *> words)
{
    for (const char *w : words) {
        if (word == QLatin1String(w))
            return true;
    }
    return false;
}

/** Whether a line holds nothing but blanks and perhaps a comment. */
bool isBlankOrComment(const QString &text)
{
    for (const QChar c : text) {
        if (c == QLatin1Char(';'))
            return true;
        if (!isBlank(c))
            return false;
    }
    return true;
}

/**
 * A header word without its language prefix: "en.quotes" is "quotes". The
 * prefix is two letters and a dot, and the rest has no dot of its own.
 */
QString withoutLanguage(const QString &word)
{
    if (word.size() > 3 && word.at(2) == QLatin1Char('.') && word.at(0) >= QLatin1Char('a')
        && word.at(0) <= QLatin1Char('z') && word.at(1) >= QLatin1Char('a') && word.at(1) <= QLatin1Char('z')
        && word.indexOf(QLatin1Char('.'), 3) < 0)
        return word.mid(3);
    return word;
}

struct SectionWord
{
    const char *word;
    int state;
    /** Whether the word may carry a language prefix. */
    bool localized;
};

// The headers made of one word that stands alone before "]".
const SectionWord sectionWords[] = {
    {"remap", QMugenSyntaxProcessor::RemapSection, true},
    {"defaults", QMugenSyntaxProcessor::DefaultsSection, true},
    {"command", QMugenSyntaxProcessor::CommandSection, false},
    {"data", QMugenSyntaxProcessor::DataSection, false},
    {"size", QMugenSyntaxProcessor::SizeSection, false},
    {"velocity", QMugenSyntaxProcessor::VelocitySection, false},
    {"movement", QMugenSyntaxProcessor::MovementSection, false},
    {"quotes", QMugenSyntaxProcessor::QuotesSection, true},
    {"info", QMugenSyntaxProcessor::InfoSection, true},
    {"files", QMugenSyntaxProcessor::FilesSection, true},
    {"arcade", QMugenSyntaxProcessor::ArcadeSection, true},
    {"camera", QMugenSyntaxProcessor::CameraSection, false},
    {"playerinfo", QMugenSyntaxProcessor::PlayerInfoSection, false},
    {"bound", QMugenSyntaxProcessor::BoundSection, false},
    {"scaling", QMugenSyntaxProcessor::ScalingSection, false},
    {"stageinfo", QMugenSyntaxProcessor::StageInfoSection, true},
    {"shadow", QMugenSyntaxProcessor::ShadowSection, false},
    {"reflection", QMugenSyntaxProcessor::ReflectionSection, false},
    {"music", QMugenSyntaxProcessor::MusicSection, true},
    {"bgdef", QMugenSyntaxProcessor::BgDefSection, true},
    {"def", QMugenSyntaxProcessor::DefSection, true},
    {"scenedef", QMugenSyntaxProcessor::SceneDefSection, true},
};

/**
 * The background headers. A stage writes [BGdef], [BG name], [BGCtrlDef
 * name] and [BGCtrl name]; a storyboard scene names its background with
 * bg.name, and its headers carry that name instead of "BG": [BG0Def],
 * [BG0 name], [BG0CtrlDef], [BG0Ctrl]. Screen packs do the same with
 * [TitleBGdef] and [TitleBG name]. So any name that ends in "bg" and a
 * number is taken, with the suffixes "def", "ctrldef" and "ctrl".
 */
int backgroundSection(const QString &word)
{
    QStringView base(word);
    int state = QMugenSyntaxProcessor::BgSection;
    if (base.endsWith(QLatin1String("ctrldef"))) {
        base.chop(7);
        state = QMugenSyntaxProcessor::BgCtrlDefSection;
    } else if (base.endsWith(QLatin1String("ctrl"))) {
        base.chop(4);
        state = QMugenSyntaxProcessor::BgCtrlSection;
    } else if (base.endsWith(QLatin1String("def"))) {
        base.chop(3);
        state = QMugenSyntaxProcessor::BgDefSection;
    }
    while (!base.isEmpty() && isDigit(base.back()))
        base.chop(1);
    if (!base.endsWith(QLatin1String("bg")))
        return QMugenSyntaxProcessor::NoSection;
    for (const QChar c : base) {
        if (!(c >= QLatin1Char('a') && c <= QLatin1Char('z')) && !isDigit(c) && c != QLatin1Char('_'))
            return QMugenSyntaxProcessor::NoSection;
    }
    return state;
}

/** The sections whose keys the vocabulary describes: the map and the name that messages give. */
struct DescribedSection
{
    int state;
    QMugenSyntaxProperties::Section section;
    const char *name;
};

const DescribedSection describedSections[] = {
    {QMugenSyntaxProcessor::DataSection, QMugenSyntaxProperties::Data, "Data"},
    {QMugenSyntaxProcessor::SizeSection, QMugenSyntaxProperties::Size, "Size"},
    {QMugenSyntaxProcessor::VelocitySection, QMugenSyntaxProperties::Velocity, "Velocity"},
    {QMugenSyntaxProcessor::MovementSection, QMugenSyntaxProperties::Movement, "Movement"},
    {QMugenSyntaxProcessor::FilesSection, QMugenSyntaxProperties::Files, "Files"},
    {QMugenSyntaxProcessor::ArcadeSection, QMugenSyntaxProperties::Arcade, "Arcade"},
    {QMugenSyntaxProcessor::CameraSection, QMugenSyntaxProperties::Camera, "Camera"},
    {QMugenSyntaxProcessor::PlayerInfoSection, QMugenSyntaxProperties::PlayerInfo, "PlayerInfo"},
    {QMugenSyntaxProcessor::BoundSection, QMugenSyntaxProperties::Bound, "Bound"},
    {QMugenSyntaxProcessor::ScalingSection, QMugenSyntaxProperties::Scaling, "Scaling"},
    {QMugenSyntaxProcessor::StageInfoSection, QMugenSyntaxProperties::StageInfo, "StageInfo"},
    {QMugenSyntaxProcessor::ShadowSection, QMugenSyntaxProperties::Shadow, "Shadow"},
    {QMugenSyntaxProcessor::ReflectionSection, QMugenSyntaxProperties::Reflection, "Reflection"},
    {QMugenSyntaxProcessor::MusicSection, QMugenSyntaxProperties::Music, "Music"},
    {QMugenSyntaxProcessor::BgDefSection, QMugenSyntaxProperties::BgDef, "BGDef"},
    {QMugenSyntaxProcessor::BgCtrlDefSection, QMugenSyntaxProperties::BgControlDef, "BGCtrlDef"},
    {QMugenSyntaxProcessor::FntSection, QMugenSyntaxProperties::Fnt, "FNT v2"},
    {QMugenSyntaxProcessor::SceneDefSection, QMugenSyntaxProperties::SceneDef, "SceneDef"},
    {QMugenSyntaxProcessor::SceneSection, QMugenSyntaxProperties::Scene, "Scene"},
};

/**
 * The sections that only screenpack files have: the screens of system.def,
 * the bars of fight.def, the lists of select.def. Written as in the files,
 * lower-cased and without blanks.
 */
const char *const screenpackSections[] = {
    "titleinfo", "selectinfo", "vsscreen", "demomode", "continuescreen", "gameoverscreen", "victoryscreen",
    "winscreen", "defaultending", "endcredits", "survivalresultsscreen", "optioninfo", "infobox",
    "infoboxtext", "lifebar", "simullifebar", "turnslifebar", "powerbar", "fightfx", "winicon",
    "characters", "extrastages",
};

} // namespace

/**
 * The keys of one description map, found by their lower-cased names; keys
 * written as patterns are tried one by one. `order` is a key's place in the
 * map, since the first key in map order wins.
 */
struct QMugenSyntaxProcessor::KeyIndex
{
    struct Entry
    {
        int order;
        const QSyntaxParam *param;
    };
    QHash<QString, QVector<Entry>> names;
    QVector<Entry> patternEntries;
    QVector<QRegExp> patterns;
};

QMugenSyntaxProcessor::QMugenSyntaxProcessor(QTextDocument *document, quint32 version, bool checking,
                                             const QMugenSyntaxProperties *properties, int target)
    : QSyntaxProcessor(MugenKind, new QMugenSyntaxHierarchy, properties, version, checking, target)
{
    if (properties)
        m_generation = properties->generation();
    attach(document);
    m_passFirst = m_passLast = -1;
    ++m_pass;
    // Connected after the highlighter's own connection, so it runs once the
    // edited lines are highlighted.
    if (document)
        m_settling = connect(document, &QTextDocument::contentsChange, this, &QMugenSyntaxProcessor::settleFolding);
}

QMugenSyntaxProcessor::~QMugenSyntaxProcessor()
{
    // The base lets the document go after this part of the object is gone,
    // and clearing the colours then reports a change of the document.
    disconnect(m_settling);
}

quint32 QMugenSyntaxProcessor::packToken(int type, int start, int length)
{
    return quint32(type & 0x3f) | quint32(qBound(0, start, 0xffff)) << 6 | quint32(qBound(0, length, 0x3ff)) << 22;
}

bool QMugenSyntaxProcessor::isStateBlock(int state)
{
    return state == StateSection || (state >= UnknownType && state < FirstBgController);
}

bool QMugenSyntaxProcessor::readsAsScreenpack(const QString &text)
{
    const int size = int(text.size());
    for (int i = 0; i < size;) {
        while (i < size && isBlank(text.at(i)))
            ++i;
        if (i < size && text.at(i) == QLatin1Char('[')) {
            // The header's words, lower-cased and joined, up to "]".
            QString name;
            for (++i; i < size && name.size() < 32; ++i) {
                const QChar c = text.at(i);
                if (c == QLatin1Char(']') || c == QLatin1Char(';') || c == QLatin1Char('\n'))
                    break;
                if (!isBlank(c))
                    name += c.toLower();
            }
            const QString bare = withoutLanguage(name);
            for (const char *section : screenpackSections) {
                if (bare == QLatin1String(section))
                    return true;
            }
        }
        const int end = int(text.indexOf(QLatin1Char('\n'), i));
        if (end < 0)
            break;
        i = end + 1;
    }
    return false;
}

void QMugenSyntaxProcessor::setScreenpack(bool screenpack)
{
    if (screenpack == m_screenpack)
        return;
    m_screenpack = screenpack;
    rehighlightAll();
}

void QMugenSyntaxProcessor::rehighlightAll()
{
    QSyntaxProcessor::rehighlightAll();
    // A whole pass leaves every fold level right.
    m_passFirst = m_passLast = -1;
    ++m_pass;
}

const QMugenSyntaxProperties *QMugenSyntaxProcessor::vocabulary() const
{
    return static_cast<const QMugenSyntaxProperties *>(properties());
}

// --- One line ----------------------------------------------------------

void QMugenSyntaxProcessor::highlightBlock(const QString &text)
{
    const QMugenSyntaxProperties *words = vocabulary();
    if (words && words->generation() != m_generation) {
        // The vocabulary was read again: what the lookups point at is gone.
        m_generation = words->generation();
        m_keyIndexes.clear();
        m_valuePatterns.clear();
        for (int i = 0; i < 4; ++i) {
            m_controllerNames[i].clear();
            m_controllerNamesBuilt[i] = false;
        }
    }

    const QTextBlock block = currentBlock();
    const int number = block.blockNumber();
    m_passFirst = m_passFirst < 0 ? number : qMin(m_passFirst, number);
    m_passLast = qMax(m_passLast, number);

    QTextEditorBlockData *data = QTextEditorBlockData::of(block, true);
    const int previous = qMax(previousBlockState(), 0);
    m_issues.clear();
    m_parens.clear();
    m_state = NoSection;
    bool header = false;

    if (!text.isEmpty()) {
        m_text = text.constData();
        m_textLength = int(text.size());
        m_pos = 0;
        m_token = packToken(EndOfLine, 0, 0);
        m_tokenStartPos = m_tokenEnd = m_lastEnd = 0;
        m_inExpression = false;
        m_splitDigits = true;
        m_depth = 0;
        m_abandoned = false;
        m_toldIkemen = false;
        next();
        if (type() == EndOfLine && !(atOpenString() && previous >= UnknownSection)) {
            // Blanks and comments: the line keeps the section it is in.
        } else if (type() == OpenBracket) {
            header = true;
            readHeader();
        } else if (type() == Identifier && is("type") && previous != StateDefSection && previous < UnknownSection) {
            readType(previous);
        } else {
            readLine(previous);
        }
        if (type() != EndOfLine) {
            const int from = m_tokenStartPos;
            skipRest();
            errorAt(-1, tr("Syntax error - code ends before line"), from, m_lastEnd - from);
        }
        m_text = nullptr;
        m_textLength = 0;
    }

    // Underlines over the colours; errors last, so that they show where
    // diagnostics overlap.
    for (int severity = 2; severity >= 0; --severity) {
        static const QColor colors[] = {QColor(Qt::red), QColor(255, 127, 0), QColor(255, 255, 0)};
        for (const QSyntaxIssue &issue : std::as_const(m_issues)) {
            if (issue.severity != severity)
                continue;
            const int to = qMin(issue.end, int(text.size()));
            for (int i = qMax(issue.start, 0); i < to;) {
                QTextCharFormat run = QSyntaxHighlighter::format(i);
                int j = i + 1;
                while (j < to && QSyntaxHighlighter::format(j) == run)
                    ++j;
                run.setUnderlineStyle(QTextCharFormat::SpellCheckUnderline);
                run.setUnderlineColor(colors[severity]);
                setFormat(i, j - i, run);
                i = j;
            }
        }
    }
    data->issues.swap(m_issues);
    data->parens.swap(m_parens);

    // A line that opens no section of its own stays in the one before.
    if (m_state == NoSection)
        m_state = previous;
    setCurrentBlockState(m_state);

    data->isHeader = header;
    bool nextIsState = false;
    data->beforeHeader = scanAhead(block, &nextIsState);
    data->foldLevel = foldLevelOf(block, data, nextIsState);
}

// --- Tokens ------------------------------------------------------------

int QMugenSyntaxProcessor::next()
{
    if (type() != EndOfLine)
        m_lastEnd = m_tokenEnd;
    m_bufferLength = 0;
    const bool splitDigits = m_splitDigits;
    m_splitDigits = true;

    auto take = [this](QChar c) {
        if (m_bufferLength < int(sizeof(m_buffer) / sizeof(m_buffer[0])))
            m_buffer[m_bufferLength++] = c;
    };
    auto token = [this](int type, int from) {
        m_tokenStartPos = from;
        m_tokenEnd = m_pos;
        m_token = packToken(type, from, m_pos - from);
        if (isParen(type))
            m_parens.append({type == CloseParen || type == CloseBracket ? 1 : 0, m_text[from], from});
        return type;
    };

    while (m_pos < m_textLength && isBlank(m_text[m_pos]))
        ++m_pos;
    const int from = m_pos;
    if (m_pos >= m_textLength)
        return token(EndOfLine, from);

    const QChar c = m_text[m_pos];
    const QChar after = m_pos + 1 < m_textLength ? m_text[m_pos + 1] : QChar();
    if (c == QLatin1Char(';')) {
        applyFormat(QSyntaxFormats::Comment, m_pos, m_textLength - m_pos);
        m_pos = m_textLength;
        m_tokenStartPos = m_tokenEnd = from;
        m_token = packToken(EndOfLine, from, 0);
        return EndOfLine;
    }

    // Outside an expression a minus before a digit belongs to the number.
    const bool negative = c == QLatin1Char('-') && !m_inExpression
        && (isDigit(after) || (after == QLatin1Char('.') && m_pos + 2 < m_textLength && isDigit(m_text[m_pos + 2])));
    if (isDigit(c) || negative || (c == QLatin1Char('.') && isDigit(after))) {
        if (negative)
            take(m_text[m_pos++]);
        bool isFloat = false;
        while (m_pos < m_textLength) {
            const QChar d = m_text[m_pos];
            if (d == QLatin1Char('.') && !isFloat)
                isFloat = true;
            else if (!isDigit(d))
                break;
            take(d);
            ++m_pos;
        }
        return token(isFloat ? Float : Integer, from);
    }

    if (c.isLetter()) {
        take(c);
        ++m_pos;
        while (m_pos < m_textLength) {
            const QChar d = m_text[m_pos];
            if (isDigit(d)) {
                if (!splitDigits)
                    break;
            } else if (!d.isLetter() && d != QLatin1Char('_') && d != QLatin1Char('.')) {
                break;
            }
            take(d);
            ++m_pos;
        }
        return token(Identifier, from);
    }

    if (c == QLatin1Char('"')) {
        ++m_pos;
        while (m_pos < m_textLength && m_text[m_pos] != QLatin1Char('"')) {
            if (m_text[m_pos] == QLatin1Char('\\') && m_pos + 1 < m_textLength)
                take(m_text[m_pos++]);
            take(m_text[m_pos++]);
        }
        if (m_pos >= m_textLength) {
            // A string that meets the end of the line ends the line.
            m_lastEnd = m_textLength;
            return token(EndOfLine, from);
        }
        ++m_pos;
        return token(String, from);
    }

    take(c);
    ++m_pos;
    auto pair = [&](QChar second, int doubled, int single) {
        if (after == second) {
            take(after);
            ++m_pos;
            return token(doubled, from);
        }
        return token(single, from);
    };
    switch (c.unicode()) {
    case '+': return token(Plus, from);
    case '-': return token(Minus, from);
    case '/': return token(Slash, from);
    case '%': return token(Percent, from);
    case '*': return pair(QLatin1Char('*'), StarStar, Star);
    case '&': return pair(QLatin1Char('&'), AmpAmp, Amp);
    case '|': return pair(QLatin1Char('|'), BarBar, Bar);
    case '^': return pair(QLatin1Char('^'), CaretCaret, Caret);
    case '=': return token(Equal, from);
    case '<': return pair(QLatin1Char('='), LessEqual, Less);
    case '>': return pair(QLatin1Char('='), GreaterEqual, Greater);
    case '!': return pair(QLatin1Char('='), NotEqual, Not);
    case ',': return token(Comma, from);
    case '(': return token(OpenParen, from);
    case ')': return token(CloseParen, from);
    case '{': return token(OpenBrace, from);
    case '}': return token(CloseBrace, from);
    case '[': return token(OpenBracket, from);
    case ']': return token(CloseBracket, from);
    case ':': return token(Colon, from);
    case '~': return token(Tilde, from);
    case '$': return token(Dollar, from);
    }
    return token(OtherChar, from);
}

bool QMugenSyntaxProcessor::is(const char *lowerWord) const
{
    if (type() != Identifier)
        return false;
    int i = 0;
    for (; lowerWord[i]; ++i) {
        if (i >= m_bufferLength || m_buffer[i].toLower() != QLatin1Char(lowerWord[i]))
            return false;
    }
    return i == m_bufferLength;
}

bool QMugenSyntaxProcessor::isTriggerKey() const
{
    if (type() != Identifier || m_bufferLength < 8)
        return false;
    static const char prefix[] = "trigger";
    for (int i = 0; i < 7; ++i) {
        if (m_buffer[i].toLower() != QLatin1Char(prefix[i]))
            return false;
    }
    if (is("triggerall"))
        return true;
    for (int i = 7; i < m_bufferLength; ++i) {
        if (!isDigit(m_buffer[i]))
            return false;
    }
    return true;
}

bool QMugenSyntaxProcessor::atLastToken() const
{
    int i = m_pos;
    while (i < m_textLength && isBlank(m_text[i]))
        ++i;
    return i >= m_textLength || m_text[i] == QLatin1Char(';');
}

bool QMugenSyntaxProcessor::atOpenString() const
{
    // The tokenizer ends the line at a string that isn't closed, where the string starts.
    return type() == EndOfLine && m_tokenStartPos < m_textLength && m_text[m_tokenStartPos] == QLatin1Char('"');
}

QMugenSyntaxProcessor::Mark QMugenSyntaxProcessor::mark() const
{
    return {m_tokenStartPos, int(m_parens.size()) - (isParen(type()) ? 1 : 0), int(m_issues.size()), m_lastEnd,
            m_inExpression};
}

void QMugenSyntaxProcessor::restore(const Mark &mark)
{
    m_pos = mark.position;
    m_parens.resize(mark.parens);
    m_issues.resize(mark.issues);
    m_inExpression = mark.inExpression;
    m_splitDigits = true;
    m_token = packToken(EndOfLine, 0, 0);
    next();
    m_lastEnd = mark.lastEnd;
}

void QMugenSyntaxProcessor::skipRest()
{
    while (type() != EndOfLine)
        next();
}

void QMugenSyntaxProcessor::applyFormat(int formatIndex, int start, int length)
{
    if (formatIndex >= 0 && length > 0)
        setFormat(start, length, formats().format(formatIndex));
}

// --- Diagnostics ---------------------------------------------------------

void QMugenSyntaxProcessor::addIssue(int severity, int formatIndex, const QString &text, int start, int length)
{
    applyFormat(formatIndex, start, length);
    // Without checking, the colours stay and the errors go.
    if ((severity == 0 && !isChecking()) || m_abandoned)
        return;
    m_issues.append({severity, start, start + qMax(length, 0), text});
}

void QMugenSyntaxProcessor::error(int formatIndex, const QString &text)
{
    addIssue(0, formatIndex, text, m_tokenStartPos, m_tokenEnd - m_tokenStartPos);
}

void QMugenSyntaxProcessor::errorAt(int formatIndex, const QString &text, int start, int length)
{
    addIssue(0, formatIndex, text, start, length);
}

void QMugenSyntaxProcessor::warningAt(int formatIndex, const QString &text, int start, int length)
{
    addIssue(1, formatIndex, text, start, length);
}

void QMugenSyntaxProcessor::noticeAt(int formatIndex, const QString &text, int start, int length)
{
    addIssue(2, formatIndex, text, start, length);
}

quint32 QMugenSyntaxProcessor::validVersion() const
{
    // Ikemen GO reads all that M.U.G.E.N. 1.1 reads, whatever version the
    // content names; what is deprecated goes by the content's version still.
    return target() == TargetIkemen ? qMax(version(), DefaultEngineVersion) : version();
}

void QMugenSyntaxProcessor::tellIkemenOnly(int start, int length)
{
    // Once a line: what an Ikemen GO controller holds was told with its type.
    if (target() == TargetIkemen || m_toldIkemen)
        return;
    m_toldIkemen = true;
    warningAt(-1, tr("%1 is only valid in Ikemen GO").arg(QString(m_text + start, length)), start, length);
}

bool QMugenSyntaxProcessor::expect(int type, int formatIndex)
{
    if (this->type() == type) {
        formatToken(formatIndex);
        next();
        return true;
    }
    error(-1, tr("Unexpected token '%1'").arg(tokenText()));
    if (this->type() != EndOfLine)
        next();
    return false;
}

void QMugenSyntaxProcessor::beginValue()
{
    m_valueStart = m_tokenStartPos;
    m_valueIssues = int(m_issues.size());
}

void QMugenSyntaxProcessor::valueWants(int count)
{
    skipRest();
    m_issues.resize(qMin(m_valueIssues, int(m_issues.size())));
    noticeAt(-1, tr("This parameter requires %n value(s)", nullptr, count), m_valueStart,
             qMax(0, m_lastEnd - m_valueStart));
}

// --- Headers and type lines ----------------------------------------------

void QMugenSyntaxProcessor::readHeader()
{
    const int headerStart = m_tokenStartPos;
    next();
    int state = NoSection;
    const QSyntaxParam *group = nullptr;
    // Whether anything may stand between the header's words and its "]".
    bool skipToBracket = false;

    if (type() == Identifier) {
        const QString name = word();
        const QString bare = withoutLanguage(name);
        const int nameStart = m_tokenStartPos;
        if (name == QLatin1String("statedef")) {
            next();
            if (type() == Integer) {
                state = StateDefSection;
                next();
                if (type() == Comma) {
                    skipToBracket = true;
                } else if (type() != CloseBracket) {
                    error(-1, tr("Wrong StateDef"));
                    skipToBracket = true;
                }
            }
        } else if (name == QLatin1String("state")
                   || (name.startsWith(QLatin1String("state")) && isDigit(name.at(5)))) {
            // [State200] is one word to the tokenizer: the blank is missing.
            state = StateSection;
            const bool blank = nameStart + 5 < m_textLength && isBlank(m_text[nameStart + 5]);
            next();
            while (type() != CloseBracket && type() != EndOfLine)
                next();
            if (type() != CloseBracket)
                errorAt(-1, tr("Wrong State"), headerStart, m_lastEnd - headerStart);
            else if (!blank)
                error(-1, tr("Space required after State"));
        } else if (name == QLatin1String("begin")) {
            next();
            if (is("action")) {
                next();
                if (type() == Integer) {
                    state = ActionSection;
                    next();
                }
            }
        } else if (name == QLatin1String("palette")) {
            next();
            if (is("keymap")) {
                state = KeymapSection;
                next();
            }
        } else if (bare == QLatin1String("fnt")) {
            next();
            if (is("v2")) {
                state = FntSection;
                next();
            }
        } else if (name == QLatin1String("scene")) {
            state = SceneSection;
            next();
            if (type() != CloseBracket && type() != EndOfLine)
                next();
        } else {
            for (const SectionWord &section : sectionWords) {
                if ((section.localized ? bare : name) == QLatin1String(section.word)) {
                    state = section.state;
                    break;
                }
            }
            if (state == NoSection) {
                state = backgroundSection(name);
                skipToBracket = state != NoSection;
            }
            if (state == NoSection && vocabulary()) {
                // A section of the content's own names, such as [Map].
                const auto found = vocabulary()->groups().constFind(bare);
                if (found != vocabulary()->groups().cend()) {
                    group = &found.value();
                    state = UnknownSection;
                    skipToBracket = true;
                }
            }
            if (state != NoSection)
                next();
        }
    }

    if (state == NoSection && m_screenpack && type() == Identifier) {
        // The free text and the lists of a screenpack.
        const QString bare = withoutLanguage(word());
        next();
        if (bare == QLatin1String("infobox") && is("text")) {
            state = TextSection;
            next();
        } else if (bare == QLatin1String("characters") || bare == QLatin1String("extrastages")) {
            state = ListSection;
        }
    }
    if (state == NoSection)
        skipToBracket = true;
    if (skipToBracket) {
        while (type() != CloseBracket && type() != EndOfLine)
            next();
    }
    int headerEnd = m_lastEnd;
    if (type() == CloseBracket) {
        headerEnd = m_tokenEnd;
        next();
    }
    applyFormat(QSyntaxFormats::Block, headerStart, headerEnd - headerStart);
    if (group && group->ikemenOnly)
        tellIkemenOnly(headerStart, headerEnd - headerStart);
    if (state == NoSection) {
        // Screenpacks have many sections the vocabulary doesn't describe.
        if (!m_screenpack)
            errorAt(-1, tr("Invalid group"), headerStart, headerEnd - headerStart);
        state = UnknownSection;
    }
    m_state = state;
}

void QMugenSyntaxProcessor::readType(int previous)
{
    if (!readKey()) {
        m_state = UnknownType;
        return;
    }

    int list = -1;
    int first = 0;
    int last = 0;
    QString failure;
    switch (previous) {
    case BgSection:
        list = 1;
        first = FirstBgController;
        last = FirstBgControl;
        failure = tr("Unknown 'BG' type");
        break;
    case BgCtrlSection:
        list = 2;
        first = FirstBgControl;
        last = FirstFontDef;
        failure = tr("Unknown 'BG Ctrl' type");
        break;
    case DefSection:
        list = 3;
        first = FirstFontDef;
        last = UnknownSection;
        failure = tr("Unknown 'Def' type");
        break;
    default:
        // Only a [State] names a state controller; a type line anywhere else,
        // a second one in a controller included, is an unknown state type.
        list = previous == StateSection ? 0 : -1;
        first = FirstStateController;
        last = FirstBgController;
        failure = tr("Unknown 'State' type");
        break;
    }

    formatToken(QSyntaxFormats::Controller);
    const int index = list >= 0 && type() == Identifier ? controllerIndex(list, word()) : -1;
    // A vocabulary with more controllers than the states can number has
    // the rest unknown rather than mistaken for another section.
    if (index < 0 || first + index >= last) {
        error(-1, failure);
        m_state = UnknownType;
        next();
        return;
    }
    m_state = first + index;
    if (controllerOf(m_state)->ikemenOnly)
        tellIkemenOnly(m_tokenStartPos, m_tokenEnd - m_tokenStartPos);
    if (list == 0) {
        const QSyntaxController *controller = vocabulary()->stateControllers().at(index);
        if (validVersion() < controller->minVersion)
            error(-1, tr("Controller invalid for the M.U.G.E.N. version of the current project"));
        else if (!controller->deprecatedText.isEmpty() && controller->deprecatedVersion <= version())
            addIssue(1, -1, tr("State controller deprecated in the M.U.G.E.N %1").arg(controller->deprecatedText),
                     m_tokenStartPos, m_tokenEnd - m_tokenStartPos);
    }
    next();
}

// --- Lines of a section --------------------------------------------------

void QMugenSyntaxProcessor::readLine(int previous)
{
    switch (previous) {
    case NoSection:
    case BgCtrlSection:
    case DefSection:
        // Nothing is expected before a section, nor before the type line
        // of a background controller or a font definition.
        return;
    case StateSection:
    case BgSection:
    case UnknownType:
        if (isTriggerKey())
            readTriggerLine();
        else
            skipRest();
        return;
    case RemapSection:
        readRemap();
        return;
    case DefaultsSection:
        readDefaults();
        return;
    case CommandSection:
        readCommand();
        return;
    case StateDefSection:
        readStateDef();
        return;
    case QuotesSection:
        readQuotes();
        return;
    case ActionSection:
        readAction();
        return;
    case InfoSection:
        readInfo();
        return;
    case KeymapSection:
        readKeymap();
        return;
    case UnknownSection:
        readFormLine();
        return;
    case TextSection:
        skipRest();
        return;
    case ListSection:
        readFormItems();
        return;
    default:
        break;
    }

    for (const DescribedSection &section : describedSections) {
        if (section.state == previous) {
            static const QMap<QString, QSyntaxParam> none;
            const QMugenSyntaxProperties *words = vocabulary();
            checkParam(words ? words->section(section.section) : none, QLatin1String(section.name));
            return;
        }
    }

    const QSyntaxController *controller = controllerOf(previous);
    if (!controller) {
        skipRest();
        return;
    }
    // A controller only Ikemen GO knows was told of on its type line.
    m_toldIkemen = controller->ikemenOnly;
    if (previous < FirstBgController) {
        if (is("ignorehitpause") || is("persistent") || isTriggerKey())
            readTriggerLine();
        else if (controller->name.compare(QLatin1String("null"), Qt::CaseInsensitive) == 0)
            skipRest();
        else
            checkParam(controller->params, controller->name,
                       &vocabulary()->section(QMugenSyntaxProperties::StateCommon));
    } else if (previous > FirstBgControl && previous < FirstFontDef && (is("time") || is("ctrlid"))) {
        if (!readKey())
            return;
        readIntegers();
    } else {
        checkParam(controller->params, controller->name);
    }
}

void QMugenSyntaxProcessor::readTriggerLine()
{
    if (readKey())
        expression();
}

bool QMugenSyntaxProcessor::readKnownKey(bool known, const QString &failure)
{
    if (!known) {
        error(-1, failure);
        skipRest();
        return false;
    }
    return readKey();
}

bool QMugenSyntaxProcessor::readKey()
{
    formatToken(QSyntaxFormats::Keyword);
    next();
    // A key alone on its line is told once, not once more for its value.
    return expect(Equal, -1) || type() != EndOfLine;
}

void QMugenSyntaxProcessor::readIntegers()
{
    readInteger();
    readMore(std::numeric_limits<int>::max(), [this] { readInteger(); });
}

namespace {
const std::initializer_list<const char *> buttons = {"x", "y", "z", "a", "b", "c", "s"};
}

void QMugenSyntaxProcessor::readRemap()
{
    if (!readKnownKey(type() == Identifier && oneOf(word(), buttons), tr("Unknown 'Remap' parameter")))
        return;
    if (type() == Identifier && oneOf(word(), buttons)) {
        formatToken(QSyntaxFormats::Value);
    } else {
        error(-1, tr("Unknown 'Remap' value"));
    }
    if (type() != EndOfLine)
        next();
}

void QMugenSyntaxProcessor::readDefaults()
{
    if (!readKnownKey(is("command.time") || is("command.buffer.time"), tr("Unknown 'Defaults' parameter")))
        return;
    expect(Integer, QSyntaxFormats::Number);
}

void QMugenSyntaxProcessor::readCommand()
{
    if (is("name")) {
        if (!readKey())
            return;
        expect(String, QSyntaxFormats::String);
    } else if (is("command")) {
        if (!readKey())
            return;
        for (;;) {
            const int itemStart = m_tokenStartPos;
            if (!readCommandItem()) {
                while (type() != Comma && type() != EndOfLine)
                    next();
                errorAt(-1, tr("Unknown command key"), itemStart, qMax(itemStart, m_lastEnd) - itemStart);
            }
            if (type() != Comma)
                break;
            next();
        }
    } else if (is("time") || is("buffer.time")) {
        if (!readKey())
            return;
        expect(Integer, QSyntaxFormats::Number);
    } else {
        error(-1, tr("Unknown 'Command' parameter"));
        skipRest();
    }
}

bool QMugenSyntaxProcessor::readCommandItem()
{
    // Modifiers, each at most once: / hold, $ any of the directions near,
    // > nothing else pressed in between, ~ release (after an optional time).
    bool hold = false;
    bool near = false;
    bool strict = false;
    bool release = false;
    for (;;) {
        if (type() == Slash && !hold) {
            hold = true;
        } else if (type() == Dollar && !near) {
            near = true;
        } else if (type() == Greater && !strict) {
            strict = true;
        } else if (type() == Tilde && !release) {
            release = true;
            next();
            if (type() == Integer) {
                formatToken(QSyntaxFormats::Number);
                next();
            }
            continue;
        } else {
            break;
        }
        next();
    }
    static const std::initializer_list<const char *> directions = {"u", "d", "b", "f", "ub", "uf", "db", "df"};
    for (;;) {
        if (type() != Identifier)
            return false;
        const QString key = word();
        // "$" reads directions only.
        if (!oneOf(key, directions) && (near || !oneOf(key, buttons)))
            return false;
        formatToken(QSyntaxFormats::Value);
        next();
        if (type() != Plus)
            break;
        next();
    }
    return type() == Comma || type() == EndOfLine;
}

void QMugenSyntaxProcessor::readStateDef()
{
    if (type() != Identifier) {
        error(-1, tr("Unknown 'StateDef' parameter '%1'").arg(tokenText()));
        skipRest();
        return;
    }
    const QString key = word();
    struct Choice
    {
        const char *key;
        std::initializer_list<const char *> values;
        const char *failure;
    };
    static const Choice choices[] = {
        {"type", {"s", "c", "a", "l", "u"}, QT_TR_NOOP("Unknown 'StateDef type' value '%1'")},
        {"movetype", {"a", "i", "h", "u"}, QT_TR_NOOP("Unknown 'StateDef movetype' value '%1'")},
        {"physics", {"s", "c", "a", "n", "u"}, QT_TR_NOOP("Unknown 'StateDef physics' value '%1'")},
    };
    for (const Choice &choice : choices) {
        if (key != QLatin1String(choice.key))
            continue;
        if (!readKey())
            return;
        if (type() == Identifier && oneOf(word(), choice.values))
            formatToken(QSyntaxFormats::Value);
        else
            error(-1, tr(choice.failure).arg(tokenText()));
        if (type() != EndOfLine)
            next();
        return;
    }
    if (key == QLatin1String("velset")) {
        // Like every number of a [Statedef], the velocities may be computed.
        if (!readKey())
            return;
        expression();
        readMore(std::numeric_limits<int>::max(), [this] { expression(); });
    } else if (oneOf(key, {"anim", "ctrl", "poweradd", "juggle", "facep2", "hitdefpersist", "movehitpersist",
                           "hitcountpersist", "sprpriority"})) {
        if (!readKey())
            return;
        expression();
    } else {
        error(-1, tr("Unknown 'StateDef' parameter '%1'").arg(tokenText()));
        skipRest();
    }
}

void QMugenSyntaxProcessor::readQuotes()
{
    static const QRegExp victory(QStringLiteral("victory\\d{1,2}"));
    if (!readKnownKey(type() == Identifier && victory.exactMatch(word()), tr("Unknown 'Quotes' parameter")))
        return;
    expect(String, QSyntaxFormats::String);
}

void QMugenSyntaxProcessor::readInfo()
{
    const QString key = type() == Identifier ? word() : QString();
    const bool text = oneOf(key, {"name", "displayname", "author"});
    const bool known = text || oneOf(key, {"localcoord", "versiondate", "pal.defaults", "mugenversion"});
    // The keys beyond these, of Ikemen GO's characters and stages, are described.
    const QMugenSyntaxProperties *words = vocabulary();
    if (!known && words && !key.isEmpty() && !m_screenpack) {
        const QMap<QString, QSyntaxParam> &described = words->section(QMugenSyntaxProperties::Info);
        if (matchKey(described, key, nullptr)) {
            checkParam(described, QStringLiteral("Info"));
            return;
        }
    }
    if (!known && m_screenpack) {
        readFormLine();
        return;
    }
    if (!readKnownKey(known, tr("Unknown 'Info'' parameter")))
        return;
    beginValue();
    if (text) {
        expect(String, QSyntaxFormats::String);
    } else if (key == QLatin1String("localcoord")) {
        readItems(2, 2, [this] { readInteger(); });
    } else if (key == QLatin1String("versiondate")) {
        // Day, month and year, written with commas or slashes.
        expect(Integer, QSyntaxFormats::Number);
        for (int i = 0; i < 2; ++i) {
            if (type() != Comma && type() != Slash) {
                valueWants(3);
                return;
            }
            next();
            expect(Integer, QSyntaxFormats::Number);
        }
    } else if (key == QLatin1String("mugenversion") && type() == Float) {
        formatToken(QSyntaxFormats::Number);
        next();
    } else {
        readIntegers();
    }
}

void QMugenSyntaxProcessor::readKeymap()
{
    static const std::initializer_list<const char *> keys = {"x", "y", "z", "a", "b", "c", "x2", "y2",
                                                            "z2", "a2", "b2", "c2", "s"};
    if (!readKnownKey(type() == Identifier && oneOf(word(), keys), tr("Unknown 'Palette Keymap' parameter")))
        return;
    // The palette that the button selects: kfm.def gives "x = 1".
    expect(Integer, QSyntaxFormats::Number);
}

void QMugenSyntaxProcessor::readAction()
{
    if (type() == Integer) {
        // group, image, x, y, time, flip, blending, x scale, y scale, angle;
        // any field after the time may be left empty.
        formatToken(QSyntaxFormats::Number);
        beginValue();
        next();
        int field = 1;
        while (type() == Comma && field < 10) {
            next();
            ++field;
            if (type() == Comma || type() == EndOfLine)
                continue;
            if (field == 6) {
                if (type() == Identifier && oneOf(word(), {"h", "v", "hv", "vh"}))
                    formatToken(QSyntaxFormats::Value);
                else
                    error(-1, tr("Unknown flip type"));
                next();
            } else if (field == 7) {
                static const QRegExp alpha(QStringLiteral("as\\d{1,3}d\\d{1,3}"));
                if (type() == Identifier && (oneOf(word(), {"a", "a1", "s"}) || alpha.exactMatch(word())))
                    formatToken(QSyntaxFormats::Value);
                else
                    error(-1, tr("Unknown transparency"));
                next();
            } else {
                readNumber();
            }
        }
        if (field < 5)
            valueWants(5);
        return;
    }
    if (type() != Identifier)
        return;
    const QString key = word();
    if (oneOf(key, {"clsn1default", "clsn2default", "clsn1", "clsn2"})) {
        formatToken(QSyntaxFormats::Keyword);
        next();
        if (type() == OpenBracket) {
            next();
            expect(Integer, QSyntaxFormats::Number);
            expect(CloseBracket, -1);
            expect(Equal, -1);
            beginValue();
            readItems(4, 4, [this] { readInteger(); });
        } else {
            expect(Colon, -1);
            expect(Integer, QSyntaxFormats::Number);
        }
    } else if (key == QLatin1String("loopstart")) {
        formatToken(QSyntaxFormats::Keyword);
        next();
    } else if (key == QLatin1String("interpolate")) {
        formatToken(QSyntaxFormats::Keyword);
        next();
        if (type() == Identifier && oneOf(word(), {"offset", "blend", "scale", "angle"}))
            formatToken(QSyntaxFormats::Value);
        else
            error(-1, tr("Unknown interpolation"));
        if (type() != EndOfLine)
            next();
    }
}

void QMugenSyntaxProcessor::readFormLine()
{
    if (atOpenString()) {
        readFormItems();
        return;
    }
    if (type() != Identifier) {
        error(-1, tr("Unexpected token '%1'").arg(tokenText()));
        skipRest();
        return;
    }
    const int keyStart = m_tokenStartPos;
    next();
    readFormRest(keyStart);
}

void QMugenSyntaxProcessor::readFormRest(int keyStart)
{
    // What is glued to the key's first word belongs to it: "cell.*-0.scale".
    while (type() != EndOfLine && type() != Equal && type() != Comma && type() != String
           && m_tokenStartPos == m_lastEnd)
        next();
    applyFormat(QSyntaxFormats::Keyword, keyStart, m_lastEnd - keyStart);
    if (type() != Equal) {
        error(-1, tr("Unexpected token '%1'").arg(tokenText()));
        skipRest();
        return;
    }
    next();
    readFormItems();
}

void QMugenSyntaxProcessor::readFormItems()
{
    for (;;) {
        readFormItem();
        if (type() != Comma)
            break;
        next();
    }
    if (atOpenString())
        errorAt(-1, tr("Unterminated string"), m_tokenStartPos, m_textLength - m_tokenStartPos);
}

void QMugenSyntaxProcessor::readFormItem()
{
    const int start = m_tokenStartPos;
    const auto toComma = [this] {
        while (type() != Comma && type() != EndOfLine)
            next();
    };
    // "+100" is 100 to the engine, as to the C library.
    const bool plus = type() == Plus && m_tokenEnd < m_textLength && isDigit(m_text[m_tokenEnd]);
    if (plus)
        next();
    if (type() == String || type() == Integer || type() == Float) {
        const int format = type() == String ? QSyntaxFormats::String : QSyntaxFormats::Number;
        next();
        if (type() != Comma && type() != EndOfLine && m_tokenStartPos == m_lastEnd && format != QSyntaxFormats::String) {
            // A word that starts with digits: "1P", "3x5.fnt".
            toComma();
            applyFormat(QSyntaxFormats::Value, start, m_lastEnd - start);
            return;
        }
        applyFormat(format, start, m_lastEnd - start);
        // A number or a string stands alone in its item: "159 158" misses a comma.
        if (type() != Comma && type() != EndOfLine) {
            error(-1, tr("Unexpected token '%1'").arg(tokenText()));
            toComma();
        }
        return;
    }
    toComma();
    applyFormat(QSyntaxFormats::Value, start, m_lastEnd - start);
}

// --- Parameters and values -------------------------------------------------

void QMugenSyntaxProcessor::checkParam(const QMap<QString, QSyntaxParam> &map, const QString &sectionName,
                                       const QMap<QString, QSyntaxParam> *common)
{
    const QString written = tokenText();
    const QString key = type() == Identifier ? word() : QString();
    const int keyStart = m_tokenStartPos;
    const int keyLength = m_tokenEnd - m_tokenStartPos;
    const int issues = int(m_issues.size());
    next();

    int keyEnd = -1;
    const QSyntaxParam *param = key.isEmpty() ? nullptr : matchKey(map, key, &keyEnd);
    if (!param && common && !key.isEmpty() && m_issues.size() == issues)
        param = matchKey(*common, key, &keyEnd);
    // What Ikemen GO adds to characters and stages isn't a screenpack's:
    // there, such a key is one the vocabulary doesn't describe.
    if (param && param->ikemenOnly && m_screenpack)
        param = nullptr;
    if (!param && m_screenpack && !key.isEmpty()) {
        // A screenpack key the vocabulary doesn't describe: its form is all.
        readFormRest(keyStart);
        return;
    }
    if (!param || m_issues.size() > issues) {
        errorAt(-1, tr("Unknown parameter '%1' for the '%2' controller").arg(written, sectionName), keyStart,
                keyLength);
        skipRest();
        return;
    }
    if (validVersion() < param->minVersion) {
        errorAt(-1, tr("Parameter invalid for the M.U.G.E.N. version of the current project"), keyStart, keyLength);
        skipRest();
        return;
    }
    applyFormat(QSyntaxFormats::Keyword, keyStart, keyLength);
    if (param->ikemenOnly)
        tellIkemenOnly(keyStart, keyLength);
    // A deprecation of version 0 (one before any packable version, such as
    // "2002.04.14") warns at every version.
    if (!param->deprecatedText.isEmpty() && param->deprecatedVersion <= version())
        warningAt(-1, tr("Parameter deprecated in the M.U.G.E.N %1").arg(param->deprecatedText), keyStart,
                  keyLength);
    checkValue(*param);
}

const QSyntaxParam *QMugenSyntaxProcessor::matchKey(const QMap<QString, QSyntaxParam> &map, const QString &word,
                                                    int *keyEnd)
{
    const KeyIndex &index = keyIndex(map);
    static const QVector<KeyIndex::Entry> noNames;
    const auto found = index.names.constFind(word);
    const QVector<KeyIndex::Entry> &named = found == index.names.cend() ? noNames : found.value();
    int n = 0;
    int p = 0;
    // The first key in map order that matches wins.
    while (n < named.size() || p < index.patternEntries.size()) {
        const bool takeName = p >= index.patternEntries.size()
            || (n < named.size() && named.at(n).order < index.patternEntries.at(p).order);
        if (!takeName) {
            if (index.patterns.at(p).exactMatch(word))
                return index.patternEntries.at(p).param;
            ++p;
            continue;
        }
        const QSyntaxParam *param = named.at(n++).param;
        if (param->format != QSyntaxParam::IdExp)
            return param;
        // var(3) = ...: the name, then a bracketed expression.
        if (type() == OpenParen) {
            next();
            expression();
            expect(CloseParen, -1);
            if (keyEnd)
                *keyEnd = m_lastEnd;
            return param;
        }
    }
    return nullptr;
}

void QMugenSyntaxProcessor::checkValue(const QSyntaxParam &param)
{
    // "S100": the letter and the number are read apart.
    if (param.type >= QSyntaxParam::StrExp && param.type <= QSyntaxParam::StrExp2Nil)
        m_splitDigits = false;
    if (!expect(Equal, -1) && type() == EndOfLine)
        return;
    beginValue();

    auto integer = [this] { readInteger(); };
    auto number = [this] { readNumber(); };
    auto exp = [this] { expression(); };

    switch (param.type) {
    case QSyntaxParam::Int:
        integer();
        break;
    case QSyntaxParam::Int2:
        readItems(2, 2, integer);
        break;
    case QSyntaxParam::Int3:
        readItems(3, 3, integer);
        break;
    case QSyntaxParam::IntN:
        if (type() == EndOfLine)
            break;
        integer();
        readMore(qMax(1, param.extra.toInt()) - 1, integer);
        break;
    case QSyntaxParam::IntFloat3:
        // An integer and three numbers.
        if (readItems(1, 4, integer)) {
            if (type() == EndOfLine) {
                valueWants(4);
                break;
            }
            expect(Comma, -1);
            readItems(3, 4, number);
        }
        break;
    case QSyntaxParam::IntFloat3Opt:
        integer();
        readMore(3, number);
        break;
    case QSyntaxParam::Float:
        number();
        break;
    case QSyntaxParam::Float2:
        readItems(2, 2, number);
        break;
    case QSyntaxParam::Float2Opt:
        number();
        readMore(1, number);
        break;
    case QSyntaxParam::Float3:
        readItems(3, 3, number);
        break;
    case QSyntaxParam::Exp:
        expression();
        break;
    case QSyntaxParam::Exp2:
        readItems(2, 2, exp);
        break;
    case QSyntaxParam::Exp2Value:
        if (readItems(2, 3, exp)) {
            if (type() == EndOfLine) {
                valueWants(3);
                break;
            }
            expect(Comma, -1);
            readValueWord(param);
        }
        break;
    case QSyntaxParam::Exp3:
        readItems(3, 3, exp);
        break;
    case QSyntaxParam::Exp4:
        readItems(4, 4, exp);
        break;
    case QSyntaxParam::ExpN:
        expression();
        readMore(std::numeric_limits<int>::max(), exp);
        break;
    case QSyntaxParam::Exp2Opt:
        expression();
        readMore(1, exp);
        break;
    case QSyntaxParam::Exp3Nil:
        if (type() == Integer && tokenText() == QLatin1String("-1") && atLastToken()) {
            formatToken(QSyntaxFormats::Number);
            next();
        } else {
            readItems(3, 3, exp);
        }
        break;
    case QSyntaxParam::String:
        expect(String, QSyntaxFormats::String);
        break;
    case QSyntaxParam::StrExp:
    case QSyntaxParam::StrExp2:
    case QSyntaxParam::StrExp2Nil:
        if (param.type == QSyntaxParam::StrExp2Nil && type() == Integer && tokenText() == QLatin1String("-1")
            && atLastToken()) {
            formatToken(QSyntaxFormats::Number);
            next();
            break;
        }
        if (type() == Identifier) {
            if (valuePattern(param.extra).exactMatch(word())) {
                formatToken(QSyntaxFormats::Value);
                next();
            } else if (m_tokenEnd < m_textLength && isDigit(m_text[m_tokenEnd])) {
                // Not the prefix: the word was cut at its first digit for
                // nothing, so it is read whole as the start of the expression.
                restore(mark());
            }
        }
        expression();
        if (param.type != QSyntaxParam::StrExp) {
            if (type() == EndOfLine) {
                valueWants(2);
                break;
            }
            expect(Comma, -1);
            expression();
        }
        break;
    case QSyntaxParam::ExpStr:
        expression();
        expect(Comma, -1);
        readValueWord(param);
        break;
    case QSyntaxParam::ExpStrExp2:
        // Nothing is read: what stands there ends in the syntax error of the line.
        break;
    case QSyntaxParam::Value:
        readRestAsValue(param);
        break;
    default:
        skipRest();
        break;
    }
}

template <typename Item>
void QMugenSyntaxProcessor::readMore(int most, Item item)
{
    for (int i = 0; i < most && type() == Comma; ++i) {
        next();
        item();
    }
}

template <typename Item>
bool QMugenSyntaxProcessor::readItems(int count, int wanted, Item item)
{
    for (int i = 0; i < count; ++i) {
        if (i > 0) {
            if (type() == EndOfLine) {
                valueWants(wanted);
                return false;
            }
            expect(Comma, -1);
        }
        if (type() == EndOfLine) {
            valueWants(wanted);
            return false;
        }
        item();
    }
    return true;
}

bool QMugenSyntaxProcessor::readNumber()
{
    return readSigned(false);
}

bool QMugenSyntaxProcessor::readInteger()
{
    return readSigned(true);
}

bool QMugenSyntaxProcessor::readSigned(bool integerOnly)
{
    // The engine reads these with the C library, which takes "+2" as 2.
    if (type() == Plus && m_tokenEnd < m_textLength
        && (isDigit(m_text[m_tokenEnd]) || m_text[m_tokenEnd] == QLatin1Char('.'))) {
        formatToken(QSyntaxFormats::Number);
        next();
    }
    if (type() == Integer || (type() == Float && !integerOnly)) {
        formatToken(QSyntaxFormats::Number);
        next();
        return true;
    }
    return expect(integerOnly ? Integer : Float, -1);
}

bool QMugenSyntaxProcessor::matchesValue(const QSyntaxParam &param, const QString &value, int start, int length)
{
    // Where Ikemen GO reads more words, its pattern decides for it, and
    // tells M.U.G.E.N. of those words.
    const bool wider = !param.ikemenExtra.isEmpty();
    if (valuePattern(wider && target() == TargetIkemen ? param.ikemenExtra : param.extra).exactMatch(value))
        return true;
    if (!wider || target() == TargetIkemen || !valuePattern(param.ikemenExtra).exactMatch(value))
        return false;
    tellIkemenOnly(start, length);
    return true;
}

void QMugenSyntaxProcessor::readValueWord(const QSyntaxParam &param)
{
    if (type() == Identifier && matchesValue(param, word(), m_tokenStartPos, m_tokenEnd - m_tokenStartPos))
        formatToken(QSyntaxFormats::Value);
    else
        error(-1, tr("Unknown parameter value '%1'").arg(tokenText()));
    if (type() != EndOfLine)
        next();
}

void QMugenSyntaxProcessor::readRestAsValue(const QSyntaxParam &param)
{
    const int from = m_tokenStartPos;
    skipRest();
    const int to = qMax(from, m_lastEnd);
    const QString value(m_text + from, to - from);
    if (matchesValue(param, value.toLower(), from, to - from))
        applyFormat(QSyntaxFormats::Value, from, to - from);
    else
        errorAt(-1, tr("Unknown parameter value '%1'").arg(value), from, to - from);
}

// --- Expressions -----------------------------------------------------------

void QMugenSyntaxProcessor::expression()
{
    const bool outer = m_inExpression;
    m_inExpression = true;
    logical();
    m_inExpression = outer;
}

void QMugenSyntaxProcessor::logical()
{
    bitwise();
    while (type() == BarBar || type() == AmpAmp || type() == CaretCaret) {
        next();
        bitwise();
    }
}

void QMugenSyntaxProcessor::bitwise()
{
    equality();
    for (;;) {
        if (type() == Bar || type() == Amp || type() == Caret) {
            next();
        } else if (type() == Colon) {
            // var(0) := 1, the assignment.
            next();
            if (!expect(Equal, -1))
                break;
        } else {
            break;
        }
        equality();
    }
}

void QMugenSyntaxProcessor::equality()
{
    relational();
    while (type() == Equal || type() == NotEqual) {
        next();
        if (type() == OpenBracket) {
            // An interval: [a, b], [a, b), closed by either bracket.
            next();
            interval();
        } else {
            relational();
        }
    }
}

void QMugenSyntaxProcessor::interval()
{
    relational();
    if (!expect(Comma, -1)) {
        // One error for a broken interval, not one for each of its parts.
        while (type() != CloseBracket && type() != CloseParen && type() != EndOfLine)
            next();
    } else {
        relational();
    }
    if (type() == CloseBracket || type() == CloseParen)
        next();
    else
        expect(CloseBracket, -1);
}

void QMugenSyntaxProcessor::relational()
{
    additive();
    while (type() == Less || type() == LessEqual || type() == Greater || type() == GreaterEqual) {
        next();
        additive();
    }
}

void QMugenSyntaxProcessor::additive()
{
    multiplicative();
    while (type() == Plus || type() == Minus) {
        next();
        multiplicative();
    }
}

void QMugenSyntaxProcessor::multiplicative()
{
    power();
    while (type() == Star || type() == Slash || type() == Percent) {
        next();
        power();
    }
}

void QMugenSyntaxProcessor::power()
{
    primary();
    while (type() == StarStar) {
        next();
        primary();
    }
}

void QMugenSyntaxProcessor::primary()
{
    // Real expressions nest a few levels; a line of thousands of brackets
    // must not take the stack with it. What lies deeper is left unread, and
    // the line ends in its syntax error.
    if (m_depth >= MaxDepth) {
        const int from = m_tokenStartPos;
        skipRest();
        errorAt(-1, tr("Syntax error - code ends before line"), from, m_lastEnd - from);
        // The brackets left open on the way back are not told one by one.
        m_abandoned = true;
        return;
    }
    struct Nesting
    {
        int &depth;
        explicit Nesting(int &d) : depth(++d) {}
        ~Nesting() { --depth; }
    } nesting(m_depth);
    switch (type()) {
    case Integer:
    case Float:
        formatToken(QSyntaxFormats::Number);
        next();
        return;
    case String:
        formatToken(QSyntaxFormats::String);
        next();
        return;
    case Minus:
        formatToken(QSyntaxFormats::Number);
        next();
        if (type() != Minus)
            primary();
        return;
    case Not:
        next();
        logical();
        return;
    case Tilde:
        // The bitwise not binds as tightly as the minus sign.
        next();
        primary();
        return;
    case OpenParen:
        next();
        logical();
        if (type() == Comma) {
            // (a, b], (a, b): an interval.
            next();
            logical();
            if (type() == CloseParen || type() == CloseBracket)
                next();
            else
                expect(CloseParen, -1);
        } else {
            expect(CloseParen, -1);
        }
        return;
    case Identifier:
        identifierPrimary();
        return;
    default:
        expect(Integer, -1);
        return;
    }
}

void QMugenSyntaxProcessor::identifierPrimary()
{
    const QString name = word();
    // The redirections. Ikemen GO adds its own, and a number to partner.
    const bool ikemenOnly = oneOf(name, {"player", "playerindex", "helperindex", "p2", "stateowner"});
    const bool alone = oneOf(name, {"root", "parent", "partner", "p2", "stateowner"});
    if (alone || ikemenOnly || oneOf(name, {"enemy", "enemynear", "playerid", "helper", "target"})) {
        const int start = m_tokenStartPos;
        formatToken(QSyntaxFormats::Trigger);
        next();
        const bool numbered = name == QLatin1String("partner") && type() == OpenParen;
        if (type() == OpenParen && (!alone || numbered)) {
            next();
            logical();
            expect(CloseParen, -1);
        }
        if (ikemenOnly || numbered)
            tellIkemenOnly(start, m_lastEnd - start);
        expect(Comma, -1);
        primary();
        return;
    }

    const QString written = tokenText();
    const int wordStart = m_tokenStartPos;
    const int wordLength = m_tokenEnd - m_tokenStartPos;
    const int issues = int(m_issues.size());
    next();
    const QMugenSyntaxProperties *words = vocabulary();
    const QSyntaxParam *trigger = words ? matchKey(words->triggers(), name, nullptr) : nullptr;
    if (!trigger || m_issues.size() > issues) {
        errorAt(-1, tr("Unknown trigger '%1'").arg(written), wordStart, wordLength);
        // Its arguments are read all the same, so that one mistake is told once.
        if (!trigger)
            skipArguments();
        return;
    }
    if (validVersion() < trigger->minVersion) {
        errorAt(-1, tr("Trigger invalid for the M.U.G.E.N. version of the current project"), wordStart, wordLength);
    } else {
        applyFormat(QSyntaxFormats::Trigger, wordStart, wordLength);
        if (trigger->ikemenOnly)
            tellIkemenOnly(wordStart, wordLength);
        if (!trigger->deprecatedText.isEmpty() && trigger->deprecatedVersion <= version())
            warningAt(-1, tr("Trigger deprecated in the M.U.G.E.N %1").arg(trigger->deprecatedText), wordStart,
                      wordLength);
    }
    checkTrigger(*trigger, name);
}

int QMugenSyntaxProcessor::skipArguments(const QString &words)
{
    if (type() != OpenParen)
        return -1;
    next();
    int count = 0;
    if (type() != CloseParen) {
        argument(words);
        ++count;
        while (type() == Comma) {
            next();
            argument(words);
            ++count;
        }
    }
    expect(CloseParen, -1);
    return count;
}

void QMugenSyntaxProcessor::argument(const QString &words)
{
    if (!words.isEmpty() && type() == Identifier) {
        // One of the trigger's words, which may be several: "pos x".
        const Mark before = mark();
        const int from = m_tokenStartPos;
        QString joined = word();
        next();
        while (type() == Identifier) {
            joined += QLatin1Char(' ') + word();
            next();
        }
        if ((type() == Comma || type() == CloseParen) && valuePattern(words).exactMatch(joined)) {
            applyFormat(QSyntaxFormats::Value, from, m_lastEnd - from);
            return;
        }
        restore(before);
    }
    logical();
}

void QMugenSyntaxProcessor::readArguments(int count, const QString &words)
{
    const int from = m_tokenStartPos;
    const int issues = int(m_issues.size());
    const int found = skipArguments(words);
    // A list that is already told of for its form isn't counted as well.
    if (found != count && m_issues.size() == issues)
        errorAt(-1, tr("This trigger requires %n argument(s)", nullptr, count), from, m_lastEnd - from);
}

void QMugenSyntaxProcessor::checkTrigger(const QSyntaxParam &trigger, const QString &word)
{
    // ", [operator] value" behind an old-style trigger. kfm.cns writes
    // "AnimElem = 2, 1" without the operator, which compares with "=".
    auto secondValue = [this] {
        if (type() != Comma)
            return;
        const Mark before = mark();
        next();
        if (isRelational(type()))
            next();
        else if (type() != Integer && type() != Minus) {
            // Not this trigger's: a comma between the arguments of a function.
            restore(before);
            return;
        }
        signedInteger();
    };

    switch (trigger.type) {
    case QSyntaxParam::Exp:
    case QSyntaxParam::Exp2:
    case QSyntaxParam::Exp3:
        if (type() != OpenParen) {
            expect(OpenParen, -1);
            return;
        }
        readArguments(trigger.type == QSyntaxParam::Exp ? 1 : trigger.type == QSyntaxParam::Exp2 ? 2 : 3,
                      trigger.extra);
        break;
    case QSyntaxParam::NilExp:
    case QSyntaxParam::ExpOpt:
        // Nothing, or one argument in brackets: NumHelper, NumHelper(1000).
        if (type() == OpenParen)
            readArguments(1);
        break;
    // Without its operator an old-style clause is told once, and its
    // values are left alone.
    case QSyntaxParam::OpInt:
    case QSyntaxParam::Op2Int2:
        if (relationalOperator()) {
            signedInteger();
            secondValue();
        }
        break;
    case QSyntaxParam::OpInt2:
        if (relationalOperator()) {
            signedInteger();
            expect(Comma, -1);
            signedInteger();
        }
        break;
    case QSyntaxParam::OpStr:
        if (relationalOperator())
            expect(String, QSyntaxFormats::String);
        break;
    case QSyntaxParam::Value:
        readTriggerWords(trigger);
        break;
    case QSyntaxParam::ValueEq:
        if (type() == Equal || type() == NotEqual)
            next();
        else
            expect(Equal, -1);
        readTriggerWords(trigger);
        break;
    case QSyntaxParam::Const: {
        const QMugenSyntaxProperties *words = vocabulary();
        static const QStringList none;
        const QStringList names = words->consts().value(word, none);
        const QStringList ikemenNames = words->ikemenConsts().value(word, none);
        if (names.isEmpty() && ikemenNames.isEmpty())
            break;
        if (!expect(OpenParen, -1))
            break;
        const QString name = type() == Identifier ? this->word() : QString();
        if (type() == Identifier && names.contains(name)) {
            formatToken(QSyntaxFormats::Const);
        } else if (type() == Identifier && ikemenNames.contains(name)) {
            formatToken(QSyntaxFormats::Const);
            tellIkemenOnly(m_tokenStartPos, m_tokenEnd - m_tokenStartPos);
        } else if (type() == Identifier && target() == TargetIkemen && ikemenNames.contains(QLatin1String("*"))) {
            // A constant of the character's own [Constants].
            formatToken(QSyntaxFormats::Const);
        } else {
            error(-1, tr("Unknown constant '%1'").arg(tokenText()));
        }
        if (type() != EndOfLine && type() != CloseParen)
            next();
        expect(CloseParen, -1);
        break;
    }
    default:
        break;
    }
}

bool QMugenSyntaxProcessor::relationalOperator()
{
    if (isRelational(type())) {
        next();
        return true;
    }
    return expect(Less, -1);
}

void QMugenSyntaxProcessor::signedInteger()
{
    if (type() == Minus) {
        formatToken(QSyntaxFormats::Number);
        next();
    }
    expect(Integer, QSyntaxFormats::Number);
}

void QMugenSyntaxProcessor::readTriggerWords(const QSyntaxParam &trigger)
{
    const int from = m_tokenStartPos;
    if (type() != Identifier) {
        error(-1, tr("Unknown value"));
        if (type() != EndOfLine)
            next();
        return;
    }
    QString joined = word();
    int to = m_tokenEnd;
    next();
    // A list of words such as "SC, NA, SA": as long as what follows a comma
    // is a word and no trigger, it belongs to the value.
    if (trigger.extra.contains(QLatin1Char(',')) || trigger.ikemenExtra.contains(QLatin1Char(','))) {
        while (type() == Comma) {
            const Mark before = mark();
            next();
            if (type() != Identifier || isTrigger(word())) {
                restore(before);
                break;
            }
            joined += QLatin1Char(',') + word();
            to = m_tokenEnd;
            next();
        }
    }
    if (matchesValue(trigger, joined, from, to - from))
        applyFormat(QSyntaxFormats::Value, from, to - from);
    else
        errorAt(-1, tr("Unknown value"), from, to - from);
}

// --- Vocabulary lookups ------------------------------------------------------

const QMugenSyntaxProcessor::KeyIndex &QMugenSyntaxProcessor::keyIndex(const QMap<QString, QSyntaxParam> &map)
{
    std::shared_ptr<KeyIndex> &index = m_keyIndexes[&map];
    if (!index) {
        index = std::make_shared<KeyIndex>();
        int order = 0;
        for (auto it = map.cbegin(); it != map.cend(); ++it, ++order) {
            if (it.value().format == QSyntaxParam::RegExp) {
                index->patternEntries.append({order, &it.value()});
                index->patterns.append(QRegExp(it.value().extra, Qt::CaseInsensitive));
            } else {
                index->names[it.key().toLower()].append({order, &it.value()});
            }
        }
    }
    return *index;
}

int QMugenSyntaxProcessor::controllerIndex(int list, const QString &name)
{
    const QMugenSyntaxProperties *words = vocabulary();
    if (!words || list < 0 || list > 3)
        return -1;
    const QList<QSyntaxController *> *lists[] = {&words->stateControllers(), &words->bgControllers(),
                                                 &words->bgControls(), &words->fontDefs()};
    if (!m_controllerNamesBuilt[list]) {
        m_controllerNamesBuilt[list] = true;
        const QList<QSyntaxController *> &controllers = *lists[list];
        // Backwards, so that the first of two equal names wins.
        for (int i = int(controllers.size()) - 1; i >= 0; --i)
            m_controllerNames[list].insert(controllers.at(i)->name.toLower(), i);
    }
    return m_controllerNames[list].value(name, -1);
}

const QSyntaxController *QMugenSyntaxProcessor::controllerOf(int state) const
{
    const QMugenSyntaxProperties *words = vocabulary();
    if (!words || state < FirstStateController)
        return nullptr;
    const QList<QSyntaxController *> *list = &words->stateControllers();
    int index = state - FirstStateController;
    if (state >= FirstFontDef) {
        list = &words->fontDefs();
        index = state - FirstFontDef;
    } else if (state >= FirstBgControl) {
        list = &words->bgControls();
        index = state - FirstBgControl;
    } else if (state >= FirstBgController) {
        list = &words->bgControllers();
        index = state - FirstBgController;
    }
    return index < list->size() ? list->at(index) : nullptr;
}

const QRegExp &QMugenSyntaxProcessor::valuePattern(const QString &pattern)
{
    auto it = m_valuePatterns.find(pattern);
    if (it == m_valuePatterns.end())
        it = m_valuePatterns.insert(pattern, QRegExp(pattern));
    return it.value();
}

bool QMugenSyntaxProcessor::isTrigger(const QString &word)
{
    const QMugenSyntaxProperties *words = vocabulary();
    if (!words)
        return false;
    const KeyIndex &index = keyIndex(words->triggers());
    if (index.names.contains(word))
        return true;
    for (const QRegExp &pattern : index.patterns) {
        if (pattern.exactMatch(word))
            return true;
    }
    return false;
}

// --- Folding -------------------------------------------------------------

bool QMugenSyntaxProcessor::scanAhead(const QTextBlock &block, bool *nextIsState)
{
    const QTextBlock first = block.next();
    const int number = first.isValid() ? first.blockNumber() : -1;
    // Runs of blank and comment lines are looked through once a pass.
    if (m_aheadPass == m_pass && number >= m_aheadFrom && number <= m_aheadTo + 1 && number >= 0) {
        *nextIsState = m_aheadIsState;
        return m_ahead;
    }
    m_aheadPass = m_pass;
    m_aheadFrom = number;
    m_aheadTo = number - 1;
    m_ahead = false;
    m_aheadIsState = false;
    for (QTextBlock b = first; b.isValid(); b = b.next()) {
        const QString text = b.text();
        int i = 0;
        while (i < text.size() && isBlank(text.at(i)))
            ++i;
        if (i < text.size() && text.at(i) != QLatin1Char(';')) {
            if (text.at(i) == QLatin1Char('[')) {
                m_ahead = true;
                ++i;
                while (i < text.size() && isBlank(text.at(i)))
                    ++i;
                int j = i;
                while (j < text.size() && text.at(j).isLetter())
                    ++j;
                m_aheadIsState = QStringView(text).mid(i, j - i).compare(QLatin1String("state"), Qt::CaseInsensitive) == 0;
            }
            break;
        }
        m_aheadTo = b.blockNumber();
    }
    if (number < 0)
        m_aheadPass = -1;
    *nextIsState = m_aheadIsState;
    return m_ahead;
}

int QMugenSyntaxProcessor::foldLevelOf(const QTextBlock &block, const QTextEditorBlockData *data,
                                       bool nextIsState) const
{
    const QTextBlock previous = block.previous();
    if (!previous.isValid())
        return 0;
    const QTextEditorBlockData *before = QTextEditorBlockData::of(previous, false);
    const int level = before ? before->foldLevel : 0;
    const bool previousHeader = before && before->isHeader;
    const bool previousBefore = before && before->beforeHeader;
    const int state = block.userState();
    int result;
    if (data->isHeader && previousHeader) {
        // The section above is empty. A [State] right under its [Statedef]
        // goes one deeper, a [Statedef] after an empty [State] one back;
        // other headers stay level with it, so that empty sections don't
        // push all that follows deeper.
        const bool stateHeader = state == StateSection;
        const bool afterState = isStateBlock(previous.userState());
        result = level + (stateHeader && !afterState ? 1 : 0) - (!stateHeader && afterState ? 1 : 0);
    } else {
        // A section's lines are one deeper than its header, and its last
        // line comes back to the depth of the next header: that of a
        // [State] under a [Statedef] is the [Statedef]'s lines, and after
        // a [State] block the next [Statedef] is two back. Counted from
        // the section's depth even when its first line is its last.
        const int body = previousHeader ? level + 1 : level;
        if (!data->beforeHeader || (previousBefore && !previousHeader))
            result = body;
        else if (!isStateBlock(state) && nextIsState)
            result = body;
        else if (isStateBlock(state) && !nextIsState)
            result = body - 2;
        else
            result = body - 1;
    }
    // A [State] without its [Statedef] would lead below the first level.
    return qMax(result, 0);
}

void QMugenSyntaxProcessor::settleFolding()
{
    QTextDocument *doc = document();
    if (m_passFirst >= 0 && doc) {
        // The lines above the edit look ahead into it: whether a header
        // follows them may have changed.
        const QTextBlock edited = doc->findBlockByNumber(m_passFirst);
        QTextBlock from = edited;
        for (QTextBlock b = edited.previous(); b.isValid(); b = b.previous()) {
            from = b;
            if (!isBlankOrComment(b.text()))
                break;
        }
        // Then the fold levels down from there, until they agree again
        // with what they were past the edited lines.
        for (QTextBlock b = from; b.isValid(); b = b.next()) {
            QTextEditorBlockData *data = QTextEditorBlockData::of(b, true);
            bool nextIsState = false;
            const bool beforeHeader = scanAhead(b, &nextIsState);
            const bool changedHeader = beforeHeader != data->beforeHeader;
            data->beforeHeader = beforeHeader;
            const int level = foldLevelOf(b, data, nextIsState);
            const bool changed = changedHeader || level != data->foldLevel;
            data->foldLevel = level;
            if (!changed && b.blockNumber() > m_passLast)
                break;
        }
    }
    m_passFirst = m_passLast = -1;
    ++m_pass;
}
