#pragma once

#include "engine/PlaybackEngine.h"

#include <QAbstractListModel>
#include <QPointer>
#include <QtQml/qqmlregistration.h>
#include <QUuid>

class PlaylistManager;

/// The side panel's playlist: one row per entry with its title, its duration and whether it is
/// the current one. Follows the engine's playlist as it changes and passes the panel's edits
/// (play, reorder, delete) to it. Appending and refreshing keep the view where it is, so a
/// list of tens of thousands of entries stays put while it grows. GUI thread only.
class PlaylistListModel : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(PlaybackEngine* engine READ engine WRITE setEngine NOTIFY engineChanged)
    Q_PROPERTY(int count READ count NOTIFY countChanged)
    /// The current entry's row, or -1.
    Q_PROPERTY(int currentRow READ currentRow NOTIFY currentRowChanged)

public:
    enum Role { TitleRole = Qt::UserRole + 1, DurationTextRole, IsCurrentRole };

    using QAbstractListModel::QAbstractListModel;

    PlaybackEngine* engine() const { return m_engine; }
    void setEngine(PlaybackEngine* engine);
    int count() const { return int(m_ids.size()); }
    int currentRow() const;

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    /// Makes the row current and opens its file.
    Q_INVOKABLE void play(int row);
    /// Moves one row so that it ends up at `to`; the current entry keeps its number.
    Q_INVOKABLE void move(int from, int to);
    Q_INVOKABLE void remove(int row);

Q_SIGNALS:
    void engineChanged();
    void countChanged();
    void currentRowChanged();

private:
    PlaylistManager* playlist() const;
    void followItems();
    void followCurrent();
    void remarkCurrent(int first, int last);
    void takeSnapshot();

    QPointer<PlaybackEngine> m_engine;
    QList<QUuid> m_ids; // the rows as the view knows them
    int m_shownCurrent = -1;
    bool m_editing = false; // the change under way is announced by the edit itself
};
