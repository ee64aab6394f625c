#pragma once

#include "SQLiteValue.h"

#include <chrono>
#include <map>
#include <memory>
#include <QCoroTask>
#include <QObject>
#include <QThread>

namespace velmar {
template <typename T> class Completion;
}
class LibraryWorker;

/// The player's library database, served from a thread of its own: the GUI thread hands it
/// statements and never waits for the disk, or for a lock another program holds on the file.
///
/// Statements run in the order they are handed over. A write that finds the database locked
/// is tried again until it lands (see LibraryWorker); reads see every write handed over before
/// them. A write that fails for good leaves the managers' change in memory only; the first such
/// failure (or a file that opened read-only, or not at all) is reported once, as
/// `cannotWrite`. Construction opens the file, checks it, creates the schema and migrates old
/// records on the library thread; a damaged file is set aside for a new one and reported as
/// `damagedFileSetAside`. The retention clean-up runs when asked for.
///
/// Owned by the application and handed to whoever stores things in it; GUI thread only.
class Library : public QObject
{
    Q_OBJECT

public:
    /// The library in the database file at `path`.
    explicit Library(const QString& path, QObject* parent = nullptr);
    /// Waits a moment for the writes still queued (a lock held elsewhere may keep some from
    /// landing; they are given up after a few seconds), then closes the database.
    ~Library() override;

    QString path() const { return m_path; }

    /// Queues a statement that returns no rows.
    void execute(SQLiteStatement statement);
    /// Queues a statement and delivers its rows on the GUI thread. A statement that fails, or
    /// one still queued when the library goes, delivers no rows.
    QCoro::Task<QList<SQLiteRow>> query(SQLiteStatement statement);
    /// Queues the retention clean-up.
    void cleanupExpiredData();
    /// Blocks until everything queued so far has run, or the timeout passes; false on timeout.
    /// For quitting and for tests; never on the GUI thread's normal paths.
    bool waitForPendingWrites(std::chrono::milliseconds timeout);

Q_SIGNALS:
    /// The database file was damaged and now lies at `keptAs`; a new, empty library serves.
    void damagedFileSetAside(const QString& keptAs);
    /// History, bookmarks and settings can no longer be stored (said once per library).
    void cannotWrite();

private:
    void reportWriteFailure();
    void deliverRows(quint64 query, const QList<SQLiteRow>& rows);

    QString m_path;
    bool m_writeFailureReported = false;
    quint64 m_lastQuery = 0;
    std::map<quint64, std::unique_ptr<velmar::Completion<QList<SQLiteRow>>>> m_pendingQueries;
    QThread m_thread;
    LibraryWorker* m_worker; // lives on m_thread
};
