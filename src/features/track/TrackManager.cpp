#include "TrackManager.h"

#include "core/model/PropertyUpdate.h"

using velmar::assignIfChanged;

void TrackManager::setCurrentAudioID(qint64 id)
{
    if (assignIfChanged(m_currentAudioID, id))
        Q_EMIT currentAudioIDChanged();
}

void TrackManager::setCurrentSubtitleID(qint64 id)
{
    if (assignIfChanged(m_currentSubtitleID, id))
        Q_EMIT currentSubtitleIDChanged();
}

void TrackManager::setAudioTracks(const QList<MediaTrack>& tracks)
{
    if (assignIfChanged(m_audioTracks, tracks))
        Q_EMIT audioTracksChanged();
}

void TrackManager::setSubtitleTracks(const QList<MediaTrack>& tracks)
{
    if (assignIfChanged(m_subtitleTracks, tracks))
        Q_EMIT subtitleTracksChanged();
}

void TrackManager::updateTracks(const QList<MediaTrack>& tracks)
{
    QList<MediaTrack> audio;
    QList<MediaTrack> subtitles;
    for (const MediaTrack& track : tracks) {
        if (track.type == TrackType::Audio)
            audio << track;
        else if (track.type == TrackType::Sub)
            subtitles << track;
    }
    setAudioTracks(audio);
    setSubtitleTracks(subtitles);
}

void TrackManager::reset()
{
    setAudioTracks({});
    setSubtitleTracks({});
    setCurrentAudioID(0);
    setCurrentSubtitleID(0);
}
