#pragma once

#include "qmugensyntaxproperties.h"
#include "qsyntaxprocessor.h"
#include "qtextelement.h"

#include <QHash>
#include <QRegExp>
#include <QTextBlock>
#include <QVector>

#include <memory>

struct QSyntaxController;

/**
 * Colours and checks every text file of the engine: CNS, ST, CMD, AIR, and
 * the DEF files of characters, stages, storyboards and fonts.
 *
 * It is a per-line state machine. The block state (an int) says which
 * section a line is in, one of BlockState; a line's result depends only on
 * its text and on the state the line before left. What a line holds goes
 * into its QTextEditorBlockData: the diagnostics with their columns, the
 * round and square brackets, whether it is a header, whether a header
 * follows it, and its fold level. The vocabulary (controllers, parameters,
 * triggers, the keys of the described sections) comes from the
 * QMugenSyntaxProperties; without one, every controller is unknown.
 *
 * Colours are the nine formats of QSyntaxFormats. A diagnostic underlines
 * what it covers: red for an error, orange for a warning, yellow for a
 * notice. With checking off, errors are dropped; colours, warnings and
 * notices stay.
 */
class QMugenSyntaxProcessor : public QSyntaxProcessor
{
    Q_OBJECT

public:
    /** The block states: the section a line belongs to. */
    enum BlockState {
        NoSection = 0,
        RemapSection = 1,
        DefaultsSection = 2,
        CommandSection = 3,
        StateDefSection = 4,
        DataSection = 5,
        SizeSection = 6,
        VelocitySection = 7,
        MovementSection = 8,
        QuotesSection = 9,
        ActionSection = 10,
        InfoSection = 11,
        FilesSection = 12,
        KeymapSection = 13,
        ArcadeSection = 14,
        /** `[State n]` before its `type` line. */
        StateSection = 15,
        CameraSection = 16,
        PlayerInfoSection = 17,
        BoundSection = 18,
        ScalingSection = 19,
        StageInfoSection = 20,
        ShadowSection = 21,
        ReflectionSection = 22,
        MusicSection = 23,
        BgDefSection = 24,
        /** A background element before its `type` line. */
        BgSection = 25,
        BgCtrlDefSection = 26,
        /** A background controller before its `type` line. */
        BgCtrlSection = 27,
        FntSection = 28,
        /** A font's `[Def]` before its `type` line. */
        DefSection = 29,
        SceneDefSection = 30,
        SceneSection = 31,
        /** A section whose `type` is unknown: only its trigger lines are read. */
        UnknownType = 32,
        /** 33 + the index of the state controller. */
        FirstStateController = 33,
        /** 200 + the index of the background element type. */
        FirstBgController = 200,
        /** 210 + the index of the background controller. */
        FirstBgControl = 210,
        /** 250 + the index of the font definition kind, below UnknownSection. */
        FirstFontDef = 250,
        /**
         * A section the processor doesn't know: its lines are read for their
         * form only, never against the keys of the section before.
         */
        UnknownSection = 1000,
        /** A screenpack's [Infobox Text]: free text, not read. */
        TextSection = 1001,
        /** A screenpack's [Characters] or [ExtraStages]: lists of names and options. */
        ListSection = 1002,
    };

    /** The types of the line tokens. */
    enum TokenType {
        EndOfLine = 0, OtherChar = 1, Identifier = 2, Integer = 3, Float = 4, String = 5,
        Plus = 6, Minus = 7, Slash = 8, Percent = 9, Star = 10, StarStar = 11,
        Amp = 12, AmpAmp = 13, Bar = 14, BarBar = 15, Caret = 16, CaretCaret = 17,
        Equal = 18, Less = 19, LessEqual = 20, Greater = 21, GreaterEqual = 22,
        Not = 23, NotEqual = 24, Comma = 25, OpenParen = 26, CloseParen = 27,
        OpenBrace = 28, CloseBrace = 29, OpenBracket = 30, CloseBracket = 31,
        Colon = 32, Tilde = 33, Dollar = 34,
    };

    /**
     * Attaches to `document` (may be null) and checks all of it at once at
     * `version`, for the engine `target`. `properties` is not owned; null
     * means no vocabulary.
     */
    explicit QMugenSyntaxProcessor(QTextDocument *document, quint32 version = DefaultEngineVersion,
                                   bool checking = true, const QMugenSyntaxProperties *properties = mugenSyntax,
                                   int target = TargetMugen);
    ~QMugenSyntaxProcessor() override;

    void rehighlightAll() override;

