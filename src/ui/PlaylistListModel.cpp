#include "PlaylistListModel.h"

#include "features/playlist/PlaylistManager.h"
#include "model/TimeFormat.h"

#include <algorithm>

void PlaylistListModel::setEngine(PlaybackEngine* engine)
{
    if (m_engine == engine)
        return;
    if (PlaylistManager* old = playlist())
        disconnect(old, nullptr, this, nullptr);
    beginResetModel();
    m_engine = engine;
    takeSnapshot();
    endResetModel();
    if (PlaylistManager* manager = playlist()) {
        connect(manager, &PlaylistManager::itemsChanged, this, &PlaylistListModel::followItems);
        connect(manager, &PlaylistManager::currentIndexChanged, this,
                &PlaylistListModel::followCurrent);
    }
    m_shownCurrent = currentRow();
    Q_EMIT engineChanged();
    Q_EMIT countChanged();
    Q_EMIT currentRowChanged();
}

PlaylistManager* PlaylistListModel::playlist() const
{
    return m_engine ? m_engine->playlist() : nullptr;
}

int PlaylistListModel::currentRow() const
{
    const PlaylistManager* manager = playlist();
    if (!manager || !manager->currentItem())
        return -1;
    return *manager->currentIndex();
}

int PlaylistListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : count();
}

QVariant PlaylistListModel::data(const QModelIndex& index, int role) const
{
    const PlaylistManager* manager = playlist();
    if (!manager || !checkIndex(index, CheckIndexOption::IndexIsValid) ||
        index.row() >= manager->items().size())
        return {};
    const PlaylistItem& item = manager->items().at(index.row());
    switch (role) {
    case TitleRole:
        return item.title;
    case DurationTextRole:
        return item.duration ? velmar::formatTime(*item.duration) : QString();
    case IsCurrentRole:
        return index.row() == currentRow();
    default:
        return {};
    }
}

QHash<int, QByteArray> PlaylistListModel::roleNames() const
{
    return {{TitleRole, "title"}, {DurationTextRole, "durationText"}, {IsCurrentRole, "isCurrent"}};
}

void PlaylistListModel::play(int row)
{
    PlaylistManager* manager = playlist();
    if (!manager)
        return;
    if (const std::optional<QUrl> url = manager->play(row))
        m_engine->load(*url);
}

void PlaylistListModel::move(int from, int to)
{
    PlaylistManager* manager = playlist();
    if (!manager || from < 0 || from >= count() || to < 0 || to >= count() || from == to)
        return;
    // Both the view and the manager count the destination before the move.
    const int before = to > from ? to + 1 : to;
    beginMoveRows({}, from, from, {}, before);
    m_editing = true;
    manager->move({from}, before);
    m_editing = false;
    takeSnapshot();
    endMoveRows();
    // The rows between the two places slid by one; the mark follows the index, not the item.
    remarkCurrent(std::min(from, to), std::max(from, to));
}

void PlaylistListModel::remove(int row)
{
    PlaylistManager* manager = playlist();
    if (!manager || row < 0 || row >= count())
        return;
    beginRemoveRows({}, row, row);
    m_editing = true;
    manager->remove({row});
    m_editing = false;
    takeSnapshot();
    endRemoveRows();
    Q_EMIT countChanged();
    remarkCurrent(row, count() - 1);
}

void PlaylistListModel::followItems()
{
    if (m_editing)
        return;
    const QList<PlaylistItem>& items = playlist()->items();
    const bool sameRows =
        items.size() >= m_ids.size() &&
        std::equal(m_ids.begin(), m_ids.end(), items.begin(),
                   [](const QUuid& id, const PlaylistItem& item) { return id == item.id; });
    if (sameRows && items.size() == m_ids.size()) {
        // A duration learnt: the rows stay, their texts change.
        if (!m_ids.isEmpty())
            Q_EMIT dataChanged(index(0), index(count() - 1), {DurationTextRole});
        return;
    }
    if (sameRows) {
        beginInsertRows({}, count(), int(items.size()) - 1);
        takeSnapshot();
        endInsertRows();
    } else {
        beginResetModel();
        takeSnapshot();
        endResetModel();
    }
    Q_EMIT countChanged();
    followCurrent();
}

void PlaylistListModel::followCurrent()
{
    const int current = currentRow();
    if (current == m_shownCurrent)
        return;
    for (int row : {m_shownCurrent, current}) {
        if (row >= 0 && row < count())
            Q_EMIT dataChanged(index(row), index(row), {IsCurrentRole});
    }
    m_shownCurrent = current;
    Q_EMIT currentRowChanged();
}

void PlaylistListModel::remarkCurrent(int first, int last)
{
    if (first <= last && last < count())
        Q_EMIT dataChanged(index(first), index(last), {IsCurrentRole});
    m_shownCurrent = -2; // whatever it is now, it is news to the view
    followCurrent();
}

void PlaylistListModel::takeSnapshot()
{
    m_ids.clear();
    if (const PlaylistManager* manager = playlist()) {
        m_ids.reserve(manager->items().size());
        for (const PlaylistItem& item : manager->items())
            m_ids << item.id;
    }
}
