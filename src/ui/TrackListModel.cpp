#include "TrackListModel.h"

#include "features/track/TrackManager.h"

void TrackListModel::setEngine(PlaybackEngine* engine)
{
    if (m_engine == engine)
        return;
    if (TrackManager* old = manager())
        disconnect(old, nullptr, this, nullptr);
    m_engine = engine;
    if (TrackManager* tracks = manager()) {
        connect(tracks, &TrackManager::audioTracksChanged, this, &TrackListModel::reload);
        connect(tracks, &TrackManager::subtitleTracksChanged, this, &TrackListModel::reload);
        connect(tracks, &TrackManager::currentAudioIDChanged, this,
                &TrackListModel::followSelection);
        connect(tracks, &TrackManager::currentSubtitleIDChanged, this,
                &TrackListModel::followSelection);
    }
    reload();
    Q_EMIT engineChanged();
}

void TrackListModel::setGroup(Group group)
{
    if (m_group == group)
        return;
    m_group = group;
    reload();
    Q_EMIT groupChanged();
}

TrackManager* TrackListModel::manager() const
{
    return m_engine ? m_engine->tracks() : nullptr;
}

qint64 TrackListModel::selectedID() const
{
    if (!manager())
        return 0;
    return m_group == Group::Audio ? manager()->currentAudioID() : manager()->currentSubtitleID();
}

int TrackListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : count();
}

QVariant TrackListModel::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const MediaTrack& track = m_rows.at(index.row());
    switch (role) {
    case TrackIdRole:
        return track.id;
    case LabelRole:
        return track.displayLabel();
    case DetailRole:
        return detail(track);
    case IsActiveRole:
        return track.id == selectedID();
    case IsExternalRole:
        return track.isExternal;
    default:
        return {};
    }
}

QHash<int, QByteArray> TrackListModel::roleNames() const
{
    return {{TrackIdRole, "trackId"},
            {LabelRole, "label"},
            {DetailRole, "detail"},
            {IsActiveRole, "isActive"},
            {IsExternalRole, "isExternal"}};
}

QString TrackListModel::detail(const MediaTrack& track)
{
    QStringList parts;
    if (track.codec)
        parts << *track.codec;
    if (track.lang)
        parts << *track.lang;
    if (track.isDefault)
        parts << QStringLiteral("default");
    return parts.join(QStringLiteral(" \u00b7 "));
}

void TrackListModel::reload()
{
    QList<MediaTrack> rows;
    if (TrackManager* tracks = manager()) {
        if (m_group == Group::Audio) {
            rows = tracks->audioTracks();
        } else {
            const bool external = m_group == Group::ExternalSubtitles;
            for (const MediaTrack& track : tracks->subtitleTracks()) {
                if (track.isExternal == external)
                    rows << track;
            }
        }
    }
    if (rows == m_rows)
        return;
    const bool countChanges = rows.size() != m_rows.size();
    beginResetModel();
    m_rows = rows;
    endResetModel();
    if (countChanges)
        Q_EMIT countChanged();
}

void TrackListModel::followSelection()
{
    if (!m_rows.isEmpty())
        Q_EMIT dataChanged(index(0), index(count() - 1), {IsActiveRole});
}