    /**
     * A line token, packed in one word: bits 0 to 5 the type, 6 to 21 the
     * start column, 22 to 31 the length. Columns and lengths beyond what
     * the bits hold are cut to the largest value they can hold.
     */
    static quint32 packToken(int type, int start, int length);
    static int tokenType(quint32 token) { return int(token & 0x3f); }
    static int tokenStart(quint32 token) { return int((token >> 6) & 0xffff); }
    static int tokenLength(quint32 token) { return int(token >> 22); }

    /** Whether a block state is that of a `[State]` section or of a state controller. */
    static bool isStateBlock(int state);

    /**
     * Whether the text is a screenpack's (system.def, select.def, fight.def
     * and the like), by the sections that only those files have.
     */
    static bool readsAsScreenpack(const QString &text);
    /**
     * Screenpack files are read for their form: a section or key that the
     * vocabulary doesn't describe is no error there, and only what it does
     * describe is checked against it. Changing it checks everything again.
     */
    bool isScreenpack() const { return m_screenpack; }
    void setScreenpack(bool screenpack);

protected:
    void highlightBlock(const QString &text) override;

    /** An error over the current token, which also gets `formatIndex` (-1 for none). */
    void error(int formatIndex, const QString &text);
    void errorAt(int formatIndex, const QString &text, int start, int length);
    void warningAt(int formatIndex, const QString &text, int start, int length);
    void noticeAt(int formatIndex, const QString &text, int start, int length);
    /**
     * If the current token has `type`, gives it `formatIndex` (-1 for
     * none), moves on and returns true. Otherwise the error "Unexpected
     * token '%1'" covers the token, the scan moves on, and false.
     */
    bool expect(int type, int formatIndex);
    /**
     * A value came short: drops what was said of it, and the notice "This
     * parameter requires %n value(s)" covers it to the end of the line.
     */
    void valueWants(int count);
    /**
     * The text from `start` is what only Ikemen GO reads: for M.U.G.E.N.
     * the warning "... is only valid in Ikemen GO" covers it, once a line.
     */
    void tellIkemenOnly(int start, int length);
    /**
     * The newest engine version whose items of M.U.G.E.N. are valid: the
     * processor's version, and for Ikemen GO at least 1.1, all of which it
     * reads. Deprecations go by version() for both.
     */
    quint32 validVersion() const;

private Q_SLOTS:
    /** After an edit: brings the fold levels of the lines around it up to date. */
    void settleFolding();

private:
    struct KeyIndex;
    /** A place in the line, to read ahead and come back. */
    struct Mark
    {
        int position;
        int parens;
        int issues;
        int lastEnd;
        bool inExpression;
    };

    // The line tokenizer. Besides the packed token, the exact start and end
    // of the current token are kept for lines longer than the packing holds.
    int next();
    int type() const { return tokenType(m_token); }
    QString tokenText() const { return QString(m_buffer, m_bufferLength); }
    QString word() const { return tokenText().toLower(); }
    /** Whether the current token is the identifier `lowerWord`, case ignored. */
    bool is(const char *lowerWord) const;
    /** Whether the current token is "triggerall" or "trigger" and a number. */
    bool isTriggerKey() const;
    /** Whether the line ended at a string that isn't closed. */
    bool atOpenString() const;
    /** Whether nothing but a comment follows the current token. */
    bool atLastToken() const;
    Mark mark() const;
    void restore(const Mark &mark);
    void skipRest();
    void applyFormat(int formatIndex, int start, int length);
    void formatToken(int formatIndex) { applyFormat(formatIndex, m_tokenStartPos, m_tokenEnd - m_tokenStartPos); }
    void addIssue(int severity, int formatIndex, const QString &text, int start, int length);
    /** The value of a parameter starts at the current token. */
    void beginValue();

    // Sections.
    void readHeader();
    void readType(int previous);
    void readLine(int previous);
    void readTriggerLine();
    /** The key at the current token and its "="; false when the line ends there (already told). */
    bool readKey();
    /** readKey() for a key the section knows; otherwise `failure` covers it and the line is dropped. */
    bool readKnownKey(bool known, const QString &failure);
    /** Integers separated by commas. */
    void readIntegers();
    void readRemap();
    void readDefaults();
    void readCommand();
    bool readCommandItem();
    void readStateDef();
    void readQuotes();
    void readInfo();
    void readKeymap();
    void readAction();
    /** A line of the form "key = item, item, ...", of a section without a description. */
    void readFormLine();
    /** The rest of such a line from the current token, the first word of the key being read. */
    void readFormRest(int keyStart);
    /** Items separated by commas, each a number, a quoted string, a word or nothing. */
    void readFormItems();
    void readFormItem();

