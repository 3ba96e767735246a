#pragma once

#include "qtextelement.h"

class QGroupHeader;
class QParamGroup;

/** A comment line that names the header right below it: "; Standing". */
class QNameComment : public QTextElement
{
    Q_OBJECT

public:
    int elementType() const override { return 1; }
    void release() override;
    void update(const QList<QTextElementToken> &tokens) override;

    /** The header this comment names, or null. */
    QGroupHeader *header = nullptr;
    /** The comment's text, trimmed. */
    QString text;
};

/**
 * A "[...]" line that starts a group of lines. It may own a name comment,
 * and owns the comment lines right above it and the lines below it up to
 * the comments above the next header.
 */
class QGroupHeader : public QTextElement
{
    Q_OBJECT

public:
    int elementType() const override { return 2; }
    int firstLine() const override;
    int lastLine() const override;

    /** Whether the header keeps a list of parameters. */
    virtual bool isParamGroup() const { return false; }

    /** The text of the name comment, or empty without one. */
    QString name() const;
    /**
     * Names the header: rewrites, removes or inserts the "; name" line above
     * it. Only that one line changes.
     */
    void setName(const QString &name);

    QNameComment *nameComment = nullptr;

protected:
    /** Breaks the bond with the name comment; headers call it from release(). */
    void releaseLinks();
};

class QGroupParam;

/** A header with a list of "key = value" parameters below it. */
class QParamGroup : public QGroupHeader
{
    Q_OBJECT

public:
    bool isParamGroup() const override { return true; }
    /** The first parameter whose key equals `key` exactly, or null. */
    QGroupParam *param(const QString &key) const;

    /** The parameters, in document order. */
    QList<QGroupParam *> params;

protected:
    /** Lets go of the parameters and the name comment; groups call it from release(). */
    void releaseLinks();
};

/** One "key = value" line that belongs to a group. */
class QGroupParam : public QTextElement
{
    Q_OBJECT

public:
    enum SubType { QuotedText = 1, IntegerValue = 2, FreeValue = 3 };

    int elementType() const override { return 4; }
    int elementSubType() const override { return subType; }

    QString key;
    int subType = 0;
    /** The group above, or null for a parameter before any group. */
    QParamGroup *group = nullptr;

protected:
    void releaseLinks();
};

/** A parameter whose value is a quoted text: name = "Kung Fu Man". */
class QStringParam : public QGroupParam
{
    Q_OBJECT

public:
    void release() override;
    void update(const QList<QTextElementToken> &tokens) override;

    /** The text between the quotes. */
    QString value;
};

/**
 * One comma-separated part of a command, packed in 64 bits: the keys in the
 * low 32 (U 1, D 2, B 4, F 8, a 16, b 32, c 64, x 128, y 256, z 512, s 1024),
 * the modifiers in the next 16 (1 "/" hold, 2 "~" release, 4 "$" direction
 * group, 8 ">" nothing between), the ticks after "~" in the top 16.
 */
using QCommandStep = quint64;

namespace CommandStep {
inline quint32 keys(QCommandStep step) { return quint32(step); }
inline quint16 modifiers(QCommandStep step) { return quint16(step >> 32); }
inline quint16 ticks(QCommandStep step) { return quint16(step >> 48); }
inline QCommandStep make(quint32 keys, quint16 modifiers, quint16 ticks)
{
    return QCommandStep(keys) | QCommandStep(modifiers) << 32 | QCommandStep(ticks) << 48;
}
} // namespace CommandStep

/** A parameter holding a command's key sequence: command = ~D, DF, F, x. */
class QCommandParam : public QGroupParam
{
    Q_OBJECT

public:
    void release() override;
    void update(const QList<QTextElementToken> &tokens) override;

    QList<QCommandStep> steps;
};

/** Recognises the comment line right above a header. */
class NameCmmReg : public QTextElementReg
{
public:
    int elementType() const override { return 1; }
    quint32 startRule() const override { return makeRule(1); }
    bool accepts(int position, const QTextElementToken &token) override;
    QTextElement *create() override;
};

/** Recognises "key = value" lines of one key. */
class ParamRegBase : public QTextElementReg
{
public:
    /** `subType` 1 takes a quoted text, 2 an integer, 3 anything. */
    ParamRegBase(const QString &key, int subType);

    int elementType() const override { return 4; }
    int elementSubType() const override { return m_subType; }
    quint32 startRule() const override { return m_rule; }
    bool accepts(int position, const QTextElementToken &token) override;

    QString key() const { return m_key; }

protected:
    /** Stamps the registry's key and subtype into a new parameter. */
    QTextElement *stamp(QGroupParam *param) const;

private:
    QString m_key;
    int m_subType;
    quint32 m_rule;
};

/** The parameter registry of one element class. */
template <class T>
class ParamReg : public ParamRegBase
{
public:
    using ParamRegBase::ParamRegBase;
    QTextElement *create() override { return stamp(QTextElementPool<T>::take()); }
};

/** Registers the name comment kind; once per process. */
void registerNameCommentElements();
/** Takes the name comment kind out of the global list again. */
void releaseNameCommentElements();

/**
 * Keeps the bonds between elements right after a parse: a name comment
 * names the header that follows it in the chain, and a parameter belongs to
 * the nearest header above it when that header keeps parameters. Only the
 * neighbourhood of what was added or removed is looked at.
 */
void linkGroups(const QList<QTextElementChange> &changes);
