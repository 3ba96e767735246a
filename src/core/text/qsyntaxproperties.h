#pragma once

#include <QDomDocument>
#include <QDomElement>
#include <QMap>
#include <QString>

/**
 * One value description of a syntax file: how a key is written and which
 * grammar its value follows. A plain value.
 */
struct QSyntaxParam
{
    /**
     * The value grammars, numbered as the `type` attribute's names in this
     * order: "int" is 0, "opStr" 30, "const" 32. 0 to 24 describe
     * parameter values; 10, 11, 13 and 24 to 32 trigger arguments.
     */
    enum Type {
        Int, Int2, Int3, IntN, IntFloat3, IntFloat3Opt,
        Float, Float2, Float2Opt, Float3,
        Exp, Exp2, Exp2Value, Exp3, Exp4, ExpN, Exp2Opt, Exp3Nil,
        String, StrExp, StrExp2, StrExp2Nil, ExpStr, ExpStrExp2, Value,
        NilExp, ExpOpt, OpInt, OpInt2, Op2Int2, OpStr, ValueEq, Const,
        /** No known grammar: the value is skipped unchecked. */
        Unknown,
    };

    /** How the key is written (`format`). */
    enum Format {
        /** The key is the name itself, compared without regard to case. */
        Plain = 0,
        /** The name is followed by a bracketed expression: `var(3) = ...`. */
        IdExp = 1,
        /** `extra` is a pattern the whole key must match: `layer0.anim`, `pal12`. */
        RegExp = 2,
    };

    /** One of `Type`. */
    int type = Unknown;
    /** One of `Format`. */
    int format = Plain;
    /** The engine version that introduced the item, packed one byte a part (1.1 is 0x1010000); 0 for always. */
    quint32 minVersion = 0;
    /** The engine version that deprecated the item, packed the same way; 0 when none or unreadable. */
    quint32 deprecatedVersion = 0;
    /** The `deprecated` attribute as written, for the user's warning; empty when not deprecated. */
    QString deprecatedText;
    /**
     * The extra data of the grammar: the `max` count of an "intn", the
     * value pattern (`reg_exp`) of the word-taking grammars, or the key
     * pattern (`fmt_reg_exp`), which wins when both are given. A trigger
     * of bracketed arguments keeps here the words that an argument may be
     * instead of an expression (`arg_reg_exp`).
     */
    QString extra;
    /** Whether only Ikemen GO reads the item (`engine="ikemen"`). */
    bool ikemenOnly = false;
    /**
     * The value pattern Ikemen GO reads, where it takes more words than
     * M.U.G.E.N. (`ikemen_reg_exp`); empty when both read the same.
     */
    QString ikemenExtra;
};

/**
 * One state controller, background element type, background controller or
 * font definition kind, with the parameters it takes. Owned by the
 * properties object that read it.
 */
struct QSyntaxController
{
    quint32 minVersion = 0;
    quint32 deprecatedVersion = 0;
    /** The name as the file spells it; `type =` lines compare it without regard to case. */
    QString name;
    QString deprecatedText;
    /** Whether only Ikemen GO knows the controller (`engine="ikemen"`). */
    bool ikemenOnly = false;
    /** Parameter name as written in the file, to its description. */
    QMap<QString, QSyntaxParam> params;
};

/**
 * Base of the descriptions of a language's vocabulary, read from an XML
 * file of document type "ZNLSyntaxML" with the root element `syntax`.
 * A description is read once at start and then shared read-only by every
 * processor of its language.
 */
class QSyntaxProperties
{
public:
    QSyntaxProperties() = default;
    QSyntaxProperties(const QSyntaxProperties &) = delete;
    QSyntaxProperties &operator=(const QSyntaxProperties &) = delete;
    virtual ~QSyntaxProperties();

    /**
     * Reads `fileName`. Returns false, keeping whatever was read before,
     * when the file is missing or isn't well-formed XML; a document whose
     * root isn't `syntax` reads as an empty description and returns true.
     */
    virtual bool load(const QString &fileName) = 0;

    /**
     * Rises with every load that changed the description, so that whoever
     * keeps lookups into it (the processors) knows when to drop them.
     */
    quint32 generation() const { return m_generation; }

    /**
     * Packs a version text such as "1.1" or "1.0.0.1" one byte a part,
     * highest first (0x1010000, 0x1000001). Texts of another form, or with
     * a part above 255, give 0.
     */
    static quint32 packVersion(const QString &text);
    /**
     * The number of a grammar name of the `type` attribute. Names are
     * compared exactly ("opStr", not "opstr"); an unknown or empty name
     * gives `QSyntaxParam::Unknown`.
     */
    static int typeFromName(const QString &name);
    /** Whether a grammar of number `type` reads a word pattern from `reg_exp`. */
    static bool typeUsesPattern(int type);
    /** Reads the attributes of a `<param>`, `<trigger>` or section element. */
    static QSyntaxParam readParam(const QDomElement &element);
    /** Whether an element carries `engine="ikemen"`: only Ikemen GO reads it. */
    static bool isIkemenOnly(const QDomElement &element);
    /**
     * Reads the version attributes and the `<param>` children of a controller
     * element; other children are skipped. The caller owns the result.
     */
    static QSyntaxController *readController(const QDomElement &element);

protected:
    enum class Document {
        /** Missing or malformed: nothing may change. */
        Failed,
        /** Well formed, with another root: an empty description. */
        OtherRoot,
        /** The document's root is the `syntax` element. */
        Syntax,
    };
    /** Opens and parses `fileName` into `document`. */
    static Document openDocument(const QString &fileName, QDomDocument &document);

    quint32 m_generation = 0;
};
