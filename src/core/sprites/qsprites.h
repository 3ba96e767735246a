#pragma once

#include "../base/qprojectfile.h"

#include <QObject>
#include <QString>

/**
 * The sprite document of a project: the SFF file with its sprites and
 * palettes.
 *
 * TODO: the sprite and palette lists, the image store, the SFF reader and
 * writer and the undo stack join this class; until then a set is always
 * empty, and counts, version, name and the modified flag are what it holds.
 */
class QSprites : public QObject, public QProjectFile
{
    Q_OBJECT

public:
    /** SFF versions: the four header bytes read as a little-endian number. */
    enum Version : quint32 {
        Version_101 = 0x01000100,
        Version_200 = 0x02000000,
        Version_201 = 0x02000100
    };

    /**
     * `cacheType` 0 keeps image data in memory and 1 on disk; `compress`
     * and `level` (-1 for the library's default) set the store's own
     * compression of raw pixels.
     */
    QSprites(QProjectOwner *project, int cacheType, bool compress, int level);
    ~QSprites() override;

    int count() const { return 0; }
    int paletteCount() const { return 0; }
    /** Whether any sprite holds an indexed image. */
    bool hasIndexedSprite() const { return false; }

    quint32 version() const { return m_version; }
    QString fileName() const { return m_fileName; }
    void setModified(bool modified);

    /**
     * Reads an SFF file. With `keepName` the set keeps the name it had.
     * TODO: the SFF reader fills this in; until then nothing is read.
     */
    bool fromFile(const QString &fileName, bool keepName);
    /**
     * Writes the set as an SFF file of `version` (0 for the set's own).
     * TODO: the SFF writer fills this in; until then nothing is written.
     */
    bool toFile(const QString &fileName, quint32 version, bool asCopy);

    bool checkSave(quint32 version) override;
    bool checkDiscard() override;
    bool isModified() const override { return m_modified; }
    bool isEmpty() const override;
    void check() override;

Q_SIGNALS:
    void changed();
    void progress(uint pos, uint max, bool &allow);

private:
    int m_cacheType;
    bool m_compress;
    int m_level;
    QString m_fileName;
    quint32 m_version = Version_201;
    bool m_modified = false;
};
