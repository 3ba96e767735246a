#pragma once

#include "../base/qprojectfile.h"

#include <QObject>
#include <QString>

/**
 * The sound document of a project: the SND file, an ordered list of WAV
 * samples named by group and number.
 *
 * TODO: the sound list, its store, the SND reader and writer, playback and
 * the undo stack join this class; until then the list is always empty.
 */
class QSounds : public QObject, public QProjectFile
{
    Q_OBJECT

public:
    QSounds(QProjectOwner *project, int cacheType, bool compress, int level);
    ~QSounds() override;

    int count() const { return 0; }
    QString fileName() const { return m_fileName; }
    void setModified(bool modified);

    /** Reads an SND file. TODO: the SND reader fills this in; until then nothing is read. */
    bool fromFile(const QString &fileName, bool keepName);
    /** Writes an SND file. TODO: the SND writer fills this in; until then nothing is written. */
    bool toFile(const QString &fileName, bool asCopy);

    bool checkSave(quint32 version) override;
    bool checkDiscard() override;
    bool isModified() const override { return m_modified; }
    bool isEmpty() const override { return count() == 0; }
    void check() override;

Q_SIGNALS:
    void changed();
    void progress(uint pos, uint max, bool &allow);

private:
    int m_cacheType;
    bool m_compress;
    int m_level;
    QString m_fileName;
    bool m_modified = false;
};