    // Parameters and values.
    /** `common` holds the keys that every section of its kind takes besides its own. */
    void checkParam(const QMap<QString, QSyntaxParam> &map, const QString &sectionName,
                    const QMap<QString, QSyntaxParam> *common = nullptr);
    const QSyntaxParam *matchKey(const QMap<QString, QSyntaxParam> &map, const QString &word, int *keyEnd);
    void checkValue(const QSyntaxParam &param);
    /** `count` items separated by commas; a line that ends first wants `wanted` values. */
    template <typename Item>
    bool readItems(int count, int wanted, Item item);
    /** Up to `most` more items, each behind a comma. */
    template <typename Item>
    void readMore(int most, Item item);
    /** An integer or a float, with an optional "+" or "-". */
    bool readNumber();
    /** An integer, with an optional "+" or "-". */
    bool readInteger();
    bool readSigned(bool integerOnly);
    /**
     * Whether `value`, lower-cased, is a word the target reads; the words
     * only Ikemen GO reads are told of for M.U.G.E.N. The value stands at
     * `start` in the line.
     */
    bool matchesValue(const QSyntaxParam &param, const QString &value, int start, int length);
    void readValueWord(const QSyntaxParam &param);
    void readRestAsValue(const QSyntaxParam &param);

    // Expressions, from the loosest binding to the tightest.
    void expression();
    void logical();
    void bitwise();
    void equality();
    /** The rest of an interval after its opening bracket: two values and the closing one. */
    void interval();
    void relational();
    void additive();
    void multiplicative();
    void power();
    void primary();
    void identifierPrimary();
    /**
     * The arguments of a function in brackets, if a "(" is next: how many
     * there were, or -1 without brackets. An argument may be one of the
     * `words` (a pattern) instead of an expression.
     */
    int skipArguments(const QString &words = QString());
    void argument(const QString &words);
    /** The bracketed arguments of a function trigger, which must be `count`. */
    void readArguments(int count, const QString &words = QString());
    void checkTrigger(const QSyntaxParam &trigger, const QString &word);
    bool relationalOperator();
    void signedInteger();
    void readTriggerWords(const QSyntaxParam &trigger);

    // Vocabulary lookups, cached per description.
    const QMugenSyntaxProperties *vocabulary() const;
    const KeyIndex &keyIndex(const QMap<QString, QSyntaxParam> &map);
    int controllerIndex(int list, const QString &name);
    const QSyntaxController *controllerOf(int state) const;
    const QRegExp &valuePattern(const QString &pattern);
    bool isTrigger(const QString &word);

    // Folding.
    bool scanAhead(const QTextBlock &block, bool *nextIsState);
    int foldLevelOf(const QTextBlock &block, const QTextEditorBlockData *data, bool nextIsState) const;

    // The current line.
    const QChar *m_text = nullptr;
    int m_textLength = 0;
    int m_pos = 0;
    quint32 m_token = 0;
    int m_tokenStartPos = 0;
    int m_tokenEnd = 0;
    /** The end of the last token read before the current one. */
    int m_lastEnd = 0;
    QChar m_buffer[512];
    int m_bufferLength = 0;
    bool m_inExpression = false;
    bool m_splitDigits = true;
    bool m_screenpack = false;
    int m_state = 0;
    /** How deep the expression being read is nested. */
    int m_depth = 0;
    static constexpr int MaxDepth = 100;
    /** Set when the line was given up for its depth: nothing more is told of it. */
    bool m_abandoned = false;
    /** Set once the line told of something only Ikemen GO reads, or belongs to such a controller. */
    bool m_toldIkemen = false;
    int m_valueStart = 0;
    int m_valueIssues = 0;
    QVector<QSyntaxIssue> m_issues;
    QVector<QSyntaxParen> m_parens;

    QMetaObject::Connection m_settling;

    // Lookups, dropped when the vocabulary is read again.
    quint32 m_generation = 0;
    QHash<const void *, std::shared_ptr<KeyIndex>> m_keyIndexes;
    QHash<QString, int> m_controllerNames[4];
    bool m_controllerNamesBuilt[4] = {false, false, false, false};
    QHash<QString, QRegExp> m_valuePatterns;

    // The lines an edit went over, for settleFolding(), and the look-ahead
    // of one pass: blocks m_aheadFrom to m_aheadTo are blank or comments,
    // and what follows them decided m_ahead.
    int m_passFirst = -1;
    int m_passLast = -1;
    int m_pass = 0;
    int m_aheadPass = -1;
    int m_aheadFrom = -1;
    int m_aheadTo = -1;
    bool m_ahead = false;
    bool m_aheadIsState = false;
};
