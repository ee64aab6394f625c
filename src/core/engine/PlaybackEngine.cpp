#include "PlaybackEngine.h"

#include "core/model/PropertyUpdate.h"
#include "core/model/TimeFormat.h"
#include "core/model/WindowState.h"
#include "features/bookmark/BookmarkManager.h"
#include "features/filter/FilterManager.h"
#include "features/hdr/HDRManager.h"
#include "features/osd/OSDManager.h"
#include "features/playback/ABLoopManager.h"
#include "features/playlist/PlaybackHistoryManager.h"
#include "features/playlist/PlaylistManager.h"
#include "features/thumbnail/ThumbnailGenerator.h"
#include "features/track/TrackManager.h"
#include "infrastructure/keybinding/KeyBindingManager.h"
#include "infrastructure/persistence/DatabaseManager.h"
#include "infrastructure/persistence/PerFileSettingsStore.h"
#include "infrastructure/system/NowPlayingManager.h"
#include "MPVDecoder.h"
#include "MPVProperties.h"

#include <QFileInfo>
#include <QImageReader>
#include <QMimeDatabase>
#include <QPointer>

using velmar::assignIfChanged;

namespace {

constexpr double kMessageSeconds = 1.5;
constexpr double kResumeThresholdSeconds = 5.0;
constexpr double kMaxAudioDelaySeconds = 5.0;
constexpr int kHistoryLimit = 50;

bool isImageFile(const QUrl& url)
{
    const QMimeType type =
        QMimeDatabase().mimeTypeForFile(url.toLocalFile(), QMimeDatabase::MatchExtension);
    return type.isValid() && type.name().startsWith(QLatin1String("image/"));
}

} // namespace

PlaybackEngine::PlaybackEngine(QObject* parent)
    : QObject(parent)
    , m_osd(new OSDManager(this))
    , m_windowState(new WindowState(this))
    , m_playlist(new PlaylistManager(this))
    , m_filters(new FilterManager(this))
    , m_abLoop(new ABLoopManager(this))
    , m_hdr(new HDRManager(this))
    , m_tracks(new TrackManager(this))
    , m_nowPlaying(new NowPlayingManager(this))
    , m_thumbnails(new ThumbnailGenerator(this))
    , m_decoder(new MPVDecoder(this))
    , m_keyBindings(new KeyBindingManager(this))
{
    m_keyBindings->setEngine(this);
    DatabaseManager& database = DatabaseManager::shared();
    database.setup();
    m_history = new PlaybackHistoryManager(database.db(), kHistoryLimit, this);
    m_bookmarks = new BookmarkManager(database.db(), this);
    m_perFileStore = std::make_unique<PerFileSettingsStore>(database.db());

    m_nowPlaying->setEngine(this);
    m_nowPlaying->setPlaybackState(NowPlayingManager::PlaybackState::Paused);
    m_nowPlaying->setupRemoteCommands();

    m_decoder->setHDRManager(m_hdr);
    m_decoder->setTrackManager(m_tracks);

    // Restore the saved volume and mute through their setters, so that a stored volume other
    // than the built-in 1.0 announces itself once at start-up.
    if (const auto storedVolume = m_preferences.storedVolume())
        setVolume(*storedVolume);
    setIsMuted(m_preferences.storedIsMuted());
    pushVolumeAndMute();

    m_decoder->onPlaybackDidEnd = [self = QPointer(this)] {
        if (self)
            self->handlePlaybackDidEnd();
    };
    connect(m_decoder, &MPVDecoder::fileFailed, this, &PlaybackEngine::handleFileFailed);

    startPositionTimer();
}

PlaybackEngine::~PlaybackEngine() = default;

double PlaybackEngine::progress() const
{
    if (m_duration <= 0)
        return 0.0;
    if (m_isAtEnd)
        return 1.0;
    return std::min(m_currentTime / m_duration, 1.0);
}

QVariant PlaybackEngine::mediaInfoVariant() const
{
    return m_mediaInfo ? QVariant::fromValue(*m_mediaInfo) : QVariant();
}

// MARK: position timer and end of file

void PlaybackEngine::startPositionTimer()
{
    m_positionTimer.stop();
    m_positionTimer.setTimerType(Qt::PreciseTimer);
    m_positionTimer.setInterval(1000 / 30);
    connect(&m_positionTimer, &QTimer::timeout, this, &PlaybackEngine::onPositionTick,
            Qt::UniqueConnection);
    m_positionTimer.start();
}

