#pragma once

#include "core/model/PerFileSettings.h"
#include "StandardFilter.h"

#include <QList>
#include <QObject>

/// The picture adjustments (brightness, contrast, saturation, sharpen, deband) and their
/// settings. It only holds state: the engine pushes it to libmpv. GUI thread only.
class FilterManager : public QObject
{
    Q_OBJECT

public:
    explicit FilterManager(QObject* parent = nullptr);

    static QList<StandardFilter> defaultFilters();

    const QList<StandardFilter>& filters() const { return m_filters; }
    /// Replaces one filter's switch and value (the side panel's edit).
    void setFilter(const QString& id, bool isEnabled, float value);

    /// Every filter off and back at its neutral value; the caller pushes the result.
    void resetAll();

    /// The saved form of every filter, and its restoration (unknown ids are ignored).
    QList<FilterState> states() const;
    void apply(const FilterState& state);

Q_SIGNALS:
    void filtersChanged();

private:
    QList<StandardFilter> m_filters;
};
