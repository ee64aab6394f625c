#pragma once

#include "Bookmark.h"
#include "infrastructure/persistence/SQLiteValue.h"

#include <optional>
#include <QList>
#include <QObject>

class SQLiteDatabase;

/// Named positions inside media files, mirrored in the `bookmarks` table. Loaded newest first;
/// later additions are appended. Never throws: load failures are printed, write failures are
/// ignored and the in-memory change stays. GUI thread only.
class BookmarkManager : public QObject
{
    Q_OBJECT

public:
    /// Loads the stored bookmarks at once.
    explicit BookmarkManager(SQLiteDatabase& db, QObject* parent = nullptr);

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

Q_SIGNALS:
    void bookmarksChanged();

private:
    void loadBookmarks();
    void executeQuietly(const QString& sql, const QList<SQLiteValue>& parameters);

    SQLiteDatabase& m_db;
    QList<Bookmark> m_bookmarks;
};
