#include "LibraryTables.h"

#include "model/TimeFormat.h"

namespace LibraryTables {
namespace {

QString insertVerb(OnConflict conflict)
{
    switch (conflict) {
    case OnConflict::Ignore:
        return QStringLiteral("    INSERT OR IGNORE INTO ");
    case OnConflict::Replace:
        return QStringLiteral("    INSERT OR REPLACE INTO ");
    case OnConflict::Fail:
        break;
    }
    return QStringLiteral("    INSERT INTO ");
}

SQLiteValue column(const SQLiteRow& row, const char* name)
{
    return row.value(QLatin1String(name), SQLiteValue::null());
}

SQLiteValue timestamp(const QDateTime& time)
{
    return SQLiteValue::real(velmar::toReferenceTimestamp(time));
}

std::optional<QUuid> uuidFrom(const SQLiteValue& value)
{
    if (!value.isText())
        return std::nullopt;
    const QUuid id = QUuid::fromString(value.toText());
    return id.isNull() ? std::nullopt : std::optional(id);
}

std::optional<QUrl> urlFrom(const SQLiteValue& value)
{
    if (!value.isText())
        return std::nullopt;
    const QUrl url(value.toText(), QUrl::StrictMode);
    return url.isValid() && !url.isEmpty() ? std::optional(url) : std::nullopt;
}

} // namespace

QString urlText(const QUrl& url)
{
    return url.toString(QUrl::FullyEncoded);
}

QString uuidText(const QUuid& id)
{
    return id.toString(QUuid::WithoutBraces).toUpper();
}

// MARK: playback_history

SQLiteStatement selectHistory(int limit)
{
    return {QStringLiteral("SELECT * FROM playback_history ORDER BY last_played_at DESC LIMIT ?"),
            {SQLiteValue::integer(limit)}};
}

SQLiteStatement insertHistory(const PlaybackRecord& record, OnConflict conflict)
{
    return {insertVerb(conflict) +
                QStringLiteral("playback_history (id, video_url, title, last_position, "
                               "duration, last_played_at)\n    VALUES (?, ?, ?, ?, ?, ?)"),
            {SQLiteValue::text(uuidText(record.id)), SQLiteValue::text(urlText(record.videoURL)),
             SQLiteValue::text(record.title), SQLiteValue::real(record.lastPosition),
             SQLiteValue::real(record.duration), timestamp(record.lastPlayedAt)}};
}

SQLiteStatement updateHistoryPosition(const PlaybackRecord& record)
{
    return {QStringLiteral("    UPDATE playback_history SET last_position = ?, duration = ?, "
                           "last_played_at = ?\n    WHERE video_url = ?"),
            {SQLiteValue::real(record.lastPosition), SQLiteValue::real(record.duration),
             timestamp(record.lastPlayedAt), SQLiteValue::text(urlText(record.videoURL))}};
}

SQLiteStatement trimHistory(int keep)
{
    return {QStringLiteral("    DELETE FROM playback_history WHERE id NOT IN (\n        SELECT id "
                           "FROM playback_history ORDER BY last_played_at DESC LIMIT ?\n    )"),
            {SQLiteValue::integer(keep)}};
}

std::optional<PlaybackRecord> historyRecord(const SQLiteRow& row)
{
    const auto id = uuidFrom(column(row, "id"));
    const auto url = urlFrom(column(row, "video_url"));
    const SQLiteValue title = column(row, "title");
    const SQLiteValue playedAt = column(row, "last_played_at");
    if (!id || !url || !title.isText() || !playedAt.isReal())
        return std::nullopt;
    // A position or duration that was never stored reads as 0.
    auto realOrZero = [&row](const char* name) {
        const SQLiteValue value = column(row, name);
        return value.isReal() ? value.toReal() : 0.0;
    };
    return PlaybackRecord{*id,
                          *url,
                          title.toText(),
                          realOrZero("last_position"),
                          realOrZero("duration"),
                          velmar::fromReferenceTimestamp(playedAt.toReal())};
}

// MARK: bookmarks

SQLiteStatement selectBookmarks()
{
    return {QStringLiteral("SELECT * FROM bookmarks ORDER BY created_at DESC"), {}};
}

SQLiteStatement insertBookmark(const Bookmark& bookmark, OnConflict conflict)
{
    return {insertVerb(conflict) +
                QStringLiteral("bookmarks (id, video_url, time, name, created_at, "
                               "thumbnail_data)\n    VALUES (?, ?, ?, ?, ?, ?)"),
            {SQLiteValue::text(uuidText(bookmark.id)),
             SQLiteValue::text(urlText(bookmark.videoURL)), SQLiteValue::real(bookmark.time),
             SQLiteValue::text(bookmark.name), timestamp(bookmark.createdAt),
             bookmark.thumbnailData ? SQLiteValue::blob(*bookmark.thumbnailData)
                                    : SQLiteValue::null()}};
}

SQLiteStatement updateBookmarkThumbnail(const QUuid& id, const QByteArray& data)
{
    return {QStringLiteral("UPDATE bookmarks SET thumbnail_data = ? WHERE id = ?"),
            {SQLiteValue::blob(data), SQLiteValue::text(uuidText(id))}};
}

SQLiteStatement deleteBookmark(const QUuid& id)
{
    return {QStringLiteral("DELETE FROM bookmarks WHERE id = ?"),
            {SQLiteValue::text(uuidText(id))}};
}

SQLiteStatement deleteBookmarks(const QUrl& videoURL)
{
    return {QStringLiteral("DELETE FROM bookmarks WHERE video_url = ?"),
            {SQLiteValue::text(urlText(videoURL))}};
}

std::optional<Bookmark> bookmark(const SQLiteRow& row)
{
    const auto id = uuidFrom(column(row, "id"));
    const auto url = urlFrom(column(row, "video_url"));
    const SQLiteValue time = column(row, "time");
    const SQLiteValue name = column(row, "name");
    const SQLiteValue createdAt = column(row, "created_at");
    if (!id || !url || !time.isReal() || !name.isText() || !createdAt.isReal())
        return std::nullopt;
    const SQLiteValue thumbnail = column(row, "thumbnail_data");
    return Bookmark{*id,
                    *url,
                    time.toReal(),
                    name.toText(),
                    velmar::fromReferenceTimestamp(createdAt.toReal()),
                    thumbnail.isBlob() ? std::optional(thumbnail.toBlob()) : std::nullopt};
}

// MARK: per_file_settings

SQLiteStatement selectPerFileSettings()
{
    return {QStringLiteral("SELECT file_path, settings_json FROM per_file_settings"), {}};
}

SQLiteStatement insertPerFileSettings(const QString& filePath, const PerFileSettings& settings,
                                      const QDateTime& updatedAt, OnConflict conflict)
{
    return {insertVerb(conflict) + QStringLiteral("per_file_settings (file_path, settings_json, "
                                                  "updated_at)\n    VALUES (?, ?, ?)"),
            {SQLiteValue::text(filePath), SQLiteValue::text(QString::fromUtf8(settings.toJson())),
             timestamp(updatedAt)}};
}

SQLiteStatement deletePerFileSettings(const QString& filePath)
{
    return {QStringLiteral("DELETE FROM per_file_settings WHERE file_path = ?"),
            {SQLiteValue::text(filePath)}};
}

std::optional<std::pair<QString, PerFileSettings>> perFileSettings(const SQLiteRow& row)
{
    const SQLiteValue path = column(row, "file_path");
    const SQLiteValue json = column(row, "settings_json");
    if (!path.isText() || !json.isText())
        return std::nullopt;
    const auto settings = PerFileSettings::fromJson(json.toText().toUtf8());
    if (!settings)
        return std::nullopt;
    return std::pair(path.toText(), *settings);
}

} // namespace LibraryTables
