#pragma once

#include "core/model/MediaInfo.h"
#include "core/model/PerFileSettings.h"
#include "core/model/PlayerState.h"
#include "infrastructure/preferences/Preferences.h"
#include "SleepPreventer.h"

#include <array>
#include <memory>
#include <optional>
#include <QCoroTask>
#include <QImage>
#include <QObject>
#include <QTimer>
#include <QtQml/qqmlregistration.h>
#include <QUrl>
#include <QUuid>

class MPVDecoder;
class OSDManager;
class TrackManager;
class HDRManager;
class WindowState;
class PlaybackHistoryManager;
class BookmarkManager;
class PerFileSettingsStore;
class PlaylistManager;
class FilterManager;
class ABLoopManager;
class KeyBindingManager;
class NowPlayingManager;
class ThumbnailGenerator;
Q_MOC_INCLUDE("features/osd/OSDManager.h")
Q_MOC_INCLUDE("features/track/TrackManager.h")
Q_MOC_INCLUDE("features/hdr/HDRManager.h")
Q_MOC_INCLUDE("core/model/WindowState.h")
Q_MOC_INCLUDE("infrastructure/keybinding/KeyBindingManager.h")
Q_MOC_INCLUDE("features/thumbnail/ThumbnailGenerator.h")

/// The player's single controller: owns the decoder and the managers, publishes the observable
/// playback state the UI binds to and implements every user-level operation.
///
/// GUI thread only. Asynchronous operations are coroutines that resume on the GUI thread and
/// re-check that the engine still exists after every suspension. Operations that need loaded
/// media do nothing, silently, in states where they do not apply.
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
    Q_PROPERTY(OSDManager* osd READ osd CONSTANT)
    Q_PROPERTY(TrackManager* tracks READ tracks CONSTANT)
    Q_PROPERTY(HDRManager* hdr READ hdr CONSTANT)
    Q_PROPERTY(WindowState* windowState READ windowState CONSTANT)
    Q_PROPERTY(KeyBindingManager* keyBindings READ keyBindings CONSTANT)
    Q_PROPERTY(ThumbnailGenerator* thumbnails READ thumbnails CONSTANT)

