#pragma once

#include <optional>
#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QMap>
#include <QString>

/// The saved state of one picture filter: whether it is on, and its parameter values.
struct FilterState
{
    QString id;
    bool isEnabled = false;
    QMap<QString, float> parameters;

    friend bool operator==(const FilterState&, const FilterState&) = default;
};

/// What the player remembers about one file's picture: rotation, filters and audio delay.
/// Stored as a JSON object {"rotation", "filters": [{"id", "isEnabled", "parameters"}],
/// "audioDelay"}; every key is required when reading.
struct PerFileSettings
{
    int rotation = 0;
    QList<FilterState> filters;
    double audioDelay = 0.0;

    /// Nothing worth keeping: no rotation, no enabled filter, no delay. Parameters of disabled
    /// filters do not count.
    bool isDefault() const;

    QJsonObject toJsonObject() const;
    QByteArray toJson() const;
    static std::optional<PerFileSettings> fromJsonObject(const QJsonObject& object);
    static std::optional<PerFileSettings> fromJson(const QByteArray& json);

    friend bool operator==(const PerFileSettings&, const PerFileSettings&) = default;
};
