#pragma once

#include "qsyntaxtexteditor.h"

#include <QSize>
#include <QStringList>

/** The files a DEF names, as `QDefinitions::files()` reads them. Paths use "/". */
struct QDefinitionsFiles
{
    /** The `pal` keys of [Files], in text order: the place is the palette's number, from 1. */
    QStringList palettes;
    /** The `cns` and `st...` keys of [Files], each file once. */
    QStringList states;
    /** The folder of the DEF, absolute. */
    QString directory;
    QString sprites;
    QString animations;
    QString sounds;
    QString commands;
};

/**
 * The DEF file of a project: from its sections it decides the project's
 * kind (character, stage, storyboard or font), the engine version it
 * targets and its coordinate space, and it names the other files.
 */
class QDefinitions : public QSyntaxTextEditor
{
    Q_OBJECT

public:
    explicit QDefinitions(QProjectOwner *project);

    /** The kind, a QProjectType value; a character until a DEF says otherwise. */
    int type() const { return m_type; }
    void setType(int type);
    /** The folder of the DEF file, absolute; empty until one is loaded. */
    QString directory() const { return m_directory; }
    /** The project's coordinate space, width and height. */
    QSize localcoord() const { return m_localcoord; }
    /** The engine the DEF names: Ikemen GO when its [Info] has an ikemenversion. */
    int definedTarget() const { return m_definedTarget; }
    /**
     * The user's choice of engine for the project, a QEngineTarget value,
     * which target() then gives. It holds for as long as the document
     * lives, whatever the DEF says; with `inDefinitions` the DEF says it
     * instead: its ikemenversion line is written, or removed, in one step
     * that undo takes back.
     */
    void chooseTarget(int target, bool inDefinitions = false);
    /** The project's name, from [Info] or given to a new project. */
    QString name() const;
    void setName(const QString &name);

    /**
     * The files the DEF names, read from the whole text in one pass of the
     * tokenizer (it works before any highlighting ran). Also takes the name
     * from [Info].
     */
    QDefinitionsFiles files();

    bool load(const QString &fileName, int codepage, bool keepName) override;
    void clear() override;

Q_SIGNALS:
    void typeChanged();
    void versionChanged();
    /** target() changed: the DEF or the user chose another engine. */
    void targetChanged();
    void nameChanged(const QString &name);

protected:
    QString discardQuestion() const override;
    /** Reads kind, engine version and coordinates from the sections. */
    void hierarchyChanged() override;

private:
    /** Gives the processor the chosen target, or the DEF's; tells when it changed. */
    void applyTarget();
    /** Adds an ikemenversion line to [Info] for Ikemen GO, or removes every one. */
    void writeTarget(int target);

    int m_type = Character;
    int m_definedTarget = TargetMugen;
    /** The user's choice, -1 for none. */
    int m_chosenTarget = -1;
    QSize m_localcoord = QSize(320, 240);
    QString m_directory;
};

/** Packs "1.1" or "1.0.2.5" into one byte a part, highest first; 0 when it isn't such a version. */
quint32 packEngineVersion(const QString &text);
