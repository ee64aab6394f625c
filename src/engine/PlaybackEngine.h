#pragma once

#include "base/PropertyUpdate.h"
#include "engine/MPVDecoder.h"
#include "features/filter/VideoAdjustments.h"
#include "features/playback/ABLoopManager.h"
#include "model/MediaInfo.h"
#include "model/PlayerState.h"

#include <optional>
#include <QCoroTask>
#include <QFuture>
#include <QImage>
#include <QObject>
#include <QTimer>
#include <QtQml/qqmlregistration.h>
#include <QUrl>

class BookmarkManager;
class HDRManager;
class Library;
class OSDManager;
class PerFileSettingsStore;
class PiPManager;
class PlaybackHistoryManager;
class PlaylistManager;
class TrackManager;
class ThumbnailGenerator;
class WindowState;
Q_MOC_INCLUDE("features/hdr/HDRManager.h")
Q_MOC_INCLUDE("features/osd/OSDManager.h")
Q_MOC_INCLUDE("features/pip/PiPManager.h")
Q_MOC_INCLUDE("features/thumbnail/ThumbnailGenerator.h")
Q_MOC_INCLUDE("features/track/TrackManager.h")
Q_MOC_INCLUDE("features/window/WindowState.h")

/// The state machine of playback and the operations on it. Owns the decoder and the managers
/// of what is played, and publishes the observable state the user interface binds to. It words
/// nothing and mirrors nothing: whoever acts for the user announces, and whatever shows the
/// state elsewhere (the desktop's media controls, the saved volume) follows its signals.
///
/// GUI thread only. Coroutines resume on the GUI thread and re-check that the engine still
/// exists after every suspension. Operations that need media do nothing without it.
class PlaybackEngine : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The application owns the one engine")
    Q_PROPERTY(PlayerState state READ state NOTIFY stateChanged)
    Q_PROPERTY(double currentTime READ currentTime NOTIFY currentTimeChanged)
    Q_PROPERTY(double duration READ duration NOTIFY durationChanged)
    Q_PROPERTY(double progress READ progress NOTIFY progressChanged)
    Q_PROPERTY(QString mediaTitle READ mediaTitle NOTIFY mediaTitleChanged)
    Q_PROPERTY(QVariant mediaInfo READ mediaInfoVariant NOTIFY mediaInfoChanged)
    Q_PROPERTY(QUrl currentURL READ currentURL NOTIFY currentURLChanged)
    Q_PROPERTY(float volume READ volume WRITE setVolume NOTIFY volumeChanged)
    Q_PROPERTY(bool isMuted READ isMuted WRITE setIsMuted NOTIFY isMutedChanged)
    Q_PROPERTY(
        float playbackRate READ playbackRate WRITE setPlaybackRate NOTIFY playbackRateChanged)
    Q_PROPERTY(bool isSeeking READ isSeeking NOTIFY isSeekingChanged)
    Q_PROPERTY(bool needsFrameRefresh READ needsFrameRefresh NOTIFY needsFrameRefreshChanged)
    Q_PROPERTY(int videoRotation READ videoRotation NOTIFY videoRotationChanged)
    Q_PROPERTY(QImage displayedImage READ displayedImage NOTIFY displayedImageChanged)
    Q_PROPERTY(bool isAtEnd READ isAtEnd NOTIFY isAtEndChanged)
    Q_PROPERTY(MPVDecoder* decoder READ decoder CONSTANT)
    Q_PROPERTY(OSDManager* osd READ osd CONSTANT)
    Q_PROPERTY(TrackManager* tracks READ tracks CONSTANT)
    Q_PROPERTY(HDRManager* hdr READ hdr CONSTANT)
    Q_PROPERTY(WindowState* windowState READ windowState CONSTANT)
    Q_PROPERTY(ThumbnailGenerator* thumbnails READ thumbnails CONSTANT)
    Q_PROPERTY(PiPManager* pip READ pip CONSTANT)
    Q_PROPERTY(ABLoopManager* abLoop READ abLoop CONSTANT)
    Q_PROPERTY(FilterManager* filters READ filters CONSTANT)

