#include "DatabaseManager.h"

#include "base/Log.h"
#include "infrastructure/preferences/Preferences.h"
#include "LegacyRecords.h"
#include "LibraryTables.h"
#include "model/TimeFormat.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <stdexcept>

namespace {

const QString kMigrationMarker = QStringLiteral("migrated_from_userdefaults");
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

QString DatabaseManager::defaultDatabasePath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
           QStringLiteral("/VelmarPlayer/velmarplayer.db");
}

DatabaseManager::DatabaseManager(const QString& path)
    : m_path(path)
{}

DatabaseManager::SetupResult DatabaseManager::setup()
{
    using Outcome = SetupResult::Outcome;
    SetupResult result{Outcome::Ready, {}};
    try {
        try {
            openChecked();
        } catch (const SQLiteError& error) {
            if (error.isBusy())
                return {Outcome::Busy, {}};
            if (!error.isCorrupt())
                throw;
            velmar::logLine(QStringLiteral("[DatabaseManager] The library is damaged: ") +
                            error.message());
            result = {Outcome::SetAside, setAside()};
            openChecked();
        }
    } catch (const std::exception& error) {
        m_db.close();
        velmar::logLine(QStringLiteral("[DatabaseManager] setup failed: ") + describe(error));
        return {Outcome::Unavailable, result.setAsidePath};
    }
    migrateFromUserDefaults();
    if (m_db.isReadOnly())
        result.outcome = Outcome::ReadOnly;
    return result;
}

void DatabaseManager::openChecked()
{
    m_db.open(m_path);
    if (const QString integrity = m_db.checkIntegrity(); integrity != QLatin1String("ok"))
        throw SQLiteError(SQLiteError::Kind::Step, integrity, SQLiteError::kCorrupt);
    createTables();
}

QString DatabaseManager::setAside()
{
    m_db.close();
    const QFileInfo file(m_path);
    const QString stamp = QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-HHmmss"));
    QString aside;
    for (int attempt = 1; aside.isEmpty() || QFileInfo::exists(aside); ++attempt)
        aside = file.dir().filePath(
            QStringLiteral("%1.damaged-%2%3.%4")
                .arg(file.completeBaseName(), stamp,
                     attempt == 1 ? QString() : QStringLiteral("-%1").arg(attempt), file.suffix()));
    if (!QFile::rename(m_path, aside))
        throw std::runtime_error("the damaged library could not be moved aside");
    // Its write-ahead log goes with it: replayed into the new file, it would damage that too.
    for (const char* suffix : {"-wal", "-shm"})
        QFile::rename(m_path + QLatin1String(suffix), aside + QLatin1String(suffix));
    velmar::logLine(QStringLiteral("[DatabaseManager] Kept the damaged library as ") + aside);
    return aside;
}

void DatabaseManager::createTables()
{
    // A database that already has its tables is left unwritten, so that opening it needs no
    // write lock (another program may hold one).
    const QList<SQLiteRow> existing = m_db.query(
        QStringLiteral("SELECT name FROM sqlite_master WHERE type IN ('table', 'index')"));
    if (existing.size() >= int(std::size(kSchema)))
        return;
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
        if (preferences.contains(PreferenceKeys::legacyHistory))
            migrateHistory(preferences.dataValue(PreferenceKeys::legacyHistory));
        if (preferences.contains(PreferenceKeys::legacyBookmarks))
            migrateBookmarks(preferences.dataValue(PreferenceKeys::legacyBookmarks));
        if (preferences.contains(PreferenceKeys::legacyPerFileSettings))
            migratePerFileSettings(preferences.dataValue(PreferenceKeys::legacyPerFileSettings));
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
    preferences.remove(PreferenceKeys::legacyHistory);
    preferences.remove(PreferenceKeys::legacyBookmarks);
    preferences.remove(PreferenceKeys::legacyPerFileSettings);
    velmar::logLine(QStringLiteral("[DatabaseManager] UserDefaults migration completed"));
}

void DatabaseManager::migrateHistory(const QByteArray& json)
{
    for (const PlaybackRecord& record : LegacyRecords::decodeHistory(json))
        run(LibraryTables::insertHistory(record, LibraryTables::OnConflict::Ignore));
}

void DatabaseManager::migrateBookmarks(const QByteArray& json)
{
    for (const Bookmark& bookmark : LegacyRecords::decodeBookmarks(json))
        run(LibraryTables::insertBookmark(bookmark, LibraryTables::OnConflict::Ignore));
}

void DatabaseManager::migratePerFileSettings(const QByteArray& json)
{
    const QDateTime now = QDateTime::currentDateTimeUtc();
    const QMap<QString, PerFileSettings> settings = LegacyRecords::decodePerFileSettings(json);
    for (auto it = settings.begin(); it != settings.end(); ++it)
        run(LibraryTables::insertPerFileSettings(it.key(), it.value(), now,
                                                 LibraryTables::OnConflict::Ignore));
}

void DatabaseManager::run(const SQLiteStatement& statement)
{
    m_db.execute(statement.sql, statement.parameters);
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
