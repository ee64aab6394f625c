#include "AdjustmentListModel.h"

#include "features/filter/FilterManager.h"
#include "features/filter/VideoAdjustments.h"

void AdjustmentListModel::setEngine(PlaybackEngine* engine)
{
    if (m_engine == engine)
        return;
    if (m_engine) {
        disconnect(m_engine, nullptr, this, nullptr);
        disconnect(filters(), nullptr, this, nullptr);
        disconnect(m_engine->adjustments(), nullptr, this, nullptr);
    }
    beginResetModel();
    m_engine = engine;
    m_rowCount = filters() ? int(filters()->filters().size()) : 0;
    endResetModel();
    if (m_engine) {
        connect(m_engine, &PlaybackEngine::videoRotationChanged, this,
                &AdjustmentListModel::rotationChanged);
        connect(m_engine->adjustments(), &VideoAdjustments::audioDelayChanged, this,
                &AdjustmentListModel::audioDelayChanged);
        connect(filters(), &FilterManager::filtersChanged, this,
                &AdjustmentListModel::followFilters);
    }
    Q_EMIT engineChanged();
    Q_EMIT rotationChanged();
    Q_EMIT audioDelayChanged();
}

QString AdjustmentListModel::audioDelayText() const
{
    const double delay = audioDelay();
    if (delay == 0)
        return QStringLiteral("0.00s");
    return QString::asprintf("%.2f", delay) + QStringLiteral("s");
}

int AdjustmentListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_rowCount;
}

QVariant AdjustmentListModel::data(const QModelIndex& index, int role) const
{
    if (!filters() || !checkIndex(index, CheckIndexOption::IndexIsValid) ||
        index.row() >= filters()->filters().size())
        return {};
    const StandardFilter& filter = filters()->filters().at(index.row());
    if (filter.parameters.isEmpty())
        return role == FilterIdRole ? QVariant(filter.id) : QVariant();
    const FilterParameter& parameter = filter.parameters.first();
    switch (role) {
    case FilterIdRole:
        return filter.id;
    case NameRole:
        return filter.name;
    case IsEnabledRole:
        return filter.isEnabled;
    case ValueRole:
        return double(parameter.value);
    case MinimumRole:
        return double(parameter.minValue);
    case MaximumRole:
        return double(parameter.maxValue);
    case ValueTextRole:
        return QString::asprintf("%.1f", double(parameter.value));
    default:
        return {};
    }
}

QHash<int, QByteArray> AdjustmentListModel::roleNames() const
{
    return {{FilterIdRole, "filterId"},  {NameRole, "name"},       {IsEnabledRole, "isEnabled"},
            {ValueRole, "value"},        {MinimumRole, "minimum"}, {MaximumRole, "maximum"},
            {ValueTextRole, "valueText"}};
}

void AdjustmentListModel::setFilter(int row, bool isEnabled, double value)
{
    if (!filters() || row < 0 || row >= m_rowCount)
        return;
    filters()->setFilter(filters()->filters().at(row).id, isEnabled, float(value));
}

void AdjustmentListModel::resetAll()
{
    if (!m_engine)
        return;
    filters()->resetAll();
    m_engine->adjustments()->setRotation(0);
    m_engine->adjustments()->setAudioDelay(0.0);
}

void AdjustmentListModel::followFilters()
{
    const int rows = int(filters()->filters().size());
    if (rows != m_rowCount) {
        beginResetModel();
        m_rowCount = rows;
        endResetModel();
    } else if (rows > 0) {
        Q_EMIT dataChanged(index(0), index(rows - 1));
    }
}
