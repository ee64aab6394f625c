#include "PendingPreferences.h"

#include <QHash>
#include <QMutex>

namespace PendingPreferences {

namespace {

// One table for the process, as the settings file it stands in for is one.
struct Table
{
    QMutex mutex;
    QHash<QString, QVariant> values;
};

Table& table()
{
    static Table instance;
    return instance;
}

} // namespace

void hold(const QString& key, const QVariant& value)
{
    const QMutexLocker lock(&table().mutex);
    table().values.insert(key, value);
}

void settle(const QString& key, const QVariant& written)
{
    const QMutexLocker lock(&table().mutex);
    const auto found = table().values.constFind(key);
    if (found != table().values.constEnd() && *found == written)
        table().values.erase(found);
}

std::optional<QVariant> value(const QString& key)
{
    const QMutexLocker lock(&table().mutex);
    const auto found = table().values.constFind(key);
    return found == table().values.constEnd() ? std::nullopt : std::optional(*found);
}

} // namespace PendingPreferences
