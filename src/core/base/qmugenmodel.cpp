#include "qmugenmodel.h"

#include "atomicfile.h"

#include <QDomDocument>
#include <QFile>
#include <QIcon>
#include <QTextStream>

QMugenModel *configuration = nullptr;

namespace {

const char *const DocType = "ZNLConfigML";
const char *const RootTag = "configuration";
const char *const EntryTag = "config";

QString installationKey(int i, const char *field)
{
    return QStringLiteral("mugen_%1_%2").arg(i).arg(QLatin1String(field));
}

} // namespace

QMugenModel::QMugenModel(QObject *parent)
    : QAbstractListModel(parent)
{
    loadDefaults();
}

QMugenModel::~QMugenModel()
{
    qDeleteAll(mugens);
}

void QMugenModel::loadDefaults()
{
    auto set = [this](const char *key, const QVariant &value) {
        config[QLatin1String(key)] = value;
    };
    set("language", QStringLiteral("en-us"));
    set("preset", QStringLiteral("Classic"));
    set("iconset", QString());
    set("stylesheet", QString());
    set("colorset", QString());
    set("use_opengl", false);
    set("zoom_level", 2);
    set("main_axis_x", 150);
    set("main_axis_y", 250);
    set("zoom_mode", 1);
    set("cache_type", 0);
    set("cache_compression", true);
    set("undo_limit", 64);
    set("max_history", 30);
    set("onion_effect", 1);
    set("onion_opacity", 100);
    set("thumb_size", 64);
    set("switch_to_imgpal", true);
    set("confirm_delete", true);
    set("confirm_close", true);
    set("confirm_editimg", true);
    set("show_addsprite_dialog", true);
    set("show_addsound_dialog", true);
    set("show_addpalette_dialog", true);
    set("backup_onload", false);
    set("ask_save_palettes", true);
    set("show_trans_color", false);
    set("sort_file_names", true);
    set("enable_file_watcher", false);
    set("show_spr_cross", true);
    set("show_anim_cross", true);
    set("show_left_panel", true);
    set("show_right_panel", true);
    set("show_sctrl_list", true);
    set("show_rulers", true);
    set("show_clsn1", true);
    set("show_clsn2", true);
    set("show_clsn_def1", true);
    set("show_clsn_def2", true);
    set("background_type", 1);
    set("background_x", -213);
    set("background_y", -208);
    set("background_file", QString());
    set("crosshair_type", 0);
    set("crosshair_sprite", QString());
    set("crosshair_animation", QString());
    set("crosshair_extra", QString());
    set("default_codepage", 0);
    set("font_name", QStringLiteral("Courier"));
    set("font_size", 10);
    set("code_line_numbers", true);
    set("code_highlight_line", true);
    set("code_highlight_blocks", false);
    set("code_folding_markers", true);
    set("code_paren_matching", true);
    set("auto_expand_tree", false);
    set("window_left", 0);
    set("window_top", 0);
    set("window_width", 580);
    set("window_height", 750);
    set("window_state", 0);
    set("clsn_opacity", 100);
}

bool QMugenModel::load(const QString &fileName)
{
    loadDefaults();

    QDomDocument document{QLatin1String(DocType)};
    const QDomElement root = readXmlRoot(document, fileName, QLatin1String(RootTag));
    if (root.isNull())
        return false;

    for (QDomElement e = root.firstChildElement(); !e.isNull(); e = e.nextSiblingElement()) {
        if (e.tagName() == QLatin1String(EntryTag))
            config[e.attribute(QStringLiteral("name"))] = QVariant(e.attribute(QStringLiteral("value")));
    }

    // Numbers may have gaps (a file edited by hand); each present name
    // makes one installation, renumbered from 0 at the next save.
    for (int i = 0; i < MaxInstallations; ++i) {
        const QString nameKey = installationKey(i, "name");
        if (!config.contains(nameKey))
            continue;
        add(config.value(nameKey).toString(), config.value(installationKey(i, "exe")).toString(),
            config.value(installationKey(i, "params")).toString(),
            config.value(installationKey(i, "icon")).toString());
    }
    return true;
}

bool QMugenModel::save(const QString &fileName)
{
    for (auto it = config.begin(); it != config.end();) {
        if (it.key().startsWith(QLatin1String("mugen_")))
            it = config.erase(it);
        else
            ++it;
    }
    for (int i = 0; i < mugens.size(); ++i) {
        const QMugenInfo *info = mugens.at(i);
        config[installationKey(i, "name")] = info->name;
        config[installationKey(i, "exe")] = info->exe;
        config[installationKey(i, "params")] = info->params;
        config[installationKey(i, "icon")] = info->icon;
    }

    QDomDocument document{QLatin1String(DocType)};
    QDomElement root = document.createElement(QLatin1String(RootTag));
    document.appendChild(root);
    for (auto it = config.cbegin(); it != config.cend(); ++it) {
        QDomElement entry = document.createElement(QLatin1String(EntryTag));
        entry.setAttribute(QStringLiteral("name"), it.key());
        entry.setAttribute(QStringLiteral("value"), it.value().toString());
        root.appendChild(entry);
    }
    return writeXmlAtomically(fileName, document);
}

bool QMugenModel::importConfiguration(const QString &fileName)
{
    clear();
    return load(fileName);
}

void QMugenModel::add(const QString &name, const QString &exe, const QString &params,
                      const QString &icon)
{
    const int row = int(mugens.size());
    beginInsertRows(QModelIndex(), row, row);
    mugens.append(new QMugenInfo{name, exe, params, icon});
    endInsertRows();
}

void QMugenModel::setInstallation(int row, const QMugenInfo &info)
{
    if (row < 0 || row >= mugens.size())
        return;
    *mugens[row] = info;
    const QModelIndex changed = index(row);
    Q_EMIT dataChanged(changed, changed);
}

void QMugenModel::remove(int row)
{
    if (row < 0 || row >= mugens.size())
        return;
    beginRemoveRows(QModelIndex(), row, row);
    delete mugens.takeAt(row);
    endRemoveRows();
}

void QMugenModel::move(int from, int to)
{
    if (from < 0 || from >= mugens.size() || to < 0 || to >= mugens.size() || from == to)
        return;
    // Qt's destination row is the place before which the row lands, counted
    // in the list as it was.
    beginMoveRows(QModelIndex(), from, from, QModelIndex(), to > from ? to + 1 : to);
    mugens.move(from, to);
    endMoveRows();
}

void QMugenModel::clear()
{
    beginResetModel();
    qDeleteAll(mugens);
    mugens.clear();
    endResetModel();
}

int QMugenModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(mugens.size());
}

QVariant QMugenModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= mugens.size())
        return QVariant();
    const QMugenInfo *info = mugens.at(index.row());
    switch (role) {
    case Qt::DisplayRole:
        return info->name;
    case Qt::DecorationRole:
        return QIcon(info->icon.isEmpty() ? QStringLiteral(":/imgs/Imgs/mugen.png") : info->icon);
    }
    return QVariant();
}
