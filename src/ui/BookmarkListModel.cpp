#include "BookmarkListModel.h"

#include "features/bookmark/BookmarkManager.h"
#include "model/TimeFormat.h"

#include <algorithm>

void BookmarkListModel::setEngine(PlaybackEngine* engine)
{
    if (m_engine == engine)
        return;
    if (m_engine) {
        disconnect(m_engine, nullptr, this, nullptr);
        disconnect(manager(), nullptr, this, nullptr);
    }
    m_engine = engine;
    if (m_engine) {
        connect(m_engine, &PlaybackEngine::currentURLChanged, this, &BookmarkListModel::reload);
        connect(manager(), &BookmarkManager::bookmarksChanged, this, &BookmarkListModel::reload);
    }
    reload();
    Q_EMIT engineChanged();
}

BookmarkManager* BookmarkListModel::manager() const
{
    return m_engine ? m_engine->bookmarks() : nullptr;
}

int BookmarkListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : count();
}

QVariant BookmarkListModel::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const Bookmark& bookmark = m_rows.at(index.row());
    switch (role) {
    case NameRole:
        return bookmark.name;
    case TimeRole:
        return bookmark.time;
    case TimeTextRole:
        return velmar::formatTime(bookmark.time);
    case PictureRole:
        return m_pictures.value(bookmark.id);
    case HasPictureRole:
        return m_pictures.contains(bookmark.id);
    default:
        return {};
    }
}

QHash<int, QByteArray> BookmarkListModel::roleNames() const
{
    return {{NameRole, "name"},
            {TimeRole, "time"},
            {TimeTextRole, "timeText"},
            {PictureRole, "picture"},
            {HasPictureRole, "hasPicture"}};
}

void BookmarkListModel::remove(int row)
{
    if (manager() && row >= 0 && row < count())
        manager()->remove(m_rows.at(row));
}

void BookmarkListModel::clearAll()
{
    if (manager() && !m_engine->currentURL().isEmpty())
        manager()->removeAllBookmarks(m_engine->currentURL());
}

void BookmarkListModel::reload()
{
    const QList<Bookmark> rows = m_engine && !m_engine->currentURL().isEmpty()
                                     ? manager()->bookmarks(m_engine->currentURL())
                                     : QList<Bookmark>();
    if (rows == m_rows)
        return;
    QHash<QUuid, QImage> pictures;
    for (const Bookmark& bookmark : rows) {
        if (!bookmark.thumbnailData)
            continue;
        const auto known = std::find_if(m_rows.begin(), m_rows.end(), [&](const Bookmark& b) {
            return b.id == bookmark.id && b.thumbnailData == bookmark.thumbnailData;
        });
        QImage picture = known != m_rows.end() ? m_pictures.value(bookmark.id)
                                               : QImage::fromData(*bookmark.thumbnailData);
        if (!picture.isNull())
            pictures.insert(bookmark.id, picture);
    }
    const bool countChanges = rows.size() != m_rows.size();
    // A file has a handful of bookmarks: starting over costs nothing worth saving.
    beginResetModel();
    m_rows = rows;
    m_pictures = pictures;
    endResetModel();
    if (countChanges)
        Q_EMIT countChanged();
}
