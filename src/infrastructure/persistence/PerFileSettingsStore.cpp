#include "PerFileSettingsStore.h"

#include "Library.h"
#include "LibraryTables.h"

#include <QPointer>

PerFileSettingsStore::PerFileSettingsStore(Library& library, QObject* parent)
    : QObject(parent)
    , m_library(library)
{}

void PerFileSettingsStore::loadAll()
{
    auto loaded = std::make_shared<QPromise<void>>();
    m_loaded = loaded->future();
    loaded->start();
    read(loaded);
}

QCoro::Task<void> PerFileSettingsStore::read(std::shared_ptr<QPromise<void>> loaded)
{
    QPointer<PerFileSettingsStore> self(this);
    QCoro::Task<QList<SQLiteRow>> reading = m_library.query(LibraryTables::selectPerFileSettings());
    const QList<SQLiteRow> rows = co_await reading;
    loaded->finish();
    if (!self)
        co_return;
    for (const SQLiteRow& row : rows) {
        // Settings saved before the stored ones arrived are newer.
        if (auto entry = LibraryTables::perFileSettings(row);
            entry && !m_cache.contains(entry->first))
            m_cache.insert(entry->first, entry->second);
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
    if (this->settings(key).value_or(PerFileSettings{}) == settings)
        return;
    if (settings.isDefault()) {
        m_cache.remove(key);
        m_library.execute(LibraryTables::deletePerFileSettings(key));
        return;
    }
    m_cache.insert(key, settings);
    m_library.execute(LibraryTables::insertPerFileSettings(
        key, settings, QDateTime::currentDateTimeUtc(), LibraryTables::OnConflict::Replace));
}
