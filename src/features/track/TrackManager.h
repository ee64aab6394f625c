#pragma once

#include "model/MediaTrack.h"

#include <QList>
#include <QObject>
#include <QtQml/qqmlregistration.h>

/// Where cycling through a kind of track lands: nowhere (no tracks, or no other audio track),
/// subtitles off, or a track at `position` (from 1) of `count`.
struct TrackCycle
{
    enum class Result { NoTracks, Off, Track };
    Result result = Result::NoTracks;
    MediaTrack track;
    int position = 0;
    int count = 0;
};

/// The audio and subtitle tracks of the open file and which of them are selected (0 = none).
/// GUI thread only; fed with what libmpv reports and by track selection commands.
class TrackManager : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Owned by the playback engine")
    Q_PROPERTY(QList<MediaTrack> audioTracks READ audioTracks NOTIFY audioTracksChanged)
    Q_PROPERTY(QList<MediaTrack> subtitleTracks READ subtitleTracks NOTIFY subtitleTracksChanged)
    Q_PROPERTY(qint64 currentAudioID READ currentAudioID WRITE setCurrentAudioID NOTIFY
                   currentAudioIDChanged)
    Q_PROPERTY(qint64 currentSubtitleID READ currentSubtitleID WRITE setCurrentSubtitleID NOTIFY
                   currentSubtitleIDChanged)

public:
    using QObject::QObject;

    QList<MediaTrack> audioTracks() const { return m_audioTracks; }
    QList<MediaTrack> subtitleTracks() const { return m_subtitleTracks; }
    qint64 currentAudioID() const { return m_currentAudioID; }
    qint64 currentSubtitleID() const { return m_currentSubtitleID; }

    void setCurrentAudioID(qint64 id);
    void setCurrentSubtitleID(qint64 id);

    /// Splits a full track list into audio and subtitle lists; video tracks are not kept.
    /// The selected ids are left alone.
    void updateTracks(const QList<MediaTrack>& tracks);

    /// Empties both lists and deselects both tracks, for a new file.
    void reset();

    /// The audio track after the selected one, wrapping round; none with fewer than two.
    TrackCycle nextAudioTrack() const;
    /// The subtitle track after the selected one, then "off", then the first again.
    TrackCycle nextSubtitleTrack() const;

Q_SIGNALS:
    void audioTracksChanged();
    void subtitleTracksChanged();
    void currentAudioIDChanged();
    void currentSubtitleIDChanged();

private:
    void setAudioTracks(const QList<MediaTrack>& tracks);
    void setSubtitleTracks(const QList<MediaTrack>& tracks);

    QList<MediaTrack> m_audioTracks;
    QList<MediaTrack> m_subtitleTracks;
    qint64 m_currentAudioID = 0;
    qint64 m_currentSubtitleID = 0;
};
