#include "qsprites.h"

#include "../base/qmugenmodel.h"
#include "../base/quserprompt.h"
#include "spritecommands.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMultiHash>
#include <QSet>

namespace {

constexpr int DefaultUndoLimit = 64;

int undoLimit()
{
    if (configuration) {
        bool ok = false;
        const int limit = configuration->config.value(QStringLiteral("undo_limit")).toInt(&ok);
        if (ok && limit >= 0)
            return limit;
    }
    return DefaultUndoLimit;
}

/** The two sprites that the engine shows with the character's own palette. */
bool isCharacterPaletteSprite(const QSprite *sprite)
{
    return (sprite->itemGroup() == 9000 || sprite->itemGroup() == 0) && sprite->itemIndex() == 0;
}

/**
 * One warning `text` (with %2 group, %3 index, %4 number) for each item
 * before `p` in `items` with the group and index of item `p`, from the
 * closest back. The number counts down from `p` as the walk goes back: it
 * is the other item's number as the editor shows it, from 1. `line` is 0
 * for sprites and 1 for palettes.
 */
template <class Item>
void reportCollisions(QMessages &out, const QList<Item *> &items, int p, int line, const QString &text)
{
    const Item *item = items.at(p);
    for (int j = p - 1, number = p; j >= 0; --j, --number) {
        if (items.at(j)->itemGroup() == item->itemGroup() && items.at(j)->itemIndex() == item->itemIndex())
            out.add(QMessages::Warning, text.arg(item->itemGroup()).arg(item->itemIndex()).arg(number), p, line);
    }
}

bool inGroupOrder(int groupA, int indexA, int groupB, int indexB)
{
    return groupA < groupB || (groupA == groupB && indexA < indexB);
}

/** A macro that the first change needing it opens, closed when the object goes; none if nothing changed. */
class LazyMacro
{
public:
    LazyMacro(QSprites *set, const QString &text)
        : m_set(set)
        , m_text(text)
    {
    }
    ~LazyMacro()
    {
        if (m_opened)
            m_set->endMacro();
    }
    LazyMacro(const LazyMacro &) = delete;
    LazyMacro &operator=(const LazyMacro &) = delete;

    void open()
    {
        if (!m_opened)
            m_set->beginMacro(m_text);
        m_opened = true;
    }

private:
    QSprites *m_set;
    QString m_text;
    bool m_opened = false;
};

QClipboard *clipboard()
{
    // kestrada-cli runs on a plain QCoreApplication, which has no clipboard.
    return qobject_cast<QGuiApplication *>(QCoreApplication::instance()) ? QGuiApplication::clipboard() : nullptr;
}

} // namespace

QSprites::QSprites(QProjectOwner *project, int cacheType, bool compress, int level)
    : QProjectFile(project, FileSprites)
    , m_cache(QStringLiteral("mugenspr"), cacheType, compress, level)
    , m_palettes(this)
{
    m_undoStack.setUndoLimit(undoLimit());
    connect(&m_undoStack, &QUndoStack::indexChanged, this, &QSprites::undoIndexChanged);
}

QSprites::~QSprites()
{
    // The stack reports its clearing; nobody may hear it from a set half gone.
    disconnect(&m_undoStack, nullptr, this, nullptr);
    m_undoStack.clear();
    // The store first, in one go: handle by handle, a store on disk would
    // move everything behind each image again.
    m_cache.clear();
    qDeleteAll(m_sprites);
    m_sprites.clear();
    qDeleteAll(m_palettes.m_palettes);
    m_palettes.m_palettes.clear();
}

void QSprites::push(QUndoCommand *command)
{
    if (m_undoEnabled)
        m_undoStack.push(command);
    else
        delete command;
}

void QSprites::beginMacro(const QString &text)
{
    m_macros.append(m_undoEnabled);
    if (m_undoEnabled)
        m_undoStack.beginMacro(text);
}

void QSprites::endMacro()
{
    if (!m_macros.isEmpty() && m_macros.takeLast())
        m_undoStack.endMacro();
}

