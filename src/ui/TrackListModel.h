#pragma once

#include "engine/PlaybackEngine.h"
#include "model/MediaTrack.h"

#include <QAbstractListModel>
#include <QPointer>
#include <QStringList>
#include <QtQml/qqmlregistration.h>

class TrackManager;

/// One group of the open file's tracks for the side panel: its audio tracks, or the subtitle
/// tracks inside the file, or those loaded from files beside it. Each row knows whether it is
/// the selected track. Follows the track manager. GUI thread only.
class TrackListModel : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(PlaybackEngine* engine READ engine WRITE setEngine NOTIFY engineChanged)
    Q_PROPERTY(Group group READ group WRITE setGroup NOTIFY groupChanged)
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    enum class Group { Audio, InternalSubtitles, ExternalSubtitles };
    Q_ENUM(Group)
    enum Role {
        TrackIdRole = Qt::UserRole + 1,
        LabelRole,
        DetailRole,
        IsActiveRole,
        IsExternalRole
    };

    using QAbstractListModel::QAbstractListModel;

    PlaybackEngine* engine() const { return m_engine; }
    void setEngine(PlaybackEngine* engine);
    Group group() const { return m_group; }
    void setGroup(Group group);
    int count() const { return int(m_rows.size()); }

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    /// "aac · eng · default": what there is of codec, language and the default flag.
    static QString detail(const MediaTrack& track);

Q_SIGNALS:
    void engineChanged();
    void groupChanged();
    void countChanged();

private:
    TrackManager* manager() const;
    qint64 selectedID() const;
    void reload();
    void followSelection();

    QPointer<PlaybackEngine> m_engine;
    Group m_group = Group::Audio;
    QList<MediaTrack> m_rows;
};
