#include "PlaybackHistoryManager.h"

#include "infrastructure/persistence/Library.h"
#include "infrastructure/persistence/LibraryTables.h"

#include <algorithm>
#include <QPointer>

namespace {

constexpr double kEdgeSeconds = 5.0;

} // namespace

PlaybackHistoryManager::PlaybackHistoryManager(Library& library, int maxHistoryCount,
                                               QObject* parent)
    : QObject(parent)
    , m_library(library)
    , m_maxHistoryCount(maxHistoryCount)
{}

QCoro::Task<void> PlaybackHistoryManager::loadHistory()
{
    QPointer<PlaybackHistoryManager> self(this);
    QCoro::Task<QList<SQLiteRow>> reading =
        m_library.query(LibraryTables::selectHistory(m_maxHistoryCount));
    const QList<SQLiteRow> rows = co_await reading;
    if (!self)
        co_return;
    QList<PlaybackRecord> records;
    for (const SQLiteRow& row : rows) {
        if (auto record = LibraryTables::historyRecord(row))
            records << *record;
    }
    m_history = records;
    Q_EMIT historyChanged();
}

void PlaybackHistoryManager::recordPosition(const QUrl& videoURL, const QString& title,
                                            double position, double duration)
{
    // The opening seconds are not worth resuming, and a file watched to its end starts over.
    if (!(position > kEdgeSeconds && duration - kEdgeSeconds > position))
        return;
    const QDateTime now = QDateTime::currentDateTimeUtc();

    auto existing = std::find_if(m_history.begin(), m_history.end(),
                                 [&](const PlaybackRecord& r) { return r.videoURL == videoURL; });
    if (existing != m_history.end()) {
        existing->lastPosition = position;
        existing->duration = duration;
        existing->lastPlayedAt = now;
        Q_EMIT historyChanged();
        m_library.execute(LibraryTables::updateHistoryPosition(*existing));
        return;
    }

    const PlaybackRecord record{QUuid::createUuid(), videoURL, title, position, duration, now};
    m_history.prepend(record);
    m_library.execute(LibraryTables::insertHistory(record, LibraryTables::OnConflict::Replace));
    if (m_history.size() > m_maxHistoryCount) {
        m_history.resize(m_maxHistoryCount);
        m_library.execute(LibraryTables::trimHistory(m_maxHistoryCount));
    }
    Q_EMIT historyChanged();
}

std::optional<double> PlaybackHistoryManager::resumePosition(const QUrl& videoURL) const
{
    for (const PlaybackRecord& record : m_history) {
        if (record.videoURL == videoURL)
            return record.lastPosition;
    }
    return std::nullopt;
}

QList<PlaybackRecord> PlaybackHistoryManager::recentRecords(int limit) const
{
    QList<PlaybackRecord> records = m_history;
    std::stable_sort(records.begin(), records.end(),
                     [](const PlaybackRecord& a, const PlaybackRecord& b) {
                         return a.lastPlayedAt > b.lastPlayedAt;
                     });
    if (records.size() > limit)
        records.resize(std::max(limit, 0));
    return records;
}