void QSprites::touch()
{
    if (!m_undoEnabled && !m_replaying) {
        // A change the stack doesn't know of: its positions may no longer
        // name the same items, and the saved state is out of its reach.
        if (m_macros.isEmpty() && m_undoStack.count() > 0)
            m_undoStack.clear();
        m_undoStack.resetClean();
    }
    m_modified = true;
    if (!m_blockChanged) {
        Q_EMIT changed();
        notifyOwner();
    }
}

void QSprites::undoIndexChanged()
{
    // Undo and redo come back to the saved state, or leave it.
    const bool modified = !m_undoStack.isClean();
    if (modified == m_modified)
        return;
    m_modified = modified;
    if (!m_blockChanged) {
        Q_EMIT changed();
        notifyOwner();
    }
}

void QSprites::setModified(bool modified)
{
    if (modified)
        m_undoStack.resetClean();
    else
        m_undoStack.setClean();
    m_modified = modified;
    if (!m_blockChanged) {
        Q_EMIT changed();
        notifyOwner();
    }
}

void QSprites::spriteChanged(QSprite *sprite)
{
    const int row = int(m_sprites.indexOf(sprite));
    if (row >= 0)
        Q_EMIT dataChanged(index(row), index(row));
    touch();
}

void QSprites::paletteChanged(QSpritePalette *palette)
{
    const int row = int(m_palettes.m_palettes.indexOf(palette));
    if (row >= 0)
        Q_EMIT m_palettes.dataChanged(m_palettes.index(row), m_palettes.index(row));
    touch();
}

void QSprites::dataReplaced(const QSpriteData *data)
{
    for (int row = 0; row < count(); ++row) {
        if (m_sprites.at(row)->data() == data)
            Q_EMIT dataChanged(index(row), index(row));
    }
    touch();
}

void QSprites::colorsReplaced(const QRGBPal *colors)
{
    for (int row = 0; row < paletteCount(); ++row) {
        if (paletteAt(row)->rgbPal() == colors)
            Q_EMIT m_palettes.dataChanged(m_palettes.index(row), m_palettes.index(row));
    }
    touch();
}

void QSprites::insertSprite(int at, QSprite *sprite)
{
    beginInsertRows(QModelIndex(), at, at);
    m_sprites.insert(at, sprite);
    endInsertRows();
    touch();
}

QSprite *QSprites::takeSprite(int at)
{
    beginRemoveRows(QModelIndex(), at, at);
    QSprite *sprite = m_sprites.takeAt(at);
    endRemoveRows();
    touch();
    return sprite;
}

void QSprites::moveSprite(int from, int to)
{
    beginMoveRows(QModelIndex(), from, from, QModelIndex(), to > from ? to + 1 : to);
    m_sprites.move(from, to);
    endMoveRows();
    touch();
}

void QSprites::insertPaletteObject(int at, QSpritePalette *palette)
{
    m_palettes.beginInsertRows(QModelIndex(), at, at);
    m_palettes.m_palettes.insert(at, palette);
    m_palettes.endInsertRows();
    touch();
}

QSpritePalette *QSprites::takePalette(int at)
{
    QSpritePalette *palette = m_palettes.m_palettes.at(at);
    for (QSprite *sprite : std::as_const(m_sprites)) {
        if (sprite->m_palette == palette) {
            sprite->m_palette = nullptr;
            spriteChanged(sprite);
        }
    }
    m_palettes.beginRemoveRows(QModelIndex(), at, at);
    m_palettes.m_palettes.removeAt(at);
    m_palettes.endRemoveRows();
    touch();
    return palette;
}

void QSprites::movePaletteObject(int from, int to)
{
    m_palettes.beginMoveRows(QModelIndex(), from, from, QModelIndex(), to > from ? to + 1 : to);
    m_palettes.m_palettes.move(from, to);
    m_palettes.endMoveRows();
    touch();
}

QSprite *QSprites::add()
{
    return insert(count());
}

