#include "qmugensyntaxproperties.h"

#include <QDomDocument>
#include <QSet>

#include <algorithm>

QMugenSyntaxProperties *mugenSyntax = nullptr;

namespace {

// The tags of the section maps, in the order of QMugenSyntaxProperties::Section.
const char *const SectionTags[] = {
    "files", "arcade", "data", "size", "velocity", "movement", "camera",
    "playerinfo", "bound", "scaling", "stageinfo", "shadow", "reflection",
    "music", "bgdef", "bg_control_def", "fnt", "scene_def", "scene", "info", "state_common",
};
static_assert(sizeof(SectionTags) / sizeof(SectionTags[0]) == QMugenSyntaxProperties::SectionCount,
              "one tag for every section");

int sectionOfTag(const QString &tag)
{
    for (int section = 0; section < QMugenSyntaxProperties::SectionCount; ++section) {
        if (tag == QLatin1String(SectionTags[section]))
            return section;
    }
    return -1;
}

} // namespace

QMugenSyntaxProperties::~QMugenSyntaxProperties()
{
    clearLists();
}

void QMugenSyntaxProperties::clearLists()
{
    for (QList<QSyntaxController *> *list :
         {&m_stateControllers, &m_bgControllers, &m_bgControls, &m_fontDefs}) {
        qDeleteAll(*list);
        list->clear();
    }
}

bool QMugenSyntaxProperties::load(const QString &fileName)
{
    QDomDocument document;
    const Document opened = openDocument(fileName, document);
    if (opened == Document::Failed)
        return false;
    ++m_generation;
    clearLists();
    if (opened == Document::OtherRoot)
        return true;

    // A group read in this pass replaces the one of an earlier load; two
    // groups of one name in the same file add up.
    QSet<QString> constsRead;
    // A controller `like` another starts with the parameters of the one of
    // that name read before it in its list; its own replace them.
    const auto append = [](QList<QSyntaxController *> &list, const QDomElement &e) {
        QSyntaxController *controller = readController(e);
        const int model = indexOf(list, e.attribute(QStringLiteral("like")));
        if (model >= 0) {
            QMap<QString, QSyntaxParam> params = list.at(model)->params;
            for (auto it = controller->params.cbegin(); it != controller->params.cend(); ++it)
                params.insert(it.key(), it.value());
            controller->params = params;
        }
        list.append(controller);
    };
    const QDomElement root = document.documentElement();
    for (QDomElement e = root.firstChildElement(); !e.isNull(); e = e.nextSiblingElement()) {
        const QString tag = e.tagName();
        const QString name = e.attribute(QStringLiteral("name"));
        if (tag == QLatin1String("consts")) {
            QStringList &names = m_consts[name];
            QStringList &ikemenNames = m_ikemenConsts[name];
            if (!constsRead.contains(name)) {
                names.clear();
                ikemenNames.clear();
                constsRead.insert(name);
            }
            for (QDomElement c = e.firstChildElement(QStringLiteral("const")); !c.isNull();
                 c = c.nextSiblingElement(QStringLiteral("const")))
                (isIkemenOnly(c) ? ikemenNames : names).append(c.attribute(QStringLiteral("name")));
        } else if (tag == QLatin1String("state_controller")) {
            append(m_stateControllers, e);
        } else if (tag == QLatin1String("bg_controller")) {
            append(m_bgControllers, e);
        } else if (tag == QLatin1String("bg_control")) {
            append(m_bgControls, e);
        } else if (tag == QLatin1String("fnt_def")) {
            append(m_fontDefs, e);
        } else if (tag == QLatin1String("trigger")) {
            m_triggers.insert(name, readParam(e));
        } else if (tag == QLatin1String("group")) {
            m_groups.insert(name.toLower(), readParam(e));
        } else {
            // Any other element reads as a parameter; only section tags keep it,
            // so a newer file's additions are skipped without harm.
            const QSyntaxParam param = readParam(e);
            const int section = sectionOfTag(tag);
            if (section >= 0)
                m_sections[section].insert(name, param);
        }
    }
    m_ikemenConsts.removeIf([](const QMap<QString, QStringList>::iterator &it) { return it.value().isEmpty(); });
    return true;
}

QString QMugenSyntaxProperties::sectionTag(Section section)
{
    if (section < 0 || section >= SectionCount)
        return QString();
    return QLatin1String(SectionTags[section]);
}

const QMap<QString, QSyntaxParam> &QMugenSyntaxProperties::section(Section section) const
{
    static const QMap<QString, QSyntaxParam> none;
    if (section < 0 || section >= SectionCount)
        return none;
    return m_sections[section];
}

int QMugenSyntaxProperties::indexOf(const QList<QSyntaxController *> &list, const QString &name)
{
    for (int i = 0; i < list.size(); ++i) {
        if (list.at(i)->name.compare(name, Qt::CaseInsensitive) == 0)
            return i;
    }
    return -1;
}

QStringList QMugenSyntaxProperties::completionNames(int target) const
{
    const bool ikemen = target == TargetIkemen;
    QStringList names;
    for (const QList<QSyntaxController *> *list :
         {&m_stateControllers, &m_bgControllers, &m_bgControls, &m_fontDefs}) {
        for (const QSyntaxController *controller : *list) {
            if (ikemen || !controller->ikemenOnly)
                names.append(controller->name);
        }
    }
    const auto addKeys = [&names, ikemen](const QMap<QString, QSyntaxParam> &keys) {
        for (auto it = keys.cbegin(); it != keys.cend(); ++it) {
            if (ikemen || !it.value().ikemenOnly)
                names.append(it.key());
        }
    };
    addKeys(m_triggers);
    for (const QMap<QString, QSyntaxParam> &keys : m_sections)
        addKeys(keys);

    // The completer matches without regard to case, so "Anim" the trigger
    // and "anim" the key are one word; the first spelling met stays.
    QStringList unique;
    QSet<QString> seen;
    for (const QString &name : std::as_const(names)) {
        if (name.isEmpty())
            continue;
        const QString folded = name.toLower();
        if (seen.contains(folded))
            continue;
        seen.insert(folded);
        unique.append(name);
    }
    std::sort(unique.begin(), unique.end(), [](const QString &a, const QString &b) {
        return a.compare(b, Qt::CaseInsensitive) < 0;
    });
    return unique;
}