void PlaybackEngine::onPositionTick()
{
    // Paused positions are owned by seeks and scrubs; only live playback follows libmpv.
    if (m_state.kind() != PlayerState::Kind::Playing)
        return;
    setCurrentTime(m_decoder->currentTime());
    setDuration(m_decoder->duration());
    m_nowPlaying->updateNowPlayingInfo(m_mediaTitle, m_currentTime, m_duration, m_playbackRate);
    if (const std::optional<double> loopStart = m_abLoop->shouldLoop(m_currentTime))
        seek(*loopStart);
}

void PlaybackEngine::handlePlaybackDidEnd()
{
    if (m_playlist->hasNext()) {
        playNext();
        return;
    }
    setIsAtEnd(true);
    setState(PlayerState::Kind::Paused);
    m_sleepPreventer.allowSleep();
    m_nowPlaying->setPlaybackState(NowPlayingManager::PlaybackState::Paused);
}

void PlaybackEngine::handleFileFailed(const QString& reason)
{
    const PlayerState::Kind kind = m_state.kind();
    if (kind == PlayerState::Kind::Idle || kind == PlayerState::Kind::Error ||
        kind == PlayerState::Kind::ViewingImage)
        return;
    const QString name = QFileInfo(m_currentURL.toLocalFile()).fileName();
    setState(
        PlayerState::error(QStringLiteral("Cannot play \u201c%1\u201d: %2").arg(name, reason)));
    m_sleepPreventer.allowSleep();
}

// MARK: loading

void PlaybackEngine::open(const QUrl& url)
{
    load(url); // the task runs on by itself; nothing waits for it
}

QCoro::Task<void> PlaybackEngine::load(QUrl url)
{
    QPointer<PlaybackEngine> self(this);
    const quint64 generation = ++m_loadGeneration;
    auto superseded = [&] { return !self || generation != m_loadGeneration; };

    // Close out the file being left before anything changes: its place and its settings.
    if (!m_currentURL.isEmpty()) {
        if (m_state.isActive())
            m_history->recordPosition(m_currentURL, m_mediaTitle, m_currentTime, m_duration);
        savePerFileSettings(m_currentURL);
    }

    setState(PlayerState::Kind::Loading);
    setCurrentURL(url);
    setMediaTitle(QFileInfo(url.path()).completeBaseName());
    setMediaInfo(std::nullopt);
    setDisplayedImage(QImage());

    if (isImageFile(url)) {
        // Images never reach libmpv; stop whatever it was playing so no sound runs on.
        m_decoder->command({QStringLiteral("stop")});
        loadImage(url);
        co_return;
    }

    m_hdr->reset();
    m_tracks->reset();

    try {
        co_await m_decoder->load(url);
    } catch (const MPVError& error) {
        if (!superseded())
            setState(PlayerState::error(error.errorDescription()));
        co_return;
    }
    // libmpv may already have rejected the file while we waited.
    if (superseded() || m_state.kind() != PlayerState::Kind::Loading)
        co_return;

    pushVolumeAndMute();
    setDuration(m_decoder->duration());
    m_playlist->updateCurrentDuration(m_duration);
    m_thumbnails->setup(url, m_duration);

    const std::optional<double> resumeAt = m_history->resumePosition(url);
    if (resumeAt && *resumeAt > kResumeThresholdSeconds) {
        setState(PlayerState::Kind::Paused);
        co_await seek(*resumeAt);
        if (superseded())
            co_return;
        m_osd->show(OSDMessage::text(QStringLiteral("Resumed at ") + velmar::formatTime(*resumeAt)),
                    kMessageSeconds);
    }

    m_abLoop->clearLoop();
    if (m_decoder->audioDelay() != 0)
        m_decoder->setMPVDouble(MPVName::audioDelay, m_decoder->audioDelay());
    restorePerFileSettings(url);

    if (auto info = m_decoder->getMediaInfo()) {
        const QFileInfo file(url.toLocalFile());
        if (const QDateTime created = file.birthTime(); created.isValid())
            info->createdAt = created;
        if (const QDateTime modified = file.lastModified(); modified.isValid())
            info->modifiedAt = modified;
        setMediaInfo(info);
    }

    setState(PlayerState::Kind::Paused);
    play();
}

QCoro::Task<void> PlaybackEngine::playNext()
{
    if (const std::optional<QUrl> url = m_playlist->next())
        co_await load(*url);
}

