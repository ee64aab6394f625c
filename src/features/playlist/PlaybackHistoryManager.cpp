#include "PlaybackHistoryManager.h"

#include "core/model/TimeFormat.h"
#include "infrastructure/logging/Log.h"
#include "infrastructure/persistence/LibraryIdentity.h"
#include "infrastructure/persistence/SQLiteDatabase.h"

#include <algorithm>

namespace {

constexpr double kEdgeSeconds = 5.0;

std::optional<PlaybackRecord> recordFromRow(const SQLiteRow& row)
{
    const SQLiteValue id = row.value(QStringLiteral("id"), SQLiteValue::null());
    const SQLiteValue url = row.value(QStringLiteral("video_url"), SQLiteValue::null());
    const SQLiteValue title = row.value(QStringLiteral("title"), SQLiteValue::null());
    const SQLiteValue playedAt = row.value(QStringLiteral("last_played_at"), SQLiteValue::null());
    if (!id.isText() || !url.isText() || !title.isText() || !playedAt.isReal())
        return std::nullopt;
    const QUuid uuid = QUuid::fromString(id.toText());
    const QUrl videoURL(url.toText(), QUrl::StrictMode);
    if (uuid.isNull() || !videoURL.isValid() || videoURL.isEmpty())
        return std::nullopt;

    auto realOrZero = [&row](const char* column) {
        const SQLiteValue value = row.value(QLatin1String(column), SQLiteValue::null());
        return value.isReal() ? value.toReal() : 0.0;
    };
    return PlaybackRecord{uuid,
                          videoURL,
                          title.toText(),
                          realOrZero("last_position"),
                          realOrZero("duration"),
                          velmar::fromReferenceTimestamp(playedAt.toReal())};
}

} // namespace

PlaybackHistoryManager::PlaybackHistoryManager(SQLiteDatabase& db, int maxHistoryCount,
                                               QObject* parent)
    : QObject(parent)
    , m_db(db)
    , m_maxHistoryCount(maxHistoryCount)
{
    loadHistory();
}

void PlaybackHistoryManager::loadHistory()
{
    try {
        const QList<SQLiteRow> rows = m_db.query(
            QStringLiteral("SELECT * FROM playback_history ORDER BY last_played_at DESC LIMIT ?"),
            {SQLiteValue::integer(m_maxHistoryCount)});
        QList<PlaybackRecord> records;
        for (const SQLiteRow& row : rows) {
            if (auto record = recordFromRow(row))
                records << *record;
        }
        m_history = records;
        Q_EMIT historyChanged();
    } catch (const std::exception& error) {
        velmar::logLine(QStringLiteral("[PlaybackHistoryManager] loadHistory failed: ") +
                        QString::fromUtf8(error.what()));
    }
}

void PlaybackHistoryManager::recordPosition(const QUrl& videoURL, const QString& title,
                                            double position, double duration)
{
    // The opening seconds are not worth resuming, and a file watched to its end starts over.
    if (!(position > kEdgeSeconds && duration - kEdgeSeconds > position))
        return;
    const QDateTime now = QDateTime::currentDateTimeUtc();
    const double nowSeconds = velmar::toReferenceTimestamp(now);
    const QString urlText = LibraryIdentity::urlText(videoURL);

    auto existing = std::find_if(m_history.begin(), m_history.end(),
                                 [&](const PlaybackRecord& r) { return r.videoURL == videoURL; });
    try {
        if (existing != m_history.end()) {
            existing->lastPosition = position;
            existing->duration = duration;
            existing->lastPlayedAt = now;
            Q_EMIT historyChanged();
            m_db.execute(QStringLiteral("    UPDATE playback_history SET last_position = ?, "
                                        "duration = ?, last_played_at = ?\n"
                                        "    WHERE video_url = ?"),
                         {SQLiteValue::real(position), SQLiteValue::real(duration),
                          SQLiteValue::real(nowSeconds), SQLiteValue::text(urlText)});
            return;
        }

        const PlaybackRecord record{QUuid::createUuid(), videoURL, title, position, duration, now};
        m_history.prepend(record);
        Q_EMIT historyChanged();
        m_db.execute(QStringLiteral("    INSERT OR REPLACE INTO playback_history (id, video_url, "
                                    "title, last_position, duration, last_played_at)\n"
                                    "    VALUES (?, ?, ?, ?, ?, ?)"),
                     {SQLiteValue::text(LibraryIdentity::uuidText(record.id)),
                      SQLiteValue::text(urlText), SQLiteValue::text(title),
                      SQLiteValue::real(position), SQLiteValue::real(duration),
                      SQLiteValue::real(nowSeconds)});
    } catch (const std::exception&) {
        // Writes are best effort: the in-memory history is what the session uses.
    }

    if (m_history.size() > m_maxHistoryCount) {
        m_history.resize(m_maxHistoryCount);
        Q_EMIT historyChanged();
        try {
            m_db.execute(QStringLiteral("    DELETE FROM playback_history WHERE id NOT IN (\n"
                                        "        SELECT id FROM playback_history ORDER BY "
                                        "last_played_at DESC LIMIT ?\n"
                                        "    )"),
                         {SQLiteValue::integer(m_maxHistoryCount)});
        } catch (const std::exception&) {
        }
    }
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
