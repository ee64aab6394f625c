#include "BookmarkManager.h"

#include "infrastructure/persistence/Library.h"
#include "infrastructure/persistence/LibraryTables.h"

#include <algorithm>
#include <cmath>
#include <QPointer>

namespace {

constexpr double kMinimumSpacingSeconds = 1.0;

} // namespace

BookmarkManager::BookmarkManager(Library& library, QObject* parent)
    : QObject(parent)
    , m_library(library)
{}

QCoro::Task<void> BookmarkManager::loadBookmarks()
{
    QPointer<BookmarkManager> self(this);
    QCoro::Task<QList<SQLiteRow>> reading = m_library.query(LibraryTables::selectBookmarks());
    const QList<SQLiteRow> rows = co_await reading;
    if (!self)
        co_return;
    QList<Bookmark> loaded;
    for (const SQLiteRow& row : rows) {
        if (auto bookmark = LibraryTables::bookmark(row))
            loaded << *bookmark;
    }
    // Bookmarks added before the stored ones arrived stay, after them.
    m_bookmarks = loaded + m_bookmarks;
    Q_EMIT bookmarksChanged();
}

std::optional<QUuid> BookmarkManager::add(const QUrl& videoURL, double time, const QString& name,
                                          const std::optional<QByteArray>& thumbnailData)
{
    const bool tooClose =
        std::any_of(m_bookmarks.begin(), m_bookmarks.end(), [&](const Bookmark& b) {
            return b.videoURL == videoURL && std::abs(b.time - time) < kMinimumSpacingSeconds;
        });
    if (tooClose)
        return std::nullopt;

    const Bookmark bookmark{
        QUuid::createUuid(), videoURL, time, name, QDateTime::currentDateTimeUtc(), thumbnailData};
    m_bookmarks << bookmark;
    Q_EMIT bookmarksChanged();
    m_library.execute(LibraryTables::insertBookmark(bookmark, LibraryTables::OnConflict::Fail));
    return bookmark.id;
}

void BookmarkManager::updateThumbnail(const QUuid& id, const QByteArray& data)
{
    auto found = std::find_if(m_bookmarks.begin(), m_bookmarks.end(),
                              [&](const Bookmark& b) { return b.id == id; });
    if (found == m_bookmarks.end())
        return;
    found->thumbnailData = data;
    Q_EMIT bookmarksChanged();
    m_library.execute(LibraryTables::updateBookmarkThumbnail(id, data));
}

void BookmarkManager::remove(const Bookmark& bookmark)
{
    if (m_bookmarks.removeIf([&](const Bookmark& b) { return b.id == bookmark.id; }) > 0)
        Q_EMIT bookmarksChanged();
    m_library.execute(LibraryTables::deleteBookmark(bookmark.id));
}

void BookmarkManager::removeAllBookmarks(const QUrl& videoURL)
{
    if (m_bookmarks.removeIf([&](const Bookmark& b) { return b.videoURL == videoURL; }) > 0)
        Q_EMIT bookmarksChanged();
    m_library.execute(LibraryTables::deleteBookmarks(videoURL));
}

QList<Bookmark> BookmarkManager::bookmarks(const QUrl& videoURL) const
{
    QList<Bookmark> found;
    std::copy_if(m_bookmarks.begin(), m_bookmarks.end(), std::back_inserter(found),
                 [&](const Bookmark& b) { return b.videoURL == videoURL; });
    std::stable_sort(found.begin(), found.end(),
                     [](const Bookmark& a, const Bookmark& b) { return a.time < b.time; });
    return found;
}

std::optional<Bookmark> BookmarkManager::next(const QUrl& videoURL, double seconds,
                                              double margin) const
{
    for (const Bookmark& bookmark : bookmarks(videoURL)) {
        if (bookmark.time > seconds + margin)
            return bookmark;
    }
    return std::nullopt;
}

std::optional<Bookmark> BookmarkManager::previous(const QUrl& videoURL, double seconds,
                                                  double margin) const
{
    const QList<Bookmark> sorted = bookmarks(videoURL);
    for (auto it = sorted.crbegin(); it != sorted.crend(); ++it) {
        if (it->time < seconds - margin)
            return *it;
    }
    return std::nullopt;
}