QCoro::Task<void> PlaybackEngine::playPrevious()
{
    if (const std::optional<QUrl> url = m_playlist->previous())
        co_await load(*url);
}

void PlaybackEngine::loadImage(const QUrl& url)
{
    QImageReader reader(url.toLocalFile());
    reader.setAutoTransform(true);
    const QImage image = reader.read();
    if (image.isNull()) {
        setState(PlayerState::error(QStringLiteral("Failed to load image")));
        return;
    }
    setDisplayedImage(image);
    setDuration(0);
    setCurrentTime(0);
    setState(PlayerState::Kind::ViewingImage);
}

void PlaybackEngine::pushVolumeAndMute()
{
    m_decoder->setVolume(m_volume);
    m_decoder->setIsMuted(m_isMuted);
    m_decoder->setMPVDouble(MPVName::volume, double(m_volume) * 100.0);
    m_decoder->setMPVFlag(MPVName::mute, m_isMuted);
}

// MARK: play, pause, seek

void PlaybackEngine::resumeDecoder()
{
    m_decoder->setMPVFlag(MPVName::pause, false);
    if (m_playbackRate != 1.0f) {
        m_decoder->setRate(m_playbackRate);
        m_decoder->setMPVDouble(MPVName::speed, double(m_playbackRate));
    }
}

void PlaybackEngine::play()
{
    const PlayerState::Kind kind = m_state.kind();
    if (kind != PlayerState::Kind::Paused && kind != PlayerState::Kind::Stopped)
        return;
    if (!m_isAtEnd) {
        resumeDecoder();
    } else {
        // Restart after the end: jump back to the start, then let it run.
        setIsAtEnd(false);
        setCurrentTime(0);
        m_decoder->scrub(0);
        m_decoder->seek(0);
        resumeDecoder();
    }
    setState(PlayerState::Kind::Playing);
    m_sleepPreventer.preventSleep();
    m_nowPlaying->setPlaybackState(NowPlayingManager::PlaybackState::Playing);
}

void PlaybackEngine::pause()
{
    if (m_state.kind() != PlayerState::Kind::Playing)
        return;
    m_decoder->setMPVFlag(MPVName::pause, true);
    setState(PlayerState::Kind::Paused);
    m_sleepPreventer.allowSleep();
    m_nowPlaying->setPlaybackState(NowPlayingManager::PlaybackState::Paused);
}

QCoro::Task<void> PlaybackEngine::seek(double seconds)
{
    if (!m_state.isActive())
        co_return;
    setIsAtEnd(false);
    setIsSeeking(true);
    setCurrentTime(seconds);
    m_decoder->seek(seconds);
    setIsSeeking(false);
    setNeedsFrameRefresh(true);
}

QCoro::Task<void> PlaybackEngine::seekRelative(double offset)
{
    if (!m_state.isActive())
        co_return;
    setIsAtEnd(false);
    m_decoder->seekRelativeFast(offset);
    setCurrentTime(m_decoder->currentTime());
    m_osd->show(OSDMessage::seek(m_currentTime, m_duration), kMessageSeconds);
}

void PlaybackEngine::scrubBegan()
{
    if (!m_state.isActive())
        return;
    m_wasPlayingBeforeScrub = m_state.kind() == PlayerState::Kind::Playing;
    // The state stays "playing": the drag only holds the picture still.
    if (m_wasPlayingBeforeScrub)
        m_decoder->setMPVFlag(MPVName::pause, true);
}

void PlaybackEngine::scrub(double seconds)
{
    if (!m_state.isActive())
        return;
    setCurrentTime(seconds);
    m_decoder->scrub(seconds);
    setNeedsFrameRefresh(true);
}

void PlaybackEngine::scrubEnded(double seconds)
{
    [](QPointer<PlaybackEngine> self, double target) -> QCoro::Task<void> {
        if (!self)
            co_return;
        co_await self->seek(target);
        if (!self)
            co_return;
        if (self->m_wasPlayingBeforeScrub)
            self->resumeDecoder();
        self->m_wasPlayingBeforeScrub = false;
    }(QPointer(this), seconds);
}

void PlaybackEngine::stepForward()
{
    if (m_state.kind() == PlayerState::Kind::Playing)
        pause();
    if (m_state.kind() != PlayerState::Kind::Paused)
        return;
    m_decoder->command({QStringLiteral("frame-step")});
    setNeedsFrameRefresh(true);
    m_osd->show(OSDMessage::text(QStringLiteral("Frame \u2192")), kMessageSeconds);
}

