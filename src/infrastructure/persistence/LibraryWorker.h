#pragma once

#include "DatabaseManager.h"

#include <functional>
#include <QList>
#include <QObject>
#include <QTimer>

/// Runs the library's statements on the library thread, one at a time and in the order they
/// were handed over. A statement that finds the database locked by another connection stays
/// at the head of the queue and is tried again a moment later; everything behind it waits, so
/// no write is lost to a lock and none overtakes another. Other failures are final for that
/// statement (the caller's in-memory state keeps the change, as with every library write).
///
/// Lives on the library thread; every member runs there.
class LibraryWorker : public QObject
{
    Q_OBJECT

public:
    /// One queued job: runs against the database and answers whether it is done (false: the
    /// database was busy, try again later).
    using Job = std::function<bool(DatabaseManager&)>;

    explicit LibraryWorker(const QString& path);

    void enqueue(Job job);

private:
    void runQueue();

    DatabaseManager m_database;
    QList<Job> m_queue;
    QTimer m_retry;
};
