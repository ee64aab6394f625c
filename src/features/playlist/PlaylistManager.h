#pragma once

#include "model/PlaylistItem.h"

#include <optional>
#include <QCoroTask>
#include <QList>
#include <QObject>
#include <QSet>

/// The ordered list of media to play and which entry is current. Lives only for the process.
/// No wrap-around, repeat or shuffle. GUI thread only; folder scans run on the thread pool.
class PlaylistManager : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    const QList<PlaylistItem>& items() const { return m_items; }
    std::optional<int> currentIndex() const { return m_currentIndex; }
    std::optional<PlaylistItem> currentItem() const;

    /// Appends one file; the current entry stays as it is.
    void add(const QUrl& url);
    /// Appends every video file found below the folder (see FolderScanner). The scan runs off
    /// the GUI thread; the items are added when it completes, unless the playlist was cleared
    /// or another folder was asked for meanwhile (the later request wins): false then.
    QCoro::Task<bool> addFolder(QUrl folder);

    /// Drops what folder scans still running would add (a later request wins). Returns a
    /// ticket that stays current until the next cancel, scan or clear.
    quint64 cancelPendingScans() { return ++m_scanGeneration; }
    bool isCurrent(quint64 ticket) const { return ticket == m_scanGeneration; }

    bool hasNext() const;
    std::optional<QUrl> next();
    std::optional<QUrl> previous();
    std::optional<QUrl> play(int index);

    void updateCurrentDuration(double seconds);
    void clear();
    /// Removes entries. The current index keeps its number while it still fits the shorter
    /// list (another item may have slid into it); a removed or out-of-range current entry
    /// leaves no current item.
    void remove(const QSet<int>& offsets);
    /// Moves entries before `destination` (an offset in the list before the move). The current
    /// index keeps its number: the item moved into that place becomes current.
    void move(const QSet<int>& offsets, int destination);

Q_SIGNALS:
    void itemsChanged();
    void currentIndexChanged();

private:
    void setItems(const QList<PlaylistItem>& items);
    void setCurrentIndex(std::optional<int> index);
    /// The position of the first item with `id`, if any.
    std::optional<int> indexOf(const QUuid& id) const;

    QList<PlaylistItem> m_items;
    std::optional<int> m_currentIndex;
    quint64 m_scanGeneration = 0; // bumped by every folder scan and every clear
};