void PlaybackEngine::stepBackward()
{
    if (m_state.kind() == PlayerState::Kind::Playing)
        pause();
    if (m_state.kind() != PlayerState::Kind::Paused)
        return;
    m_decoder->command({QStringLiteral("frame-back-step")});
    setNeedsFrameRefresh(true);
    m_osd->show(OSDMessage::text(QStringLiteral("\u2190 Frame")), kMessageSeconds);
}

// MARK: volume, mute, speed

void PlaybackEngine::setVolume(float volume)
{
    if (!assignIfChanged(m_volume, volume))
        return;
    m_decoder->setVolume(volume);
    m_decoder->setMPVDouble(MPVName::volume, double(volume) * 100.0);
    m_preferences.setFloat(PreferenceKeys::volume, volume);
    m_osd->show(OSDMessage::volume(m_isMuted ? 0.0f : volume), kMessageSeconds);
    Q_EMIT volumeChanged();
}

void PlaybackEngine::adjustVolume(float delta)
{
    const float target = std::max(std::min(m_volume + delta, 1.0f), 0.0f);
    if (target != m_volume)
        setVolume(target);
}

void PlaybackEngine::setIsMuted(bool muted)
{
    if (!assignIfChanged(m_isMuted, muted))
        return;
    m_decoder->setIsMuted(muted);
    m_decoder->setMPVFlag(MPVName::mute, muted);
    m_preferences.setBool(PreferenceKeys::isMuted, muted);
    m_osd->show(OSDMessage::muted(muted), kMessageSeconds);
    Q_EMIT isMutedChanged();
}

void PlaybackEngine::setPlaybackRate(float rate)
{
    if (!assignIfChanged(m_playbackRate, rate))
        return;
    m_decoder->setRate(rate);
    m_decoder->setMPVDouble(MPVName::speed, double(rate));
    m_osd->show(OSDMessage::playbackRate(rate), kMessageSeconds);
    Q_EMIT playbackRateChanged();
}

void PlaybackEngine::cyclePlaybackRate()
{
    const auto* found = std::find(playbackRates.begin(), playbackRates.end(), m_playbackRate);
    if (found == playbackRates.end()) {
        setPlaybackRate(1.0f);
        return;
    }
    const auto* next = std::next(found);
    setPlaybackRate(next == playbackRates.end() ? playbackRates.front() : *next);
}

// MARK: rotation, audio delay and per-file settings

void PlaybackEngine::applyRotation(int degrees)
{
    const int rotation = degrees % 360; // keeps the sign: -90 stays -90
    if (assignIfChanged(m_videoRotation, rotation))
        Q_EMIT videoRotationChanged();
    m_decoder->setMPVInt64("video-rotate", rotation);
    setNeedsFrameRefresh(true);
}

void PlaybackEngine::setRotation(int degrees)
{
    applyRotation(degrees);
    m_osd->show(OSDMessage::text(QStringLiteral("Rotation: %1\u00b0").arg(m_videoRotation)),
                kMessageSeconds);
}

void PlaybackEngine::setAudioDelay(double seconds)
{
    const double delay = std::clamp(seconds, -kMaxAudioDelaySeconds, kMaxAudioDelaySeconds);
    m_decoder->setAudioDelay(delay);
    m_decoder->setMPVDouble(MPVName::audioDelay, delay);
    // Returning to zero is deliberately silent.
    if (delay != 0) {
        const QString text = QString::asprintf("Audio delay: %s%.2fs", delay > 0 ? "+" : "", delay);
        m_osd->show(OSDMessage::text(text), kMessageSeconds);
    }
}

void PlaybackEngine::syncFiltersToMPV()
{
    for (const StandardFilter& filter : m_filters->filters()) {
        const float value = filter.effectiveValue();
        if (filter.id == QLatin1String("brightness")) {
            m_decoder->setMPVDouble("brightness", double(value) * 100.0);
        } else if (filter.id == QLatin1String("contrast")) {
            m_decoder->setMPVDouble("contrast", (double(value) - 1.0) * 100.0);
        } else if (filter.id == QLatin1String("saturation")) {
            m_decoder->setMPVDouble("saturation", (double(value) - 1.0) * 100.0);
        } else if (filter.id == QLatin1String("sharpen")) {
            // "vf" replaces libmpv's whole filter chain; sharpening is its only user.
            m_decoder->setMPVString("vf", value > 0 ? QStringLiteral("unsharp=la=") +
                                                          velmar::shortestFloatText(value)
                                                    : QString());
        } else if (filter.id == QLatin1String("deband")) {
            m_decoder->setMPVFlag("deband", filter.isEnabled);
            if (filter.isEnabled)
                m_decoder->setMPVInt64("deband-threshold", qint64(value));
        }
    }
    setNeedsFrameRefresh(true);
}

