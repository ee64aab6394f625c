#pragma once

#include "core/model/PerFileSettings.h"

#include <optional>
#include <QHash>
#include <QString>
#include <QUrl>

class SQLiteDatabase;

/// Each file's remembered picture settings, keyed by the file's path and mirrored in the
/// `per_file_settings` table. Settings equal to the defaults are not kept. Never throws.
/// GUI thread only.
class PerFileSettingsStore
{
public:
    /// Loads every stored document at once; malformed ones are skipped.
    explicit PerFileSettingsStore(SQLiteDatabase& db);

    std::optional<PerFileSettings> settings(const QString& filePath) const;
    const QHash<QString, PerFileSettings>& cache() const { return m_cache; }

    /// Stores the settings for the file, or forgets them when they are the defaults.
    void save(const PerFileSettings& settings, const QUrl& url);

private:
    void loadAll();

    SQLiteDatabase& m_db;
    QHash<QString, PerFileSettings> m_cache;
};
