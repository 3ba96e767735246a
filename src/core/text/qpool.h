#pragma once

#include <QList>

/**
 * A pool of one class of object: objects given back are kept and handed out
 * again, so that re-parsing thousands of lines allocates nothing. All pooled
 * objects are destroyed at program exit.
 */
template <class T>
class QPool
{
public:
    static T *take()
    {
        QPool &pool = instance();
        if (!pool.m_free.isEmpty())
            return pool.m_free.takeLast();
        T *object = new T;
        pool.m_all.append(object);
        return object;
    }

    static void give(T *object) { instance().m_free.append(object); }
    /** Objects made so far, and those resting. For tests and statistics. */
    static int allocated() { return int(instance().m_all.size()); }
    static int resting() { return int(instance().m_free.size()); }

private:
    QPool() = default;
    ~QPool() { qDeleteAll(m_all); }

    static QPool &instance()
    {
        static QPool pool;
        return pool;
    }

    QList<T *> m_all;
    QList<T *> m_free;
};
