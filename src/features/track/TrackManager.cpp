#include "TrackManager.h"

#include "base/PropertyUpdate.h"

#include <algorithm>

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

TrackCycle TrackManager::nextAudioTrack() const
{
    if (m_audioTracks.size() < 2)
        return {};
    const auto current =
        std::find_if(m_audioTracks.begin(), m_audioTracks.end(),
                     [this](const MediaTrack& t) { return t.id == m_currentAudioID; });
    // An unknown selection counts as the first track.
    const int index = current == m_audioTracks.end() ? 0 : int(current - m_audioTracks.begin());
    const int next = (index + 1) % int(m_audioTracks.size());
    return {TrackCycle::Result::Track, m_audioTracks.at(next), next + 1, int(m_audioTracks.size())};
}

TrackCycle TrackManager::nextSubtitleTrack() const
{
    if (m_subtitleTracks.isEmpty())
        return {};
    // The cycle is every track, then off; an unknown selection counts as off.
    const int count = int(m_subtitleTracks.size());
    const auto current =
        std::find_if(m_subtitleTracks.begin(), m_subtitleTracks.end(),
                     [this](const MediaTrack& t) { return t.id == m_currentSubtitleID; });
    const int index =
        current == m_subtitleTracks.end() ? count : int(current - m_subtitleTracks.begin());
    const int next = (index + 1) % (count + 1);
    if (next == count)
        return {TrackCycle::Result::Off, {}, 0, count};
    return {TrackCycle::Result::Track, m_subtitleTracks.at(next), next + 1, count};
}
