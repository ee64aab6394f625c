#include "PlaylistManager.h"

#include "base/PropertyUpdate.h"
#include "FolderScanner.h"
#include "model/MediaFiles.h"

#include <QCoroFuture>
#include <QPointer>
#include <QtConcurrent>

std::optional<PlaylistItem> PlaylistManager::currentItem() const
{
    if (!m_currentIndex || *m_currentIndex < 0 || *m_currentIndex >= m_items.size())
        return std::nullopt;
    return m_items.at(*m_currentIndex);
}

void PlaylistManager::add(const QUrl& url)
{
    m_items << PlaylistItem::forUrl(url);
    Q_EMIT itemsChanged();
}

QCoro::Task<bool> PlaylistManager::addFolder(QUrl folder)
{
    QPointer<PlaylistManager> self(this);
    const quint64 generation = ++m_scanGeneration;
    const QByteArray path = MediaFiles::localPath(folder);
    // The items are built on the worker too, so the GUI thread only appends a finished list.
    // (A named future, not a temporary: GCC 12 destroys temporaries of a co_await operand twice.)
    QFuture<QList<PlaylistItem>> scan = QtConcurrent::run([path] {
        QList<PlaylistItem> items;
        for (const QUrl& url : FolderScanner::scanForVideos(path))
            items << PlaylistItem::forUrl(url);
        return items;
    });
    const QList<PlaylistItem> found = co_await scan;
    if (!self || generation != m_scanGeneration)
        co_return false;
    if (!found.isEmpty()) {
        m_items.append(found);
        Q_EMIT itemsChanged();
    }
    co_return true;
}

bool PlaylistManager::hasNext() const
{
    if (!m_currentIndex)
        return !m_items.isEmpty();
    return *m_currentIndex < m_items.size() - 1;
}

std::optional<QUrl> PlaylistManager::next()
{
    if (!hasNext())
        return std::nullopt;
    const int index = m_currentIndex.value_or(-1) + 1;
    setCurrentIndex(index);
    return m_items.at(index).url;
}

std::optional<QUrl> PlaylistManager::previous()
{
    if (!m_currentIndex || *m_currentIndex < 1)
        return std::nullopt;
    const int index = *m_currentIndex - 1;
    setCurrentIndex(index);
    return m_items.at(index).url;
}

std::optional<QUrl> PlaylistManager::play(int index)
{
    if (index < 0 || index >= m_items.size())
        return std::nullopt;
    setCurrentIndex(index);
    return m_items.at(index).url;
}

void PlaylistManager::updateCurrentDuration(double seconds)
{
    if (!currentItem())
        return;
    m_items[*m_currentIndex].duration = seconds;
    Q_EMIT itemsChanged();
}

void PlaylistManager::clear()
{
    ++m_scanGeneration;
    setItems({});
    setCurrentIndex(std::nullopt);
}

void PlaylistManager::remove(const QSet<int>& offsets)
{
    QList<PlaylistItem> kept;
    for (int i = 0; i < m_items.size(); ++i) {
        if (!offsets.contains(i))
            kept << m_items.at(i);
    }
    setItems(kept);
    if (!m_currentIndex)
        return;
    if (offsets.contains(*m_currentIndex) || m_items.isEmpty()) {
        setCurrentIndex(std::nullopt);
        return;
    }
    // Identity is taken after the removal, on purpose: the index keeps its number.
    const std::optional<PlaylistItem> current = currentItem();
    setCurrentIndex(current ? indexOf(current->id) : std::nullopt);
}

void PlaylistManager::move(const QSet<int>& offsets, int destination)
{
    QList<PlaylistItem> moving;
    QList<PlaylistItem> staying;
    int insertAt = destination;
    for (int i = 0; i < m_items.size(); ++i) {
        if (offsets.contains(i)) {
            moving << m_items.at(i);
            if (i < destination)
                --insertAt;
        } else {
            staying << m_items.at(i);
        }
    }
    insertAt = std::clamp(insertAt, 0, int(staying.size()));
    for (int i = 0; i < moving.size(); ++i)
        staying.insert(insertAt + i, moving.at(i));
    setItems(staying);
    // Identity is taken after the move, on purpose: whatever now sits at the index is current.
    if (const std::optional<PlaylistItem> current = currentItem())
        setCurrentIndex(indexOf(current->id));
}

void PlaylistManager::setItems(const QList<PlaylistItem>& items)
{
    if (velmar::assignIfChanged(m_items, items))
        Q_EMIT itemsChanged();
}

void PlaylistManager::setCurrentIndex(std::optional<int> index)
{
    if (velmar::assignIfChanged(m_currentIndex, index))
        Q_EMIT currentIndexChanged();
}

std::optional<int> PlaylistManager::indexOf(const QUuid& id) const
{
    for (int i = 0; i < m_items.size(); ++i) {
        if (m_items.at(i).id == id)
            return i;
    }
    return std::nullopt;
}
