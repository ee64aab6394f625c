#pragma once

#include <QList>
#include <QString>

/// One adjustable value of a filter, with its range and neutral value.
struct FilterParameter
{
    QString id;
    QString name;
    float value = 0;
    float minValue = 0;
    float maxValue = 0;
    float defaultValue = 0;

    friend bool operator==(const FilterParameter&, const FilterParameter&) = default;
};

/// A picture adjustment the user can switch on and tune. The player's filters each have one
/// parameter.
struct StandardFilter
{
    QString id;
    QString name;
    bool isEnabled = false;
    QList<FilterParameter> parameters;

    /// The value libmpv gets: the setting while enabled, the neutral value while disabled.
    float effectiveValue() const
    {
        if (parameters.isEmpty())
            return 0;
        return isEnabled ? parameters.first().value : parameters.first().defaultValue;
    }

    friend bool operator==(const StandardFilter&, const StandardFilter&) = default;
};
