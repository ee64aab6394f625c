#pragma once

#include "model/Bookmark.h"
#include "model/PerFileSettings.h"
#include "model/PlaybackRecord.h"
#include "SQLiteValue.h"

#include <optional>
#include <QDateTime>
#include <QUrl>
#include <QUuid>
#include <utility>

/// Every statement the library runs on its three tables, each written once, with the readers
/// of their rows. The managers and the one-time migration from the preferences store share
/// them. URLs are stored as their full "file:///..." text, UUIDs in upper case without braces,
/// times as seconds since 2001-01-01.
namespace LibraryTables {

/// What an insert does when the row's key exists: fail, leave the old row, or replace it.
enum class OnConflict { Fail, Ignore, Replace };

QString urlText(const QUrl& url);
QString uuidText(const QUuid& id);

// playback_history
SQLiteStatement selectHistory(int limit);
SQLiteStatement insertHistory(const PlaybackRecord& record, OnConflict conflict);
SQLiteStatement updateHistoryPosition(const PlaybackRecord& record);
SQLiteStatement trimHistory(int keep);
/// Nothing for a row without a valid id, URL, title or time played.
std::optional<PlaybackRecord> historyRecord(const SQLiteRow& row);

// bookmarks
SQLiteStatement selectBookmarks();
SQLiteStatement insertBookmark(const Bookmark& bookmark, OnConflict conflict);
SQLiteStatement updateBookmarkThumbnail(const QUuid& id, const QByteArray& data);
SQLiteStatement deleteBookmark(const QUuid& id);
SQLiteStatement deleteBookmarks(const QUrl& videoURL);
std::optional<Bookmark> bookmark(const SQLiteRow& row);

// per_file_settings
SQLiteStatement selectPerFileSettings();
SQLiteStatement insertPerFileSettings(const QString& filePath, const PerFileSettings& settings,
                                      const QDateTime& updatedAt, OnConflict conflict);
SQLiteStatement deletePerFileSettings(const QString& filePath);
std::optional<std::pair<QString, PerFileSettings>> perFileSettings(const SQLiteRow& row);

} // namespace LibraryTables
