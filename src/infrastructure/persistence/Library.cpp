#include "Library.h"

#include "base/Completion.h"
#include "LibraryWorker.h"
#include "SQLiteError.h"

#include <QSemaphore>

namespace {

// Quitting must end within a few seconds even when another program holds the file locked.
constexpr std::chrono::seconds kShutdownGrace{2};

enum class WriteResult { Done, Busy, Failed };

/// Runs a statement; Busy when another connection's lock stopped it and it should be tried
/// again.
WriteResult runWrite(DatabaseManager& database, const SQLiteStatement& statement)
{
    try {
        database.db().execute(statement.sql, statement.parameters);
    } catch (const SQLiteError& error) {
        return error.isBusy() ? WriteResult::Busy : WriteResult::Failed;
    }
    return WriteResult::Done;
}

} // namespace

Library::Library(const QString& path, QObject* parent)
    : QObject(parent)
    , m_path(path)
    , m_worker(new LibraryWorker(path))
{
    m_thread.setObjectName(QStringLiteral("org.velmar.VelmarPlayer.library"));
    m_worker->moveToThread(&m_thread);
    m_thread.start();
    QMetaObject::invokeMethod(m_worker, [worker = m_worker, library = this] {
        worker->enqueue([library](DatabaseManager& database) {
            using Outcome = DatabaseManager::SetupResult::Outcome;
            const DatabaseManager::SetupResult result = database.setup();
            if (result.outcome == Outcome::Busy)
                return false;
            QMetaObject::invokeMethod(
                library,
                [library, result] {
                    if (!result.setAsidePath.isEmpty())
                        Q_EMIT library->damagedFileSetAside(result.setAsidePath);
                    if (result.outcome == Outcome::ReadOnly ||
                        result.outcome == Outcome::Unavailable)
                        library->reportWriteFailure();
                },
                Qt::QueuedConnection);
            return true;
        });
    });
}

Library::~Library()
{
    waitForPendingWrites(kShutdownGrace);
    m_thread.quit();
    m_thread.wait();
    delete m_worker; // its thread has stopped: nothing else can touch it now
}

void Library::execute(SQLiteStatement statement)
{
    QMetaObject::invokeMethod(m_worker, [worker = m_worker, library = this,
                                         statement = std::move(statement)] {
        worker->enqueue([library, statement](DatabaseManager& database) {
            const WriteResult result = runWrite(database, statement);
            if (result == WriteResult::Failed)
                QMetaObject::invokeMethod(
                    library, [library] { library->reportWriteFailure(); }, Qt::QueuedConnection);
            return result != WriteResult::Busy;
        });
    });
}

void Library::reportWriteFailure()
{
    if (!std::exchange(m_writeFailureReported, true))
        Q_EMIT cannotWrite();
}

QCoro::Task<QList<SQLiteRow>> Library::query(SQLiteStatement statement)
{
    const quint64 query = ++m_lastQuery;
    auto pending = std::make_unique<velmar::Completion<QList<SQLiteRow>>>(QList<SQLiteRow>());
    auto rows = pending->result();
    m_pendingQueries.emplace(query, std::move(pending));
    // The library outlives its thread, so the worker may post back to it; a delivery still
    // queued when the library goes is discarded with it (and its waiter gets no rows).
    QMetaObject::invokeMethod(
        m_worker, [worker = m_worker, library = this, query, statement = std::move(statement)] {
            worker->enqueue([library, query, statement](DatabaseManager& database) {
                QList<SQLiteRow> found;
                try {
                    found = database.db().query(statement.sql, statement.parameters);
                } catch (const SQLiteError& error) {
                    if (error.isBusy())
                        return false;
                }
                QMetaObject::invokeMethod(
                    library, [library, query, found] { library->deliverRows(query, found); },
                    Qt::QueuedConnection);
                return true;
            });
        });
    const QList<SQLiteRow> found = co_await rows;
    co_return found;
}

void Library::deliverRows(quint64 query, const QList<SQLiteRow>& rows)
{
    const auto pending = m_pendingQueries.find(query);
    if (pending == m_pendingQueries.end())
        return;
    pending->second->complete(rows);
    m_pendingQueries.erase(pending);
}

void Library::cleanupExpiredData()
{
    QMetaObject::invokeMethod(m_worker, [worker = m_worker] {
        worker->enqueue([](DatabaseManager& database) {
            database.cleanupExpiredData();
            return true;
        });
    });
}

bool Library::waitForPendingWrites(std::chrono::milliseconds timeout)
{
    auto done = std::make_shared<QSemaphore>();
    QMetaObject::invokeMethod(m_worker, [worker = m_worker, done] {
        worker->enqueue([done](DatabaseManager&) {
            done->release();
            return true;
        });
    });
    return done->tryAcquire(1, int(timeout.count()));
}
