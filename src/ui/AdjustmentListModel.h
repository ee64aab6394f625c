#pragma once

#include "engine/PlaybackEngine.h"

#include <QAbstractListModel>
#include <QPointer>
#include <QtQml/qqmlregistration.h>

class FilterManager;

/// The side panel's picture adjustments: one row per filter with its switch, its range and its
/// value, and beside them the picture's rotation and the sound's delay. Edits go to the filters
/// and on to libmpv at once. GUI thread only.
class AdjustmentListModel : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(PlaybackEngine* engine READ engine WRITE setEngine NOTIFY engineChanged)
    Q_PROPERTY(int rotation READ rotation NOTIFY rotationChanged)
    Q_PROPERTY(double audioDelay READ audioDelay NOTIFY audioDelayChanged)
    /// "0.00s", "0.30s", "-1.25s".
    Q_PROPERTY(QString audioDelayText READ audioDelayText NOTIFY audioDelayChanged)

public:
    enum Role {
        FilterIdRole = Qt::UserRole + 1,
        NameRole,
        IsEnabledRole,
        ValueRole,
        MinimumRole,
        MaximumRole,
        ValueTextRole
    };

    using QAbstractListModel::QAbstractListModel;

    PlaybackEngine* engine() const { return m_engine; }
    void setEngine(PlaybackEngine* engine);
    int rotation() const { return m_engine ? m_engine->videoRotation() : 0; }
    double audioDelay() const { return m_engine ? m_engine->adjustments()->audioDelay() : 0.0; }
    QString audioDelayText() const;

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    /// Sets a filter's switch and value and shows the result.
    Q_INVOKABLE void setFilter(int row, bool isEnabled, double value);
    /// Everything back to neutral: every filter, the rotation and the audio delay.
    Q_INVOKABLE void resetAll();

Q_SIGNALS:
    void engineChanged();
    void rotationChanged();
    void audioDelayChanged();

private:
    FilterManager* filters() const { return m_engine ? m_engine->filters() : nullptr; }
    void followFilters();

    QPointer<PlaybackEngine> m_engine;
    int m_rowCount = 0;
};