public:
    explicit PlaybackEngine(QObject* parent = nullptr);
    ~PlaybackEngine() override;

    PlayerState state() const { return m_state; }
    double currentTime() const { return m_currentTime; }
    double duration() const { return m_duration; }
    /// 0 without a duration, 1 at the end, else the played fraction (capped at 1).
    double progress() const;
    QString mediaTitle() const { return m_mediaTitle; }
    std::optional<MediaInfo> mediaInfo() const { return m_mediaInfo; }
    QVariant mediaInfoVariant() const;
    /// Empty when nothing was ever opened.
    QUrl currentURL() const { return m_currentURL; }
    float volume() const { return m_volume; }
    bool isMuted() const { return m_isMuted; }
    float playbackRate() const { return m_playbackRate; }
    bool isSeeking() const { return m_isSeeking; }
    bool needsFrameRefresh() const { return m_needsFrameRefresh; }
    int videoRotation() const { return m_videoRotation; }
    QImage displayedImage() const { return m_displayedImage; }
    bool isAtEnd() const { return m_isAtEnd; }

    MPVDecoder* decoder() const { return m_decoder; }
    OSDManager* osd() const { return m_osd; }
    TrackManager* tracks() const { return m_tracks; }
    HDRManager* hdr() const { return m_hdr; }
    WindowState* windowState() const { return m_windowState; }
    PlaybackHistoryManager* history() const { return m_history; }
    BookmarkManager* bookmarks() const { return m_bookmarks; }
    PerFileSettingsStore* perFileStore() const { return m_perFileStore.get(); }
    PlaylistManager* playlist() const { return m_playlist; }
    FilterManager* filters() const { return m_filters; }
    ABLoopManager* abLoop() const { return m_abLoop; }
    KeyBindingManager* keyBindings() const { return m_keyBindings; }
    NowPlayingManager* nowPlaying() const { return m_nowPlaying; }
    ThumbnailGenerator* thumbnails() const { return m_thumbnails; }
    const SleepPreventer& sleepPreventer() const { return m_sleepPreventer; }

    /// Opens a media or image file. A file libmpv cannot play ends in the error state.
    QCoro::Task<void> load(QUrl url);
    /// Fire-and-forget form of `load` for QML and signal handlers.
    Q_INVOKABLE void open(const QUrl& url);

    /// Loads the playlist's next or previous entry, if there is one.
    QCoro::Task<void> playNext();
    QCoro::Task<void> playPrevious();

    Q_INVOKABLE void play();
    Q_INVOKABLE void pause();
    QCoro::Task<void> seek(double seconds);
    QCoro::Task<void> seekRelative(double offset);

    Q_INVOKABLE void scrubBegan();
    Q_INVOKABLE void scrub(double seconds);
    Q_INVOKABLE void scrubEnded(double seconds);

    Q_INVOKABLE void stepForward();
    Q_INVOKABLE void stepBackward();

    void setVolume(float volume);
    Q_INVOKABLE void adjustVolume(float delta);
    void setIsMuted(bool muted);
    /// The speeds `cyclePlaybackRate` steps through, slowest first.
    static constexpr std::array<float, 9> playbackRates = {0.25f, 0.5f, 0.75f, 1.0f, 1.25f,
                                                           1.5f,  2.0f, 3.0f,  4.0f};
    void setPlaybackRate(float rate);
    Q_INVOKABLE void cyclePlaybackRate();

    /// Rotates the picture (degrees; the remainder of 360 keeps its sign) and announces it.
    Q_INVOKABLE void setRotation(int degrees);
    /// Shifts the sound against the picture, clamped to ±5 s; announces any non-zero delay.
    Q_INVOKABLE void setAudioDelay(double seconds);
    /// Pushes every picture filter to libmpv (disabled ones at their neutral value).
    Q_INVOKABLE void syncFiltersToMPV();

    /// Marks the loop start (dropping an end that is not after it) or the loop end (only after
    /// the start) at the current position.
    Q_INVOKABLE void setLoopPointA();
    Q_INVOKABLE void setLoopPointB();

    // Tracks, subtitles, screenshots and bookmarks (PlaybackEngineCommands.cpp).
    Q_INVOKABLE void cycleAudioTrack();
    Q_INVOKABLE void cycleSubtitleTrack();
    /// 0 turns subtitles off.
    Q_INVOKABLE void setSubtitleTrack(qint64 id);
    Q_INVOKABLE void addExternalSubtitle(const QUrl& url);
    /// Saves the current video frame as a PNG in the screenshot folder and reveals it.
    Q_INVOKABLE void takeScreenshot();
    /// Bookmarks the current position; its thumbnail is captured in the background.
    void addBookmark(const std::optional<QString>& name = std::nullopt);
    QCoro::Task<void> seekToNextBookmark();
    QCoro::Task<void> seekToPreviousBookmark();

    /// The render surface calls this once it has drawn the refreshed frame.
    void acknowledgeFrameRefresh() { setNeedsFrameRefresh(false); }

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

private:
    void startPositionTimer();
    void onPositionTick();
    void handlePlaybackDidEnd();
    void handleFileFailed(const QString& reason);
    void loadImage(const QUrl& url);
    void pushVolumeAndMute();
    void resumeDecoder();
    void applyRotation(int degrees);
    QCoro::Task<void> captureBookmarkThumbnail(QUuid bookmark);
    void savePerFileSettings(const QUrl& url);
    void restorePerFileSettings(const QUrl& url);

    void setState(const PlayerState& state);
    void setCurrentTime(double seconds);
    void setDuration(double seconds);
    void setMediaTitle(const QString& title);
    void setMediaInfo(const std::optional<MediaInfo>& info);
    void setCurrentURL(const QUrl& url);
    void setIsSeeking(bool seeking);
    void setNeedsFrameRefresh(bool refresh);
    void setDisplayedImage(const QImage& image);
    void setIsAtEnd(bool atEnd);

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
    int m_videoRotation = 0;
    QImage m_displayedImage;
    bool m_isAtEnd = false;

    Preferences m_preferences;
    OSDManager* m_osd;
    WindowState* m_windowState;
    PlaylistManager* m_playlist;
    FilterManager* m_filters;
    ABLoopManager* m_abLoop;
    HDRManager* m_hdr;
    TrackManager* m_tracks;
    NowPlayingManager* m_nowPlaying;
    ThumbnailGenerator* m_thumbnails;
    SleepPreventer m_sleepPreventer;
    MPVDecoder* m_decoder;
    KeyBindingManager* m_keyBindings;
    PlaybackHistoryManager* m_history;
    BookmarkManager* m_bookmarks;
    std::unique_ptr<PerFileSettingsStore> m_perFileStore;
    QTimer m_positionTimer;
    bool m_wasPlayingBeforeScrub = false;
    // Each load takes a ticket; a load that finds a newer ticket after resuming was superseded
    // by a later load and stops, so the most recent file always wins.
    quint64 m_loadGeneration = 0;
};
