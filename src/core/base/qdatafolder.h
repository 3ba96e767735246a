#pragma once

#include <QString>
#include <QStringList>

/**
 * One of the program's data folders ("presets", "iconsets", "colorsets",
 * "styles"...), together with the user's copy of it.
 *
 * The program's folder stands beside the executable and holds what comes
 * with the program; the user's holds what the user added. An item found in
 * both is the user's: it is what the user made of it.
 */
class QDataFolder
{
public:
    /** `user` may be empty, for a folder users don't add to (and in tests). */
    explicit QDataFolder(const QString &program, const QString &user = QString());
    /** The program's folder `name` beside the executable, and the user's. */
    static QDataFolder named(const QString &name);

    /** The names of the sub-folders of both, sorted, each once, without those beginning with ".". */
    QStringList folderNames() const;
    /** The names of the files ending in `suffix` (".xml") in both, without it, sorted, each once. */
    QStringList fileNames(const QString &suffix) const;
    /** The path of `relative` in the user's folder when it exists there, else in the program's. */
    QString find(const QString &relative) const;
    /**
     * The folder to write an item the user made into: the program's when it
     * can be written, else the user's, which is then created.
     */
    QString writable() const;

    const QString &program() const { return m_program; }

private:
    QStringList names(bool folders, const QString &suffix) const;

    QString m_program;
    QString m_user;
};
