#pragma once

#include "model/Bookmark.h"

#include <optional>
#include <QCoroTask>
#include <QList>
#include <QObject>

class Library;

/// Named positions inside media files, mirrored in the `bookmarks` table. Loaded newest first;
/// later additions are appended. Writes go to the library and never fail visibly: the
/// in-memory list keeps the change. GUI thread only.
class BookmarkManager : public QObject
{
    Q_OBJECT

public:
    explicit BookmarkManager(Library& library, QObject* parent = nullptr);

    /// Reads the stored bookmarks (once, at start).
    QCoro::Task<void> loadBookmarks();

    const QList<Bookmark>& bookmarks() const { return m_bookmarks; }

    /// Adds a bookmark; refuses (returns nothing) one closer than a second to another bookmark
    /// of the same file.
    std::optional<QUuid> add(const QUrl& videoURL, double time, const QString& name,
                             const std::optional<QByteArray>& thumbnailData = std::nullopt);
    /// Attaches an image captured after the bookmark was made.
    void updateThumbnail(const QUuid& id, const QByteArray& data);
    void remove(const Bookmark& bookmark);
    void removeAllBookmarks(const QUrl& videoURL);
    /// The file's bookmarks, earliest position first.
    QList<Bookmark> bookmarks(const QUrl& videoURL) const;
    /// The first bookmark of the file after `seconds` + `margin`, or the last before
    /// `seconds` - `margin`.
    std::optional<Bookmark> next(const QUrl& videoURL, double seconds, double margin) const;
    std::optional<Bookmark> previous(const QUrl& videoURL, double seconds, double margin) const;

Q_SIGNALS:
    void bookmarksChanged();

private:
    Library& m_library;
    QList<Bookmark> m_bookmarks;
};
