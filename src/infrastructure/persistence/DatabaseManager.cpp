#include "DatabaseManager.h"

#include "core/model/TimeFormat.h"
#include "infrastructure/logging/Log.h"
#include "infrastructure/preferences/Preferences.h"
#include "LegacyRecords.h"
#include "LibraryIdentity.h"

#include <QStandardPaths>

namespace {

const QString kMigrationMarker = QStringLiteral("migrated_from_userdefaults");
const QString kLegacyHistoryKey = QStringLiteral("VelmarPlayer.PlaybackHistory");
const QString kLegacyBookmarksKey = QStringLiteral("VelmarPlayer.Bookmarks");
const QString kLegacyPerFileKey = QStringLiteral("VelmarPlayer.PerFileSettings");
constexpr double kRetentionSeconds = 7776000; // 90 days

const QString kSchema[] = {
    QStringLiteral("    CREATE TABLE IF NOT EXISTS schema_info (\n"
                   "        key TEXT PRIMARY KEY,\n"
                   "        value TEXT NOT NULL\n"
                   "    )"),
    QStringLiteral("    CREATE TABLE IF NOT EXISTS playback_history (\n"
                   "        id TEXT PRIMARY KEY,\n"
                   "        video_url TEXT NOT NULL UNIQUE,\n"
                   "        title TEXT NOT NULL,\n"
                   "        last_position REAL,\n"
                   "        duration REAL,\n"
                   "        last_played_at REAL NOT NULL\n"
                   "    )"),
    QStringLiteral("    CREATE TABLE IF NOT EXISTS bookmarks (\n"
                   "        id TEXT PRIMARY KEY,\n"
                   "        video_url TEXT NOT NULL,\n"
                   "        time REAL NOT NULL,\n"
                   "        name TEXT NOT NULL,\n"
                   "        created_at REAL NOT NULL,\n"
                   "        thumbnail_data BLOB\n"
                   "    )"),
    QStringLiteral("    CREATE INDEX IF NOT EXISTS idx_bookmarks_url ON bookmarks(video_url)"),
    QStringLiteral("    CREATE TABLE IF NOT EXISTS per_file_settings (\n"
                   "        file_path TEXT PRIMARY KEY,\n"
                   "        settings_json TEXT NOT NULL,\n"
                   "        updated_at REAL NOT NULL\n"
                   "    )"),
};

QString describe(const std::exception& error)
{
    return QString::fromUtf8(error.what());
}

} // namespace

DatabaseManager& DatabaseManager::shared()
{
    static DatabaseManager manager(defaultDatabasePath());
    return manager;
}

QString DatabaseManager::defaultDatabasePath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
           QStringLiteral("/VelmarPlayer/velmarplayer.db");
}

DatabaseManager::DatabaseManager(const QString& path)
    : m_path(path)
{}

void DatabaseManager::setup()
{
    try {
        m_db.open(m_path);
        createTables();
    } catch (const std::exception& error) {
        velmar::logLine(QStringLiteral("[DatabaseManager] setup failed: ") + describe(error));
        return;
    }
    migrateFromUserDefaults();
    cleanupExpiredData();
}

void DatabaseManager::createTables()
{
    for (const QString& statement : kSchema)
        m_db.execute(statement);
}

void DatabaseManager::migrateFromUserDefaults()
{
    try {
        if (!m_db.query(QStringLiteral("SELECT value FROM schema_info WHERE key = ?"),
                        {SQLiteValue::text(kMigrationMarker)})
                 .isEmpty())
            return;
    } catch (const std::exception&) {
        return;
    }

    try {
        m_db.execute(QStringLiteral("BEGIN TRANSACTION"));
    } catch (const std::exception& error) {
        velmar::logLine(
            QStringLiteral("[DatabaseManager] Migration failed (will retry next launch): ") +
            describe(error));
        return;
    }

    Preferences preferences;
    try {
        if (preferences.contains(kLegacyHistoryKey))
            migrateHistory(preferences.dataValue(kLegacyHistoryKey));
        if (preferences.contains(kLegacyBookmarksKey))
            migrateBookmarks(preferences.dataValue(kLegacyBookmarksKey));
        if (preferences.contains(kLegacyPerFileKey))
            migratePerFileSettings(preferences.dataValue(kLegacyPerFileKey));
        m_db.execute(QStringLiteral("INSERT INTO schema_info (key, value) VALUES (?, ?)"),
                     {SQLiteValue::text(kMigrationMarker), SQLiteValue::text(QStringLiteral("1"))});
        m_db.execute(QStringLiteral("COMMIT"));
    } catch (const std::exception& error) {
        try {
            m_db.execute(QStringLiteral("ROLLBACK"));
        } catch (const std::exception&) {
        }
        velmar::logLine(
            QStringLiteral("[DatabaseManager] Migration failed (will retry next launch): ") +
            describe(error));
        return;
    }

    // Only now that the rows are committed may the old copies go.
    preferences.remove(kLegacyHistoryKey);
    preferences.remove(kLegacyBookmarksKey);
    preferences.remove(kLegacyPerFileKey);
    velmar::logLine(QStringLiteral("[DatabaseManager] UserDefaults migration completed"));
}

