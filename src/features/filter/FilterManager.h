#pragma once

#include "model/PerFileSettings.h"
#include "model/PictureSettings.h"
#include "model/StandardFilter.h"

#include <QList>
#include <QObject>

/// The picture adjustments (brightness, contrast, saturation, sharpen, deband) and their
/// settings. It only holds state: the engine pushes it to libmpv. GUI thread only.
class FilterManager : public QObject
{
    Q_OBJECT
    /// Whether any filter differs from its default.
    Q_PROPERTY(bool isActive READ isActive NOTIFY filtersChanged)

public:
    explicit FilterManager(QObject* parent = nullptr);

    static QList<StandardFilter> defaultFilters();

    const QList<StandardFilter>& filters() const { return m_filters; }
    bool isActive() const { return m_filters != defaultFilters(); }
    /// Replaces one filter's switch and value (the side panel's edit).
    void setFilter(const QString& id, bool isEnabled, float value);

    /// Every filter off and back at its neutral value; the caller pushes the result.
    void resetAll();

    /// The saved form of every filter, and its restoration. Unknown ids are ignored; a stored
    /// value outside its parameter's range is brought into it, one that is not a number falls
    /// back to the parameter's neutral value.
    QList<FilterState> states() const;
    void apply(const FilterState& state);

    /// What the filters amount to for the player core. A disabled filter contributes its
    /// neutral value, so switching one off restores the neutral picture.
    PictureSettings pictureSettings() const;

Q_SIGNALS:
    void filtersChanged();

private:
    QList<StandardFilter> m_filters;
};