QSprite *QSprites::insert(int i)
{
    const int at = std::clamp(i, 0, count());
    auto *sprite = new QSprite(this);
    insertSprite(at, sprite);
    if (m_undoEnabled)
        push(new SpriteInsert(this, at));
    return sprite;
}

void QSprites::remove(int i)
{
    if (i < 0 || i >= count())
        return;
    if (m_undoEnabled)
        push(new SpriteRemove(this, i));
    delete takeSprite(i);
}

void QSprites::clear()
{
    beginResetModel();
    m_cache.clear();
    qDeleteAll(m_sprites);
    m_sprites.clear();
    endResetModel();
    m_fileName.clear();
    m_paletteType = 0;
    m_readProblems.clear();
    m_currentIndex = 0;
    m_undoStack.clear();
    setModified(false);
}

void QSprites::move(int from, int to)
{
    if (from == to || from < 0 || to < 0 || from >= count() || to >= count())
        return;
    if (m_undoEnabled)
        push(new SpriteMove(this, from, to));
    moveSprite(from, to);
}

int QSprites::find(int start, int group, int index) const
{
    for (int i = std::max(start, 0); i < count(); ++i) {
        if (m_sprites.at(i)->itemGroup() == group && m_sprites.at(i)->itemIndex() == index)
            return i;
    }
    return -1;
}

bool QSprites::hasIndexedSprite() const
{
    return std::any_of(m_sprites.cbegin(), m_sprites.cend(), [](const QSprite *sprite) {
        return sprite->data() && sprite->data()->format() == QImageInfo::Indexed;
    });
}

QSprite *QSprites::spriteWithEntry(const QStreamCacheEntry *entry) const
{
    for (QSprite *sprite : m_sprites) {
        if (sprite->data() && sprite->data()->entry() == entry)
            return sprite;
    }
    return nullptr;
}

QSpritePalette *QSprites::paletteWithColors(const QRGBPal &colors, const QSpritePalette *except) const
{
    for (QSpritePalette *palette : m_palettes.m_palettes) {
        if (palette != except && palette->rgbPal() && palette->rgbPal()->sameColors(colors))
            return palette;
    }
    return nullptr;
}

QSpritePalette *QSprites::addPalette(const QRGBPal &colors, bool matchExisting, int group, int index)
{
    return insertPalette(paletteCount(), colors, matchExisting, group, index);
}

QSpritePalette *QSprites::addPalette(const QList<QRgb> &colors, bool matchExisting, int group, int index)
{
    return insertPalette(paletteCount(), QRGBPal::fromColorVector(colors), matchExisting, group, index);
}

QSpritePalette *QSprites::insertPalette(int at, const QList<QRgb> &colors, bool matchExisting, int group, int index)
{
    return insertPalette(at, QRGBPal::fromColorVector(colors), matchExisting, group, index);
}

QSpritePalette *QSprites::insertPalette(int at, const QRGBPal &colors, bool matchExisting, int group, int index)
{
    if (matchExisting) {
        if (QSpritePalette *same = paletteWithColors(colors, nullptr))
            return same;
    }
    if (index < 0) {
        // One more than the highest index of the group, in 16 bits as files
        // hold it: after 65535 comes 0.
        bool found = false;
        int highest = 0;
        for (const QSpritePalette *palette : std::as_const(m_palettes.m_palettes)) {
            if (palette->itemGroup() == group && (!found || palette->itemIndex() > highest)) {
                highest = palette->itemIndex();
                found = true;
            }
        }
        index = found ? quint16(quint16(highest) + 1) : 0;
    }
    auto *palette = new QSpritePalette(this);
    palette->m_group = group;
    palette->m_index = index;
    if (QSpritePalette *same = paletteWithColors(colors, nullptr)) {
        palette->m_colors = same->m_colors;
    } else {
        palette->m_colors = new QRGBPal(colors);
        palette->m_colors->refCount = 0;
    }
    ++palette->m_colors->refCount;
    // 32 colours when everything from entry 32 on repeats entry 255: the
    // palettes of 5-bit sprites.
    int last = 254;
    while (last > 0 && std::memcmp(&colors.entries[last], &colors.entries[255], sizeof(QRGBPalEntry)) == 0)
        --last;
    palette->m_colorCount = last < 32 ? 32 : 256;

    at = std::clamp(at, 0, paletteCount());
    insertPaletteObject(at, palette);
    if (m_undoEnabled)
        push(new PaletteInsert(this, at));
    return palette;
}