void DatabaseManager::migrateHistory(const QByteArray& json)
{
    for (const PlaybackRecord& record : LegacyRecords::decodeHistory(json)) {
        m_db.execute(QStringLiteral("    INSERT OR IGNORE INTO playback_history (id, video_url, "
                                    "title, last_position, duration, last_played_at)\n"
                                    "    VALUES (?, ?, ?, ?, ?, ?)"),
                     {SQLiteValue::text(LibraryIdentity::uuidText(record.id)),
                      SQLiteValue::text(LibraryIdentity::urlText(record.videoURL)),
                      SQLiteValue::text(record.title), SQLiteValue::real(record.lastPosition),
                      SQLiteValue::real(record.duration),
                      SQLiteValue::real(velmar::toReferenceTimestamp(record.lastPlayedAt))});
    }
}

void DatabaseManager::migrateBookmarks(const QByteArray& json)
{
    for (const Bookmark& bookmark : LegacyRecords::decodeBookmarks(json)) {
        m_db.execute(QStringLiteral("    INSERT OR IGNORE INTO bookmarks (id, video_url, time, "
                                    "name, created_at, thumbnail_data)\n"
                                    "    VALUES (?, ?, ?, ?, ?, ?)"),
                     {SQLiteValue::text(LibraryIdentity::uuidText(bookmark.id)),
                      SQLiteValue::text(LibraryIdentity::urlText(bookmark.videoURL)),
                      SQLiteValue::real(bookmark.time), SQLiteValue::text(bookmark.name),
                      SQLiteValue::real(velmar::toReferenceTimestamp(bookmark.createdAt)),
                      bookmark.thumbnailData ? SQLiteValue::blob(*bookmark.thumbnailData)
                                             : SQLiteValue::null()});
    }
}

void DatabaseManager::migratePerFileSettings(const QByteArray& json)
{
    const double now = velmar::referenceTimestampNow();
    const QMap<QString, PerFileSettings> settings = LegacyRecords::decodePerFileSettings(json);
    for (auto it = settings.begin(); it != settings.end(); ++it) {
        m_db.execute(QStringLiteral("    INSERT OR IGNORE INTO per_file_settings (file_path, "
                                    "settings_json, updated_at)\n"
                                    "    VALUES (?, ?, ?)"),
                     {SQLiteValue::text(it.key()),
                      SQLiteValue::text(QString::fromUtf8(it.value().toJson())),
                      SQLiteValue::real(now)});
    }
}

void DatabaseManager::cleanupExpiredData()
{
    const double cutoff = velmar::referenceTimestampNow() - kRetentionSeconds;
    try {
        const int history =
            m_db.execute(QStringLiteral("DELETE FROM playback_history WHERE last_played_at < ?"),
                         {SQLiteValue::real(cutoff)});
        const int settings =
            m_db.execute(QStringLiteral("DELETE FROM per_file_settings WHERE updated_at < ?"),
                         {SQLiteValue::real(cutoff)});
        if (history + settings >= 1)
            velmar::logLine(
                QStringLiteral("[DatabaseManager] TTL cleanup: %1 history, %2 settings removed")
                    .arg(history)
                    .arg(settings));
    } catch (const std::exception& error) {
        velmar::logLine(QStringLiteral("[DatabaseManager] TTL cleanup failed: ") + describe(error));
    }
}