public:
    explicit PlaybackEngine(Library& library, QObject* parent = nullptr); // library outlives it

    PlayerState state() const { return m_state; }
    double currentTime() const { return m_currentTime; }
    double duration() const { return m_duration; }
    /// 0 without a duration, 1 at the end, else the played fraction (capped at 1).
    double progress() const
    {
        return m_duration <= 0 ? 0.0 : m_isAtEnd ? 1.0 : std::min(m_currentTime / m_duration, 1.0);
    }
    QString mediaTitle() const { return m_mediaTitle; }
    std::optional<MediaInfo> mediaInfo() const { return m_mediaInfo; }
    QVariant mediaInfoVariant() const
    {
        return m_mediaInfo ? QVariant::fromValue(*m_mediaInfo) : QVariant();
    }
    QUrl currentURL() const { return m_currentURL; } // empty until a file is opened
    float volume() const { return m_volume; }
    bool isMuted() const { return m_isMuted; }
    float playbackRate() const { return m_playbackRate; }
    bool isSeeking() const { return m_isSeeking; }
    bool needsFrameRefresh() const { return m_needsFrameRefresh; }
    int videoRotation() const { return m_adjustments->rotation(); }
    QImage displayedImage() const { return m_displayedImage; }
    bool isAtEnd() const { return m_isAtEnd; }

    MPVDecoder* decoder() const { return m_decoder; }
    OSDManager* osd() const { return m_osd; }
    TrackManager* tracks() const { return m_tracks; }
    HDRManager* hdr() const { return m_hdr; }
    WindowState* windowState() const { return m_windowState; }
    PlaybackHistoryManager* history() const { return m_history; }
    BookmarkManager* bookmarks() const { return m_bookmarks; }
    PerFileSettingsStore* perFileStore() const { return m_perFileStore; }
    PlaylistManager* playlist() const { return m_playlist; }
    FilterManager* filters() const { return m_adjustments->filters(); }
    VideoAdjustments* adjustments() const { return m_adjustments; }
    ABLoopManager* abLoop() const { return m_abLoop; }
    ThumbnailGenerator* thumbnails() const { return m_thumbnails; }
    PiPManager* pip() const { return m_pip; }

    /// Opens a media or image file; one that cannot be played ends in the error state.
    QCoro::Task<void> load(QUrl url);
    QCoro::Task<void> playNext();
    QCoro::Task<void> playPrevious();
    /// Writes down the current file's place and settings, as leaving it does.
    void savePlace();

    Q_INVOKABLE void play();
    Q_INVOKABLE void pause();
    QCoro::Task<void> seek(double seconds);
    QCoro::Task<void> seekRelative(double offset);
    Q_INVOKABLE void scrubBegan();
    Q_INVOKABLE void scrub(double seconds);
    Q_INVOKABLE void scrubEnded(double seconds);
    /// One frame forward or back, pausing first; false without media.
    bool stepForward() { return step(true); }
    bool stepBackward() { return step(false); }

    void setVolume(float volume);
    /// False when the volume was already at that end of 0…1.
    bool adjustVolume(float delta);
    void setIsMuted(bool muted);
    void setPlaybackRate(float rate);
    Q_INVOKABLE void cyclePlaybackRate();

    /// The render surface has drawn the refreshed frame.
    Q_INVOKABLE void acknowledgeFrameRefresh(bool pending = false)
    {
        set(m_needsFrameRefresh, pending, &PlaybackEngine::needsFrameRefreshChanged);
    }

Q_SIGNALS:
    void stateChanged();
    void currentTimeChanged();
    void durationChanged();
    void progressChanged();
    void mediaTitleChanged();
    void mediaInfoChanged();
    void currentURLChanged();
    void volumeChanged();
    void isMutedChanged();
    void playbackRateChanged();
    void isSeekingChanged();
    void needsFrameRefreshChanged();
    void videoRotationChanged();
    void displayedImageChanged();
    void isAtEndChanged();
    /// A file opened where it was left last time.
    void resumed(double position);

private:
    template <typename T, typename U>
    void set(T& field, const U& value, void (PlaybackEngine::*changed)())
    {
        velmar::updateProperty(this, field, value, changed);
    }
    bool step(bool forward);
    void onPositionTick();
    void handleEndReached();
    void handleFileEnded(MPVDecoder::EndReason reason, const QString& error);
    void fail(const QString& reason);
    bool isLoading() const { return m_settledGeneration != m_loadGeneration; }
    void refreshMediaInfo();
    void resumeDecoder();
    void setState(const PlayerState& state);
    void setCurrentTime(double t) { set(m_currentTime, t, &PlaybackEngine::currentTimeChanged); }
    void setDuration(double t) { set(m_duration, t, &PlaybackEngine::durationChanged); }
    void setIsAtEnd(bool atEnd) { set(m_isAtEnd, atEnd, &PlaybackEngine::isAtEndChanged); }
    void setNeedsFrameRefresh() { acknowledgeFrameRefresh(true); }
    void setDisplayedImage(const QImage& image);

    PlayerState m_state;
    double m_currentTime = 0;
    double m_duration = 0;
    QString m_mediaTitle;
    std::optional<MediaInfo> m_mediaInfo;
    QUrl m_currentURL;
    float m_volume = 1.0f;
    bool m_isMuted = false;
    float m_playbackRate = 1.0f;
    bool m_isSeeking = false;
    bool m_needsFrameRefresh = false;
    QImage m_displayedImage;
    bool m_isAtEnd = false;

    MPVDecoder* m_decoder;
    OSDManager* m_osd;
    WindowState* m_windowState;
    PlaylistManager* m_playlist;
    VideoAdjustments* m_adjustments;
    ABLoopManager* m_abLoop;
    HDRManager* m_hdr;
    TrackManager* m_tracks;
    ThumbnailGenerator* m_thumbnails;
    PiPManager* m_pip;
    PlaybackHistoryManager* m_history;
    BookmarkManager* m_bookmarks;
    PerFileSettingsStore* m_perFileStore;
    QTimer m_positionTimer;
    bool m_wasPlayingBeforeScrub = false;
    QFuture<std::pair<QDateTime, QDateTime>> m_fileDates; // read off the GUI thread
    // Each load takes a ticket; one that finds a newer ticket after a wait was superseded.
    quint64 m_loadGeneration = 0;
    quint64 m_settledGeneration = 0;      // the last load that got to its end
    int m_failuresInARow = 0;             // playlist items that failed one after another
    bool m_advancingAfterFailure = false; // the next load continues such a run
};
