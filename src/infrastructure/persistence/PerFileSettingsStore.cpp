#include "PerFileSettingsStore.h"

#include "core/model/TimeFormat.h"
#include "infrastructure/logging/Log.h"
#include "SQLiteDatabase.h"

PerFileSettingsStore::PerFileSettingsStore(SQLiteDatabase& db)
    : m_db(db)
{
    loadAll();
}

void PerFileSettingsStore::loadAll()
{
    try {
        const QList<SQLiteRow> rows =
            m_db.query(QStringLiteral("SELECT file_path, settings_json FROM per_file_settings"));
        for (const SQLiteRow& row : rows) {
            const SQLiteValue path = row.value(QStringLiteral("file_path"), SQLiteValue::null());
            const SQLiteValue json =
                row.value(QStringLiteral("settings_json"), SQLiteValue::null());
            if (!path.isText() || !json.isText())
                continue;
            if (auto settings = PerFileSettings::fromJson(json.toText().toUtf8()))
                m_cache.insert(path.toText(), *settings);
        }
    } catch (const std::exception& error) {
        velmar::logLine(QStringLiteral("[PerFileSettingsStore] loadAll failed: ") +
                        QString::fromUtf8(error.what()));
    }
}

std::optional<PerFileSettings> PerFileSettingsStore::settings(const QString& filePath) const
{
    const auto found = m_cache.constFind(filePath);
    return found == m_cache.constEnd() ? std::nullopt : std::optional(*found);
}

void PerFileSettingsStore::save(const PerFileSettings& settings, const QUrl& url)
{
    const QString key = url.path();
    const double now = velmar::referenceTimestampNow();
    try {
        if (settings.isDefault()) {
            m_cache.remove(key);
            m_db.execute(QStringLiteral("DELETE FROM per_file_settings WHERE file_path = ?"),
                         {SQLiteValue::text(key)});
            return;
        }
        m_cache.insert(key, settings);
        m_db.execute(QStringLiteral("    INSERT OR REPLACE INTO per_file_settings (file_path, "
                                    "settings_json, updated_at)\n"
                                    "    VALUES (?, ?, ?)"),
                     {SQLiteValue::text(key),
                      SQLiteValue::text(QString::fromUtf8(settings.toJson())),
                      SQLiteValue::real(now)});
    } catch (const std::exception&) {
        // Best effort: the cache keeps the settings for this session.
    }
}