void QSprites::removePalette(int i)
{
    QSpritePalette *palette = paletteAt(i);
    if (!palette)
        return;
    beginMacro(QStringLiteral("removePalette"));
    // Its sprites move to the first palette that stays, before it goes, so
    // that undo finds the palette back in place when it points them at it.
    QSpritePalette *replacement = paletteAt(i == 0 ? 1 : 0);
    for (QSprite *sprite : std::as_const(m_sprites)) {
        if (sprite->palette() == palette)
            sprite->setPalette(replacement);
    }
    dropPalette(i);
    endMacro();
}

void QSprites::movePalette(int from, int to)
{
    if (from == to || from < 0 || to < 0 || from >= paletteCount() || to >= paletteCount())
        return;
    if (m_undoEnabled)
        push(new PaletteMove(this, from, to));
    movePaletteObject(from, to);
}

void QSprites::dropPalette(int i)
{
    if (m_undoEnabled)
        push(new PaletteRemove(this, i));
    delete takePalette(i);
}

void QSprites::removeDuplicatePalettes()
{
    LazyMacro macro(this, QStringLiteral("removeDuplicatePalettes"));
    for (int i = paletteCount() - 1; i > 0; --i) {
        QSpritePalette *palette = paletteAt(i);
        if (!palette->rgbPal())
            continue;
        // The same array first, then the same colours in another array.
        QSpritePalette *twin = nullptr;
        for (int j = 0; j < i && !twin; ++j) {
            if (paletteAt(j)->rgbPal() == palette->rgbPal())
                twin = paletteAt(j);
        }
        for (int j = 0; j < i && !twin; ++j) {
            if (paletteAt(j)->rgbPal() && paletteAt(j)->rgbPal()->sameColors(*palette->rgbPal()))
                twin = paletteAt(j);
        }
        if (!twin)
            continue;
        macro.open();
        for (QSprite *sprite : std::as_const(m_sprites)) {
            if (sprite->palette() == palette)
                sprite->setPalette(twin);
        }
        dropPalette(i);
    }
}

void QSprites::removeUnusedPalettes()
{
    QSet<const QSpritePalette *> used;
    for (const QSprite *sprite : std::as_const(m_sprites))
        used.insert(sprite->palette());
    LazyMacro macro(this, QStringLiteral("removeUnusedPalettes"));
    for (int i = paletteCount() - 1; i >= 0; --i) {
        // Group 1 holds the character's palettes, which the engine picks
        // from outside: no sprite needs to point at them.
        if (used.contains(paletteAt(i)) || paletteAt(i)->itemGroup() == 1)
            continue;
        macro.open();
        dropPalette(i);
    }
}

void QSprites::clearPalettes()
{
    if (paletteCount() == 0)
        return;
    beginMacro(QStringLiteral("clearPalettes"));
    for (QSprite *sprite : std::as_const(m_sprites))
        sprite->setPalette(nullptr);
    for (int i = paletteCount() - 1; i >= 0; --i)
        dropPalette(i);
    endMacro();
}

int QSprites::findPalette(int start, int group, int index) const
{
    for (int i = std::max(start, 0); i < paletteCount(); ++i) {
        if (paletteAt(i)->itemGroup() == group && paletteAt(i)->itemIndex() == index)
            return i;
    }
    return -1;
}

bool QSprites::inScope(int position, bool all, int group, bool allInGroup, int start, int end) const
{
    const QSprite *sprite = at(position);
    if (all)
        return true;
    return sprite->itemGroup() == group
           && (allInGroup || (sprite->itemIndex() >= start && sprite->itemIndex() <= end));
}

