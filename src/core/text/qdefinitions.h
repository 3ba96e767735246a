#pragma once

#include "qsyntaxtexteditor.h"

#include <QSize>

/**
 * The DEF file of a project: from its sections it decides the project's
 * kind, the engine version it targets and its coordinate space.
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

    bool load(const QString &fileName, int codepage, bool keepName) override;
    void clear() override;
    void setVersion(quint32 version) override;

Q_SIGNALS:
    void typeChanged();
    void versionChanged();

protected:
    QString discardQuestion() const override;

private:
    int m_type = Character;
    QSize m_localcoord = QSize(320, 240);
    QString m_directory;
};