void PlaybackEngine::setLoopPointA()
{
    m_abLoop->setPointA(m_currentTime);
    if (m_abLoop->pointB() && *m_abLoop->pointB() <= m_currentTime)
        m_abLoop->setPointB(std::nullopt);
    m_osd->show(OSDMessage::text(QStringLiteral("Loop A: ") + velmar::formatTime(m_currentTime) +
                                 QStringLiteral("  \u2014 \\ to clear")),
                kMessageSeconds);
}

void PlaybackEngine::setLoopPointB()
{
    const std::optional<double> a = m_abLoop->pointA();
    if (a && *a < m_currentTime)
        m_abLoop->setPointB(m_currentTime);
    if (a && m_abLoop->pointB())
        m_osd->show(OSDMessage::text(QStringLiteral("Loop A-B active  \u2014 \\ to clear")),
                    kMessageSeconds);
}

void PlaybackEngine::savePerFileSettings(const QUrl& url)
{
    m_perFileStore->save(
        PerFileSettings{m_videoRotation, m_filters->states(), m_decoder->audioDelay()}, url);
}

void PlaybackEngine::restorePerFileSettings(const QUrl& url)
{
    // Applied quietly: a file opening should announce its resume point, not its settings.
    const std::optional<PerFileSettings> stored = m_perFileStore->settings(url.path());
    if (!stored) {
        applyRotation(0);
        m_filters->resetAll();
        syncFiltersToMPV();
        return;
    }
    applyRotation(stored->rotation);
    if (stored->audioDelay != 0) {
        m_decoder->setAudioDelay(stored->audioDelay);
        m_decoder->setMPVDouble(MPVName::audioDelay, stored->audioDelay);
    }
    for (const FilterState& state : stored->filters)
        m_filters->apply(state);
    syncFiltersToMPV();
}

// MARK: observable setters

void PlaybackEngine::setState(const PlayerState& state)
{
    if (assignIfChanged(m_state, state))
        Q_EMIT stateChanged();
}

void PlaybackEngine::setCurrentTime(double seconds)
{
    if (assignIfChanged(m_currentTime, seconds)) {
        Q_EMIT currentTimeChanged();
        Q_EMIT progressChanged();
    }
}

void PlaybackEngine::setDuration(double seconds)
{
    if (assignIfChanged(m_duration, seconds)) {
        Q_EMIT durationChanged();
        Q_EMIT progressChanged();
    }
}

void PlaybackEngine::setMediaTitle(const QString& title)
{
    if (assignIfChanged(m_mediaTitle, title))
        Q_EMIT mediaTitleChanged();
}

void PlaybackEngine::setMediaInfo(const std::optional<MediaInfo>& info)
{
    if (assignIfChanged(m_mediaInfo, info))
        Q_EMIT mediaInfoChanged();
}

void PlaybackEngine::setCurrentURL(const QUrl& url)
{
    if (assignIfChanged(m_currentURL, url))
        Q_EMIT currentURLChanged();
}

void PlaybackEngine::setIsSeeking(bool seeking)
{
    if (assignIfChanged(m_isSeeking, seeking))
        Q_EMIT isSeekingChanged();
}

void PlaybackEngine::setNeedsFrameRefresh(bool refresh)
{
    if (assignIfChanged(m_needsFrameRefresh, refresh))
        Q_EMIT needsFrameRefreshChanged();
}

void PlaybackEngine::setDisplayedImage(const QImage& image)
{
    // Image comparison is pixel by pixel; identity is what matters here.
    if (m_displayedImage.isNull() && image.isNull())
        return;
    m_displayedImage = image;
    Q_EMIT displayedImageChanged();
}

void PlaybackEngine::setIsAtEnd(bool atEnd)
{
    if (assignIfChanged(m_isAtEnd, atEnd)) {
        Q_EMIT isAtEndChanged();
        Q_EMIT progressChanged();
    }
}