void QSprites::removeGroup(int group, bool allInGroup, int start, int end)
{
    beginMacro(QStringLiteral("removeGroup"));
    for (int i = count() - 1; i >= 0; --i) {
        if (inScope(i, false, group, allInGroup, start, end))
            remove(i);
    }
    endMacro();
}

void QSprites::renameGroup(int group, int newGroup, bool allInGroup, int start, int end)
{
    beginMacro(QStringLiteral("renameGroup"));
    for (int i = count() - 1; i >= 0; --i) {
        if (inScope(i, false, group, allInGroup, start, end))
            at(i)->setItemGroup(newGroup);
    }
    endMacro();
}

void QSprites::cropAll(bool all, int group, bool allInGroup, int start, int end)
{
    beginMacro(QStringLiteral("cropAll"));
    // A shared image is cropped once; its first crop moves every sharer's axis.
    QSet<const QSpriteData *> cropped;
    bool allow = true;
    const int total = count();
    for (int i = 0; i < total; ++i) {
        Q_EMIT progress(uint(i), uint(total), allow);
        if (!allow)
            break;
        QSprite *sprite = at(i);
        if (!inScope(i, all, group, allInGroup, start, end) || !sprite->data() || cropped.contains(sprite->data()))
            continue;
        cropped.insert(sprite->data());
        sprite->crop();
    }
    endMacro();
}

bool QSprites::standsBefore(const QSprite *i, const QSprite *j) const
{
    if (m_version != Version_101)
        return inGroupOrder(i->itemGroup(), i->itemIndex(), j->itemGroup(), j->itemIndex());

    // Version 1.01 shares a palette with the sprite before through a flag,
    // so sprites of one palette must stand together: the character's own
    // palette first, after the 9000 group whose sprites the engine shows
    // with it.
    if (i->itemGroup() == 9000)
        return j->itemGroup() != 9000 || i->itemIndex() < j->itemIndex();
    if (j->itemGroup() == 9000)
        return false;
    const QSpritePalette *a = i->palette();
    const QSpritePalette *b = j->palette();
    if (!a)
        return false;
    if (!b)
        return true;
    if (a->itemGroup() == 1) {
        if (b->itemGroup() != 1)
            return true;
        return inGroupOrder(i->itemGroup(), i->itemIndex(), j->itemGroup(), j->itemIndex());
    }
    if (b->itemGroup() == 1)
        return false;
    if (a != b)
        return a->index() < b->index();
    return inGroupOrder(i->itemGroup(), i->itemIndex(), j->itemGroup(), j->itemIndex());
}

void QSprites::autoOrganize()
{
    beginMacro(QStringLiteral("autoOrganize"));
    // An insertion sort made of moves, so that the stack can take it back.
    for (int i = 1; i < count(); ++i) {
        for (int j = 0; j < i; ++j) {
            if (standsBefore(at(i), at(j))) {
                move(i, j);
                break;
            }
        }
    }
    endMacro();
}

bool QSprites::copy(int position) const
{
    const QSprite *sprite = at(position);
    QClipboard *board = clipboard();
    if (!sprite || !sprite->data() || !board)
        return false;
    QImage image = sprite->image(Default);
    image.setText(QStringLiteral("group"), QString::number(sprite->itemGroup()));
    image.setText(QStringLiteral("index"), QString::number(sprite->itemIndex()));
    image.setText(QStringLiteral("xaxis"), QString::number(sprite->offsetX()));
    image.setText(QStringLiteral("yaxis"), QString::number(sprite->offsetY()));
    image.setText(QStringLiteral("flags"), QString::number(sprite->flags()));
    board->setImage(image);
    return true;
}

