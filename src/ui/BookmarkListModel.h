#pragma once

#include "engine/PlaybackEngine.h"
#include "model/Bookmark.h"

#include <QAbstractListModel>
#include <QHash>
#include <QImage>
#include <QPointer>
#include <QtQml/qqmlregistration.h>

class BookmarkManager;

/// The side panel's bookmarks: those of the open file, earliest first, each with its picture
/// decoded once. Follows the bookmarks and the open file as they change. GUI thread only.
class BookmarkListModel : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(PlaybackEngine* engine READ engine WRITE setEngine NOTIFY engineChanged)
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    enum Role { NameRole = Qt::UserRole + 1, TimeRole, TimeTextRole, PictureRole, HasPictureRole };

    using QAbstractListModel::QAbstractListModel;

    PlaybackEngine* engine() const { return m_engine; }
    void setEngine(PlaybackEngine* engine);
    int count() const { return int(m_rows.size()); }

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    Q_INVOKABLE void remove(int row);
    /// Removes every bookmark of the open file.
    Q_INVOKABLE void clearAll();

Q_SIGNALS:
    void engineChanged();
    void countChanged();

private:
    BookmarkManager* manager() const;
    void reload();

    QPointer<PlaybackEngine> m_engine;
    QList<Bookmark> m_rows;
    QHash<QUuid, QImage> m_pictures; // decoded once per bookmark and picture
};
