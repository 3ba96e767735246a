#include "quserdialogs.h"

namespace {
QCancellingUserDialogs cancellingDialogs;
}

QUserDialogs *userDialogs = &cancellingDialogs;

QRecordingUserDialogs::QRecordingUserDialogs()
    : m_previous(userDialogs)
{
    userDialogs = this;
}

QRecordingUserDialogs::~QRecordingUserDialogs()
{
    userDialogs = m_previous;
}

void QRecordingUserDialogs::answer(std::initializer_list<QVariant> answers)
{
    for (const QVariant &a : answers)
        m_answers.append(a);
}

QVariant QRecordingUserDialogs::next(Kind kind, const QString &title, const QString &where,
                                     const QString &filter)
{
    calls.append({kind, title, where, filter});
    return m_answers.isEmpty() ? QVariant() : m_answers.takeFirst();
}

QString QRecordingUserDialogs::openFileName(const QString &title, const QString &folder, const QString &filter)
{
    return next(OpenFile, title, folder, filter).toString();
}

QStringList QRecordingUserDialogs::openFileNames(const QString &title, const QString &folder,
                                                 const QString &filter)
{
    return next(OpenFiles, title, folder, filter).toStringList();
}

QString QRecordingUserDialogs::saveFileName(const QString &title, const QString &folder, const QString &filter,
                                            QString *selectedFilter)
{
    const QString name = next(SaveFile, title, folder, filter).toString();
    if (selectedFilter && !name.isEmpty())
        *selectedFilter = filter.section(QLatin1String(";;"), 0, 0);
    return name;
}

QString QRecordingUserDialogs::existingFolder(const QString &title, const QString &folder)
{
    return next(Folder, title, folder).toString();
}

QColor QRecordingUserDialogs::color(const QColor &initial, const QString &title)
{
    Q_UNUSED(initial)
    return next(Color, title, QString()).value<QColor>();
}

bool QRecordingUserDialogs::text(const QString &title, const QString &label, QString &value)
{
    const QVariant answer = next(Text, title, label);
    if (answer.isNull())
        return false;
    value = answer.toString();
    return true;
}

bool QRecordingUserDialogs::integer(const QString &title, const QString &label, int &value, int minimum,
                                    int maximum)
{
    const QVariant answer = next(Integer, title, label);
    if (answer.isNull())
        return false;
    value = qBound(minimum, answer.toInt(), maximum);
    return true;
}
