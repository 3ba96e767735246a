#pragma once

#include <QAbstractListModel>

/**
 * A list model whose rows the organizer panel can delete, move and put in
 * order: the sprites, palettes, animations, commands and sounds.
 */
class QOrganizableObject : public QAbstractListModel
{
    Q_OBJECT

public:
    using QAbstractListModel::QAbstractListModel;

    /**
     * Opens one undo step around a change of many rows (`rows`, the rows
     * the user selected), so that moving or deleting them is undone at
     * once. Closed by endOrganize(); the two pair up, and nest.
     */
    virtual void beginOrganize(const QList<int> &rows) = 0;
    virtual void endOrganize() = 0;

public Q_SLOTS:
    /** Deletes the row `index`; nothing for a row out of range. */
    virtual void remove(int index) = 0;
    /** Moves the row `from` to the place `to`; nothing when either is out of range. */
    virtual void move(int from, int to) = 0;
    /** Puts the rows in their natural order. */
    virtual void autoOrganize() = 0;
};