bool QSprites::paste()
{
    QClipboard *board = clipboard();
    const QImage image = board ? board->image() : QImage();
    if (image.isNull())
        return false;
    const int at = count() == 0 ? 0 : std::clamp(m_currentIndex, 0, count());
    beginMacro(QStringLiteral("paste"));
    QSprite *sprite = insert(at);
    sprite->setInfo(image.text(QStringLiteral("group")).toInt(), image.text(QStringLiteral("index")).toInt(),
                    image.text(QStringLiteral("xaxis")).toInt(), image.text(QStringLiteral("yaxis")).toInt(),
                    quint16(image.text(QStringLiteral("flags")).toUInt()), nullptr);
    sprite->setImage(image, Share, false, OwnPalette);
    ++m_currentIndex;
    endMacro();
    return true;
}

void QSprites::axisBounds(bool all, int group, int start, int end, QPoint &maxAxis, QPoint &maxRest) const
{
    maxAxis = QPoint(0, 0);
    maxRest = QPoint(0, 0);
    for (int i = 0; i < count(); ++i) {
        if (!inScope(i, all, group, false, start, end))
            continue;
        const QSprite *sprite = at(i);
        const QImageInfo info = sprite->imageProperties();
        maxAxis.rx() = std::max(maxAxis.x(), sprite->offsetX());
        maxAxis.ry() = std::max(maxAxis.y(), sprite->offsetY());
        maxRest.rx() = std::max(maxRest.x(), int(info.width) - sprite->offsetX());
        maxRest.ry() = std::max(maxRest.y(), int(info.height) - sprite->offsetY());
    }
}

bool QSprites::checkSave(quint32 version)
{
    const QString title = tr("Save SFF");
    if (count() == 0) {
        userPrompt->warning(title, tr("You can't save an empty SFF because M.U.G.E.N. will not open it."));
        return false;
    }
    // Version 2.01 stores true colour images as they are, so a set without
    // any indexed sprite needs no palette at all.
    if (version == Version_201 && !hasIndexedSprite())
        return true;
    if (paletteCount() == 0) {
        userPrompt->warning(title, tr("You can't save this SFF without palettes."));
        return false;
    }
    return true;
}

bool QSprites::checkDiscard()
{
    return askDiscard(tr("Do you really want to discard the changes made in the sprites and/or palettes?"));
}

bool QSprites::isEmpty() const
{
    return count() == 0 && paletteCount() == 0;
}

void QSprites::addReadProblem(QObject *item, int severity, const QString &text)
{
    m_readProblems.append({item, severity, text});
}

void QSprites::check()
{
    QMessages &out = messages();
    out.begin();
    const bool character = (owner() ? owner()->projectType() : int(Character)) == Character;
    QMultiHash<const QObject *, const ReadProblem *> problems;
    for (const ReadProblem &problem : std::as_const(m_readProblems))
        problems.insert(problem.item.data(), &problem);
    // In the order they were found, after what the check itself says of the item.
    const auto reportProblems = [&out, &problems](const QObject *item, int p, int line) {
        const QList<const ReadProblem *> found = problems.values(item);
        for (auto it = found.crbegin(); it != found.crend(); ++it)
            out.add((*it)->severity, (*it)->text, p, line);
    };

    for (int p = 0; p < count(); ++p) {
        const QSprite *sprite = at(p);
        if (const QSpriteData *data = sprite->data()) {
            if (data->format() == QImageInfo::Indexed && !sprite->palette())
                out.add(QMessages::Error, tr("Indexed sprite without palette!"), p, 0);
            if (m_version != Version_201 && data->format() != QImageInfo::Indexed)
                out.add(QMessages::Error,
                        tr("Image format not supported for the current version (automatic conversion to 8bit "
                           "will be made on save)!"),
                        p, 0);
        } else {
            out.add(QMessages::Error, tr("Empty sprite!"), p, 0);
        }
        reportProblems(sprite, p, 0);
        // Version 1.01 passes a palette on only from the sprite just before.
        if (character && m_version == Version_101 && p > 0 && sprite->palette()
            && sprite->palette()->itemGroup() == 1 && !isCharacterPaletteSprite(sprite)) {
            const QSprite *previous = at(p - 1);
            if (!isCharacterPaletteSprite(previous)
                && (!previous->palette() || previous->palette()->itemGroup() != 1))
                out.add(QMessages::Warning, tr("Sprite can't receive the group 1 (character) palette at his position!"),
                        p, 0);
        }
        reportCollisions(out, m_sprites, p, 0, tr("The group %2, index %3 is already in use by sprite #%4!"));
    }

    if (character) {
        // The sprites the engine draws on its own screens, by ascending group.
        struct Required
        {
            int firstGroup;
            int groups;
            int indexes;
        };
        static const Required required[] = {{5000, 3, 3}, {5010, 3, 3}, {5020, 1, 3}, {5030, 3, 6},
                                            {5040, 3, 3}, {5060, 3, 2}, {5070, 3, 3}};
        for (const Required &r : required) {
            for (int group = r.firstGroup; group < r.firstGroup + r.groups; ++group) {
                for (int index = 0; index < r.indexes * 10; index += 10) {
                    if (find(0, group, index) < 0)
                        out.add(QMessages::Error, tr("Required sprite %1, %2 is missing!").arg(group).arg(index), -1, 0);
                }
            }
        }
    }

    for (int p = 0; p < paletteCount(); ++p) {
        const QSpritePalette *palette = paletteAt(p);
        if (!palette->rgbPal())
            out.add(QMessages::Error, tr("Empty palette!"), p, 1);
        reportProblems(palette, p, 1);
        reportCollisions(out, m_palettes.m_palettes, p, 1,
                         tr("The group %2, index %3 is already in use by palette #%4!"));
    }
    out.end();
}

