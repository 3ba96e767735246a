#include "qhandover.h"

#include <QDir>
#include <QSharedMemory>
#include <QTextStream>

QHandOver::QHandOver()
    : m_file(path())
{
}

QString QHandOver::path()
{
    return QDir::tempPath() + QLatin1String("/open.ks3");
}

bool QHandOver::openForFirstInstance()
{
    return m_file.open(QIODevice::WriteOnly);
}

bool QHandOver::append(const QString &fileName)
{
    if (!m_file.isOpen() && !m_file.open(QIODevice::Append))
        return false;
    m_file.seek(m_file.size());
    const QByteArray line = fileName.toLocal8Bit() + '\n';
    const bool written = m_file.write(line) == line.size();
    m_file.close();
    return written;
}

QStringList QHandOver::consume()
{
    QFile file(path());
    if (!file.open(QIODevice::ReadOnly))
        return QStringList();
    // The writer used the local 8-bit encoding; read it back the same way.
    const QString text = QString::fromLocal8Bit(file.readAll());
    const qint64 size = file.size();
    file.close();
    if (size > 0 && file.open(QIODevice::WriteOnly))
        file.close();
    return text.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

class QInstanceLock::Private
{
public:
    explicit Private(const QString &key)
        : memory(key)
    {
    }
    QSharedMemory memory;
};

QInstanceLock::QInstanceLock(const QString &key)
    : d(new Private(key))
{
    m_first = d->memory.create(1, QSharedMemory::ReadWrite);
    if (!m_first && d->memory.error() == QSharedMemory::AlreadyExists) {
        // On Unix a segment outlives a process that crashed, and would make
        // every later start a "second" instance that hands its files to
        // nobody. Attaching and detaching removes a segment that no living
        // process is attached to; a live first instance keeps it.
        QSharedMemory probe(key);
        if (probe.attach())
            probe.detach();
        m_first = d->memory.create(1, QSharedMemory::ReadWrite);
    }
}

QInstanceLock::~QInstanceLock()
{
    delete d;
}
