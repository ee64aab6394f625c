#include "PerFileSettings.h"

#include <cmath>
#include <QJsonArray>
#include <QJsonDocument>

namespace {

std::optional<FilterState> filterFromJson(const QJsonValue& value)
{
    if (!value.isObject())
        return std::nullopt;
    const QJsonObject object = value.toObject();
    const QJsonValue id = object.value(QLatin1String("id"));
    const QJsonValue enabled = object.value(QLatin1String("isEnabled"));
    const QJsonValue parameters = object.value(QLatin1String("parameters"));
    if (!id.isString() || !enabled.isBool() || !parameters.isObject())
        return std::nullopt;

    FilterState filter{id.toString(), enabled.toBool(), {}};
    const QJsonObject values = parameters.toObject();
    for (auto it = values.begin(); it != values.end(); ++it) {
        if (!it.value().isDouble())
            return std::nullopt;
        filter.parameters.insert(it.key(), float(it.value().toDouble()));
    }
    return filter;
}

} // namespace

bool PerFileSettings::isDefault() const
{
    const bool anyEnabled = std::any_of(filters.begin(), filters.end(),
                                        [](const FilterState& f) { return f.isEnabled; });
    return rotation == 0 && !anyEnabled && audioDelay == 0.0;
}

QJsonObject PerFileSettings::toJsonObject() const
{
    QJsonArray filterArray;
    for (const FilterState& filter : filters) {
        QJsonObject parameters;
        for (auto it = filter.parameters.begin(); it != filter.parameters.end(); ++it)
            parameters.insert(it.key(), double(it.value()));
        filterArray.append(QJsonObject{{QStringLiteral("id"), filter.id},
                                       {QStringLiteral("isEnabled"), filter.isEnabled},
                                       {QStringLiteral("parameters"), parameters}});
    }
    return QJsonObject{{QStringLiteral("rotation"), rotation},
                       {QStringLiteral("filters"), filterArray},
                       {QStringLiteral("audioDelay"), audioDelay}};
}

QByteArray PerFileSettings::toJson() const
{
    return QJsonDocument(toJsonObject()).toJson(QJsonDocument::Compact);
}

std::optional<PerFileSettings> PerFileSettings::fromJsonObject(const QJsonObject& object)
{
    const QJsonValue rotation = object.value(QLatin1String("rotation"));
    const QJsonValue filters = object.value(QLatin1String("filters"));
    const QJsonValue audioDelay = object.value(QLatin1String("audioDelay"));
    if (!rotation.isDouble() || !filters.isArray() || !audioDelay.isDouble())
        return std::nullopt;
    // Rotation is a whole number of degrees; anything else is not a document we wrote.
    const double degrees = rotation.toDouble();
    if (degrees != std::trunc(degrees) || std::abs(degrees) > 1e9)
        return std::nullopt;

    PerFileSettings settings;
    settings.rotation = int(degrees);
    settings.audioDelay = audioDelay.toDouble();
    for (const QJsonValue& value : filters.toArray()) {
        const auto filter = filterFromJson(value);
        if (!filter)
            return std::nullopt;
        settings.filters << *filter;
    }
    return settings;
}

std::optional<PerFileSettings> PerFileSettings::fromJson(const QByteArray& json)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(json, &error);
    if (error.error != QJsonParseError::NoError || !document.isObject())
        return std::nullopt;
    return fromJsonObject(document.object());
}