QString QSprites::dump() const
{
    QString text = QStringLiteral("version %1 modified %2 sprites %3 palettes %4\n")
                       .arg(m_version, 8, 16, QLatin1Char('0'))
                       .arg(int(m_modified))
                       .arg(count())
                       .arg(paletteCount());
    for (int p = 0; p < count(); ++p) {
        const QSprite *sprite = at(p);
        const QSpriteData *data = sprite->data();
        text += QStringLiteral("sprite %1: %2,%3 axis %4,%5 flags %6 palette %7")
                    .arg(p)
                    .arg(sprite->itemGroup())
                    .arg(sprite->itemIndex())
                    .arg(sprite->offsetX())
                    .arg(sprite->offsetY())
                    .arg(sprite->flags())
                    .arg(sprite->palette() ? sprite->palette()->index() : -1);
        if (data) {
            // Sharing shows as the first sprite holding the same handle.
            int first = 0;
            while (at(first)->data() != data)
                ++first;
            text += QStringLiteral(" image %1x%2 format %3 pixels %4 handle %5 refs %6")
                        .arg(data->width())
                        .arg(data->height())
                        .arg(data->format())
                        .arg(QStreamCache::hash(data->pixels()), 16, 16, QLatin1Char('0'))
                        .arg(first)
                        .arg(data->refCount());
        }
        text += QLatin1Char('\n');
    }
    for (int p = 0; p < paletteCount(); ++p) {
        const QSpritePalette *palette = paletteAt(p);
        const QRGBPal *colors = palette->rgbPal();
        text += QStringLiteral("palette %1: %2,%3 count %4")
                    .arg(p)
                    .arg(palette->itemGroup())
                    .arg(palette->itemIndex())
                    .arg(palette->colorCount());
        if (colors) {
            int first = 0;
            while (paletteAt(first)->rgbPal() != colors)
                ++first;
            text += QStringLiteral(" colors %1 array %2 refs %3")
                        .arg(QStreamCache::hash(colors->toByteArray()), 16, 16, QLatin1Char('0'))
                        .arg(first)
                        .arg(colors->refCount);
        }
        text += QLatin1Char('\n');
    }
    return text;
}

int QSprites::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : count();
}

QVariant QSprites::data(const QModelIndex &index, int role) const
{
    const QSprite *sprite = index.isValid() ? at(index.row()) : nullptr;
    if (!sprite || (role != Qt::DisplayRole && role != Qt::ToolTipRole))
        return QVariant();
    return QStringLiteral("%1, %2").arg(sprite->itemGroup()).arg(sprite->itemIndex());
}
