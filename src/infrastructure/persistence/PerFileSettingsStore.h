#pragma once

#include "model/PerFileSettings.h"

#include <memory>
#include <optional>
#include <QCoroTask>
#include <QFuture>
#include <QHash>
#include <QObject>
#include <QPromise>
#include <QString>
#include <QUrl>

class Library;

/// Each file's remembered picture settings, keyed by the file's path and mirrored in the
/// `per_file_settings` table. Settings equal to the defaults are not kept. Writes go to the
/// library and never fail visibly. GUI thread only.
class PerFileSettingsStore : public QObject
{
    Q_OBJECT

public:
    explicit PerFileSettingsStore(Library& library, QObject* parent = nullptr);

    /// Starts reading every stored document (once, at start); malformed ones are skipped.
    void loadAll();
    /// Finishes when the stored documents have arrived (or the store went before they did).
    QFuture<void> loaded() const { return m_loaded; }

    std::optional<PerFileSettings> settings(const QString& filePath) const;
    const QHash<QString, PerFileSettings>& cache() const { return m_cache; }

    /// Stores the settings for the file, or forgets them when they are the defaults. Settings
    /// the store already has are not written again (the player saves every few seconds).
    void save(const PerFileSettings& settings, const QUrl& url);

private:
    QCoro::Task<void> read(std::shared_ptr<QPromise<void>> loaded);

    Library& m_library;
    QHash<QString, PerFileSettings> m_cache;
    QFuture<void> m_loaded;
};
