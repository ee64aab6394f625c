#include "FilterManager.h"

#include "model/TimeFormat.h"

#include <cmath>

namespace {

StandardFilter filter(const char* id, const char* name, const char* parameterId,
                      const char* parameterName, float neutral, float min, float max)
{
    return StandardFilter{
        QString::fromLatin1(id),
        QString::fromLatin1(name),
        false,
        {FilterParameter{QString::fromLatin1(parameterId), QString::fromLatin1(parameterName),
                         neutral, min, max, neutral}}};
}

} // namespace

FilterManager::FilterManager(QObject* parent)
    : QObject(parent)
    , m_filters(defaultFilters())
{}

QList<StandardFilter> FilterManager::defaultFilters()
{
    return {
        filter("brightness", "Brightness", "value", "Brightness", 0.0f, -1.0f, 1.0f),
        filter("contrast", "Contrast", "value", "Contrast", 1.0f, 0.0f, 3.0f),
        filter("saturation", "Saturation", "value", "Saturation", 1.0f, 0.0f, 3.0f),
        filter("sharpen", "Sharpen", "amount", "Amount", 0.0f, 0.0f, 2.0f),
        filter("deband", "Deband", "threshold", "Threshold", 48.0f, 0.0f, 128.0f),
    };
}

void FilterManager::setFilter(const QString& id, bool isEnabled, float value)
{
    // A slider divided by a zero width reads NaN: not a value to turn into libmpv's integers.
    if (!std::isfinite(value))
        return;
    for (StandardFilter& filter : m_filters) {
        if (filter.id != id || filter.parameters.isEmpty())
            continue;
        filter.isEnabled = isEnabled;
        FilterParameter& parameter = filter.parameters.first();
        parameter.value = std::clamp(value, parameter.minValue, parameter.maxValue);
        Q_EMIT filtersChanged();
        return;
    }
}

void FilterManager::resetAll()
{
    for (StandardFilter& filter : m_filters) {
        filter.isEnabled = false;
        for (FilterParameter& parameter : filter.parameters)
            parameter.value = parameter.defaultValue;
    }
    Q_EMIT filtersChanged();
}

QList<FilterState> FilterManager::states() const
{
    QList<FilterState> states;
    for (const StandardFilter& filter : m_filters) {
        FilterState state{filter.id, filter.isEnabled, {}};
        for (const FilterParameter& parameter : filter.parameters)
            state.parameters.insert(parameter.id, parameter.value);
        states << state;
    }
    return states;
}

void FilterManager::apply(const FilterState& state)
{
    for (StandardFilter& filter : m_filters) {
        if (filter.id != state.id)
            continue;
        filter.isEnabled = state.isEnabled;
        for (FilterParameter& parameter : filter.parameters) {
            const float stored = state.parameters.value(parameter.id, parameter.value);
            parameter.value = std::isnan(stored)
                                  ? parameter.defaultValue
                                  : std::clamp(stored, parameter.minValue, parameter.maxValue);
        }
        Q_EMIT filtersChanged();
        return;
    }
}

PictureSettings FilterManager::pictureSettings() const
{
    // Picture controls are offsets from neutral in percent: brightness 0.5 is +50, contrast
    // and saturation count from 1.0, so 1.0 is 0, 0.0 is -100 and 3.0 is +200.
    auto percent = [](float value) { return qint64(std::llround(double(value) * 100.0)); };
    PictureSettings picture;
    for (const StandardFilter& filter : m_filters) {
        const float value = filter.effectiveValue();
        if (filter.id == QLatin1String("brightness")) {
            picture.brightness = percent(value);
        } else if (filter.id == QLatin1String("contrast")) {
            picture.contrast = percent(value - 1.0f);
        } else if (filter.id == QLatin1String("saturation")) {
            picture.saturation = percent(value - 1.0f);
        } else if (filter.id == QLatin1String("sharpen")) {
            // The filter chain is replaced as a whole; sharpening is its only user.
            picture.videoFilters =
                value > 0 ? QStringLiteral("unsharp=la=") + velmar::shortestFloatText(value)
                          : QString();
        } else if (filter.id == QLatin1String("deband")) {
            picture.deband = filter.isEnabled;
            if (filter.isEnabled)
                picture.debandThreshold = qint64(value); // within 0…128: apply() clamps
        }
    }
    return picture;
}
