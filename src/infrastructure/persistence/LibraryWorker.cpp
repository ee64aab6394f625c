#include "LibraryWorker.h"

namespace {

// How long one attempt waits for another connection's lock, and the pause before the next
// attempt. Short waits keep the queue responsive to shutdown; the retries keep the writes.
constexpr int kBusyTimeoutMs = 100;
constexpr int kRetryDelayMs = 250;

} // namespace

LibraryWorker::LibraryWorker(const QString& path)
    : m_database(path)
    , m_retry(this) // a child, so that it moves to the library thread with the worker
{
    m_database.db().setBusyTimeout(kBusyTimeoutMs);
    m_retry.setSingleShot(true);
    m_retry.setInterval(kRetryDelayMs);
    connect(&m_retry, &QTimer::timeout, this, &LibraryWorker::runQueue);
}

void LibraryWorker::enqueue(Job job)
{
    m_queue.append(std::move(job));
    if (!m_retry.isActive())
        runQueue();
}

void LibraryWorker::runQueue()
{
    while (!m_queue.isEmpty()) {
        if (!m_queue.constFirst()(m_database)) {
            m_retry.start();
            return;
        }
        m_queue.removeFirst();
    }
}
