#pragma once

#include "../base/qprojecttypes.h"
#include "qsyntaxproperties.h"

#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

/**
 * The vocabulary of the engine's text files, read from "syntax_mugen.xml":
 * state controllers with their parameters, background element types,
 * background controllers and font definition kinds, the keys of the
 * sections with fixed keys, the triggers, and the names that some
 * triggers take as their argument.
 *
 * The object owns its controllers. A reload empties the four controller
 * lists and overwrites the maps key by key; a failed reload changes
 * nothing.
 */
class QMugenSyntaxProperties : public QSyntaxProperties
{
public:
    /** The sections whose keys the file describes, in the order of their maps. */
    enum Section {
        Files,        ///< `<files>`: character DEF [Files]
        Arcade,       ///< `<arcade>`: character DEF [Arcade]
        Data,         ///< `<data>`: CNS [Data]
        Size,         ///< `<size>`: CNS [Size]
        Velocity,     ///< `<velocity>`: CNS [Velocity]
        Movement,     ///< `<movement>`: CNS [Movement]
        Camera,       ///< `<camera>`: stage [Camera]
        PlayerInfo,   ///< `<playerinfo>`: stage [PlayerInfo]
        Bound,        ///< `<bound>`: stage [Bound]
        Scaling,      ///< `<scaling>`: stage [Scaling]
        StageInfo,    ///< `<stageinfo>`: stage [StageInfo]
        Shadow,       ///< `<shadow>`: stage [Shadow]
        Reflection,   ///< `<reflection>`: stage [Reflection]
        Music,        ///< `<music>`: stage [Music]
        BgDef,        ///< `<bgdef>`: stage [BGDef]
        BgControlDef, ///< `<bg_control_def>`: [BGCtrlDef]
        Fnt,          ///< `<fnt>`: font [FNT v2]
        SceneDef,     ///< `<scene_def>`: storyboard [SceneDef]
        Scene,        ///< `<scene>`: storyboard [Scene n]
        Info,         ///< `<info>`: [Info] keys beyond those the checker knows itself
        StateCommon,  ///< `<state_common>`: parameters every state controller takes
        SectionCount
    };

    QMugenSyntaxProperties() = default;
    ~QMugenSyntaxProperties() override;

    bool load(const QString &fileName) override;

    /** The XML tag of a section's keys, "files" to "scene"; empty for an invalid section. */
    static QString sectionTag(Section section);

    /** `[State]` controllers (`type =` after `[State n]`), in file order. */
    const QList<QSyntaxController *> &stateControllers() const { return m_stateControllers; }
    /** Background element types (`type =` after `[BG name]`). */
    const QList<QSyntaxController *> &bgControllers() const { return m_bgControllers; }
    /** Background controllers (`type =` after `[BGCtrl name]`). */
    const QList<QSyntaxController *> &bgControls() const { return m_bgControls; }
    /** Font definition kinds (`type =` after `[Def]` of a font). */
    const QList<QSyntaxController *> &fontDefs() const { return m_fontDefs; }
    /** The keys of one section, key name to description; empty for an invalid section. */
    const QMap<QString, QSyntaxParam> &section(Section section) const;
    /** Trigger name to the grammar of what follows it. */
    const QMap<QString, QSyntaxParam> &triggers() const { return m_triggers; }
    /**
     * A group name, as written (the vocabulary file uses the lower-cased
     * name of the trigger: `const`, `gethitvar`), to the names that the
     * trigger's argument may be, in file order.
     */
    const QMap<QString, QStringList> &consts() const { return m_consts; }
    /**
     * The names of a group that only Ikemen GO takes (`<const engine="ikemen">`),
     * apart from consts(). The name "*" stands for any name: Ikemen GO reads
     * Const() of a name it doesn't know from the character's [Constants].
     */
    const QMap<QString, QStringList> &ikemenConsts() const { return m_ikemenConsts; }
    /**
     * The sections of names that the content chooses itself, such as [Map]
     * (`<group>`), lower-cased, to their description (its version and
     * engine). Their lines are read for their form.
     */
    const QMap<QString, QSyntaxParam> &groups() const { return m_groups; }

    /**
     * The index in `list` of the controller called `name`, compared without
     * regard to case as `type =` lines are; -1 when there is none.
     */
    static int indexOf(const QList<QSyntaxController *> &list, const QString &name);

    /**
     * The words to offer for completion of text made for `target` (a
     * QEngineTarget value): the names of every controller list, the triggers
     * and the keys of every section, sorted without regard to case, each
     * once. What only Ikemen GO reads is offered for Ikemen GO alone.
     */
    QStringList completionNames(int target = TargetMugen) const;

private:
    void clearLists();

    QList<QSyntaxController *> m_stateControllers;
    QList<QSyntaxController *> m_bgControllers;
    QList<QSyntaxController *> m_bgControls;
    QList<QSyntaxController *> m_fontDefs;
    QMap<QString, QSyntaxParam> m_sections[SectionCount];
    QMap<QString, QSyntaxParam> m_triggers;
    QMap<QString, QStringList> m_consts;
    QMap<QString, QStringList> m_ikemenConsts;
    QMap<QString, QSyntaxParam> m_groups;
};

/**
 * The process-wide vocabulary of engine text, read at start from
 * "syntax_mugen.xml" beside the program; may be null, and then every
 * controller is unknown to the processors.
 */
extern QMugenSyntaxProperties *mugenSyntax;
