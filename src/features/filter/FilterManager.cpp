#include "FilterManager.h"

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
    for (StandardFilter& filter : m_filters) {
        if (filter.id != id || filter.parameters.isEmpty())
            continue;
        filter.isEnabled = isEnabled;
        filter.parameters.first().value = value;
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
        for (FilterParameter& parameter : filter.parameters)
            parameter.value = state.parameters.value(parameter.id, parameter.value);
        Q_EMIT filtersChanged();
        return;
    }
}
