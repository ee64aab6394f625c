#include "BookmarkManager.h"

#include "core/model/TimeFormat.h"
#include "infrastructure/logging/Log.h"
#include "infrastructure/persistence/LibraryIdentity.h"
#include "infrastructure/persistence/SQLiteDatabase.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double kMinimumSpacingSeconds = 1.0;

std::optional<Bookmark> bookmarkFromRow(const SQLiteRow& row)
{
    auto column = [&row](const char* name) {
        return row.value(QLatin1String(name), SQLiteValue::null());
    };
    const SQLiteValue id = column("id");
    const SQLiteValue url = column("video_url");
    const SQLiteValue time = column("time");
    const SQLiteValue name = column("name");
    const SQLiteValue createdAt = column("created_at");
    if (!id.isText() || !url.isText() || !time.isReal() || !name.isText() || !createdAt.isReal())
        return std::nullopt;
    const QUuid uuid = QUuid::fromString(id.toText());
    const QUrl videoURL(url.toText(), QUrl::StrictMode);
    if (uuid.isNull() || !videoURL.isValid() || videoURL.isEmpty())
        return std::nullopt;
    const SQLiteValue thumbnail = column("thumbnail_data");
    return Bookmark{uuid,
                    videoURL,
                    time.toReal(),
                    name.toText(),
                    velmar::fromReferenceTimestamp(createdAt.toReal()),
                    thumbnail.isBlob() ? std::optional<QByteArray>(thumbnail.toBlob())
                                       : std::nullopt};
}

} // namespace

BookmarkManager::BookmarkManager(SQLiteDatabase& db, QObject* parent)
    : QObject(parent)
    , m_db(db)
{
    loadBookmarks();
}

void BookmarkManager::loadBookmarks()
{
    try {
        QList<Bookmark> loaded;
        for (const SQLiteRow& row :
             m_db.query(QStringLiteral("SELECT * FROM bookmarks ORDER BY created_at DESC"))) {
            if (auto bookmark = bookmarkFromRow(row))
                loaded << *bookmark;
        }
        m_bookmarks = loaded;
        Q_EMIT bookmarksChanged();
    } catch (const std::exception& error) {
        velmar::logLine(QStringLiteral("[BookmarkManager] loadBookmarks failed: ") +
                        QString::fromUtf8(error.what()));
    }
}

void BookmarkManager::executeQuietly(const QString& sql, const QList<SQLiteValue>& parameters)
{
    try {
        m_db.execute(sql, parameters);
    } catch (const std::exception&) {
        // Best effort: the in-memory list keeps the change for this session.
    }
}

std::optional<QUuid> BookmarkManager::add(const QUrl& videoURL, double time, const QString& name,
                                          const std::optional<QByteArray>& thumbnailData)
{
    const bool tooClose =
        std::any_of(m_bookmarks.begin(), m_bookmarks.end(), [&](const Bookmark& b) {
            return b.videoURL == videoURL && std::abs(b.time - time) < kMinimumSpacingSeconds;
        });
    if (tooClose)
        return std::nullopt;

    const Bookmark bookmark{
        QUuid::createUuid(), videoURL, time, name, QDateTime::currentDateTimeUtc(), thumbnailData};
    m_bookmarks << bookmark;
    Q_EMIT bookmarksChanged();
    executeQuietly(QStringLiteral("    INSERT INTO bookmarks (id, video_url, time, name, "
                                  "created_at, thumbnail_data)\n"
                                  "    VALUES (?, ?, ?, ?, ?, ?)"),
                   {SQLiteValue::text(LibraryIdentity::uuidText(bookmark.id)),
                    SQLiteValue::text(LibraryIdentity::urlText(videoURL)), SQLiteValue::real(time),
                    SQLiteValue::text(name),
                    SQLiteValue::real(velmar::toReferenceTimestamp(bookmark.createdAt)),
                    thumbnailData ? SQLiteValue::blob(*thumbnailData) : SQLiteValue::null()});
    return bookmark.id;
}

void BookmarkManager::updateThumbnail(const QUuid& id, const QByteArray& data)
{
    auto found = std::find_if(m_bookmarks.begin(), m_bookmarks.end(),
                              [&](const Bookmark& b) { return b.id == id; });
    if (found == m_bookmarks.end())
        return;
    found->thumbnailData = data;
    Q_EMIT bookmarksChanged();
    executeQuietly(QStringLiteral("UPDATE bookmarks SET thumbnail_data = ? WHERE id = ?"),
                   {SQLiteValue::blob(data), SQLiteValue::text(LibraryIdentity::uuidText(id))});
}

void BookmarkManager::remove(const Bookmark& bookmark)
{
    if (m_bookmarks.removeIf([&](const Bookmark& b) { return b.id == bookmark.id; }) > 0)
        Q_EMIT bookmarksChanged();
    executeQuietly(QStringLiteral("DELETE FROM bookmarks WHERE id = ?"),
                   {SQLiteValue::text(LibraryIdentity::uuidText(bookmark.id))});
}

void BookmarkManager::removeAllBookmarks(const QUrl& videoURL)
{
    if (m_bookmarks.removeIf([&](const Bookmark& b) { return b.videoURL == videoURL; }) > 0)
        Q_EMIT bookmarksChanged();
    executeQuietly(QStringLiteral("DELETE FROM bookmarks WHERE video_url = ?"),
                   {SQLiteValue::text(LibraryIdentity::urlText(videoURL))});
}

QList<Bookmark> BookmarkManager::bookmarks(const QUrl& videoURL) const
{
    QList<Bookmark> found;
    std::copy_if(m_bookmarks.begin(), m_bookmarks.end(), std::back_inserter(found),
                 [&](const Bookmark& b) { return b.videoURL == videoURL; });
    std::stable_sort(found.begin(), found.end(),
                     [](const Bookmark& a, const Bookmark& b) { return a.time < b.time; });
    return found;
}
