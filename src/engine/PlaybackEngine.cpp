#include "PlaybackEngine.h"

#include "base/StartupTrace.h"
#include "features/bookmark/BookmarkManager.h"
#include "features/hdr/HDRManager.h"
#include "features/osd/OSDManager.h"
#include "features/pip/PiPManager.h"
#include "features/playlist/PlaybackHistoryManager.h"
#include "features/playlist/PlaylistManager.h"
#include "features/thumbnail/ThumbnailGenerator.h"
#include "features/track/TrackManager.h"
#include "features/window/WindowState.h"
#include "infrastructure/persistence/PerFileSettingsStore.h"
#include "model/MediaFiles.h"

#include <QCoroFuture>
#include <QFileInfo>
#include <QPointer>
#include <QScopeGuard>
#include <QtConcurrent/QtConcurrentRun>

namespace {

constexpr double kResumeThresholdSeconds = 5.0;
constexpr int kHistoryLimit = 50;
// After a playlist item fails, its error stays up this long before the next item loads; a
// run of this many failures in a row stops the playlist with the last error on screen.
constexpr std::chrono::milliseconds kFailureGlimpse{800};
constexpr int kFailuresBeforeStopping = 10;

} // namespace

PlaybackEngine::PlaybackEngine(Library& library, QObject* parent)
    : QObject(parent)
    , m_decoder(new MPVDecoder(this))
    , m_osd(new OSDManager(this))
    , m_windowState(new WindowState(this))
    , m_playlist(new PlaylistManager(this))
    , m_adjustments(new VideoAdjustments(this))
    , m_abLoop(new ABLoopManager(this))
    , m_hdr(new HDRManager(this))
    , m_tracks(new TrackManager(this))
    , m_thumbnails(new ThumbnailGenerator(this))
    , m_pip(new PiPManager(this))
    , m_history(new PlaybackHistoryManager(library, kHistoryLimit, this))
    , m_bookmarks(new BookmarkManager(library, this))
    , m_perFileStore(new PerFileSettingsStore(library, this))
{
    for (auto changed : {&PlaybackEngine::currentTimeChanged, &PlaybackEngine::durationChanged,
                         &PlaybackEngine::isAtEndChanged})
        connect(this, changed, this, &PlaybackEngine::progressChanged);

    // What libmpv reports about the open file goes to the managers that keep it.
    connect(m_decoder, &MPVDecoder::tracksChanged, m_tracks, &TrackManager::updateTracks);
    connect(m_decoder, &MPVDecoder::audioTrackChanged, m_tracks, &TrackManager::setCurrentAudioID);
    connect(m_decoder, &MPVDecoder::subtitleTrackChanged, m_tracks,
            &TrackManager::setCurrentSubtitleID);
    connect(m_decoder, &MPVDecoder::transferFunctionChanged, m_hdr,
            &HDRManager::updateTransferFunction);
    connect(m_decoder, &MPVDecoder::primariesChanged, m_hdr, &HDRManager::updatePrimaries);
    connect(m_decoder, &MPVDecoder::mediaInfoChanged, this, &PlaybackEngine::refreshMediaInfo);
    connect(m_decoder, &MPVDecoder::endReached, this, &PlaybackEngine::handleEndReached);
    connect(m_decoder, &MPVDecoder::fileEnded, this, &PlaybackEngine::handleFileEnded);
    connect(m_adjustments, &VideoAdjustments::audioDelayChanged, m_decoder,
            &MPVDecoder::setAudioDelay);
    connect(filters(), &FilterManager::filtersChanged, this, [this] {
        m_decoder->setPicture(filters()->pictureSettings());
        setNeedsFrameRefresh();
    });
    connect(m_adjustments, &VideoAdjustments::rotationChanged, this, [this](int degrees) {
        m_decoder->setRotation(degrees);
        setNeedsFrameRefresh();
        Q_EMIT videoRotationChanged();
    });

    m_positionTimer.setTimerType(Qt::PreciseTimer);
    m_positionTimer.setInterval(1000 / 30);
    connect(&m_positionTimer, &QTimer::timeout, this, &PlaybackEngine::onPositionTick);

    // The library answers in order: once the store has its rows, the managers have theirs.
    m_history->loadHistory();
    m_bookmarks->loadBookmarks();
    m_perFileStore->loadAll();
}

// MARK: loading

QCoro::Task<void> PlaybackEngine::load(QUrl url)
{
    velmar::traceStartup("load requested");
    savePlace(); // the file being left keeps its place and its settings
    QPointer<PlaybackEngine> self(this);
    const quint64 generation = ++m_loadGeneration;
    auto superseded = [&] { return !self || generation != m_loadGeneration; };
    // Until this load has settled, end-of-file reports cannot be about its file.
    const auto settle = qScopeGuard([&] {
        if (!superseded())
            m_settledGeneration = generation;
    });
    if (!std::exchange(m_advancingAfterFailure, false))
        m_failuresInARow = 0; // someone chose this file: a new run of failures starts
    setState(PlayerState::Kind::Loading);
    set(m_currentURL, url, &PlaybackEngine::currentURLChanged);
    set(m_mediaTitle, QFileInfo(url.path()).completeBaseName(), &PlaybackEngine::mediaTitleChanged);
    set(m_mediaInfo, std::optional<MediaInfo>(), &PlaybackEngine::mediaInfoChanged);
    setDisplayedImage(QImage());

    if (MediaFiles::isImage(url)) {
        m_decoder->stop(); // images never reach libmpv: no sound may run on behind one
        QFuture<QImage> reading =
            QtConcurrent::run(MediaFiles::readImage, MediaFiles::localPath(url));
        const QImage image = co_await reading;
        if (superseded())
            co_return;
        if (image.isNull())
            co_return setState(PlayerState::error(QStringLiteral("Failed to load image")));
        setDisplayedImage(image);
        setDuration(0);
        setCurrentTime(0);
        co_return setState(PlayerState::Kind::ViewingImage);
    }

    m_hdr->reset();
    m_tracks->reset();
    // The dates complete the media information whenever the disk answers; playback never
    // waits for them.
    m_fileDates = QtConcurrent::run(MediaFiles::dates, MediaFiles::localPath(url));
    m_fileDates.then(this, [this](const auto&) { refreshMediaInfo(); });
    MPVDecoder::LoadOutcome outcome;
    try {
        QCoro::Task<MPVDecoder::LoadOutcome> opening = m_decoder->load(url);
        QFuture<void> libraryLoaded = m_perFileStore->loaded(); // the resume point must be known
        co_await libraryLoaded;
        outcome = co_await opening;
    } catch (const MPVError& error) {
        if (!superseded())
            setState(PlayerState::error(error.errorDescription()));
        co_return;
    }
    if (superseded() || outcome.kind == MPVDecoder::LoadOutcome::Kind::Superseded)
        co_return;
    if (outcome.kind != MPVDecoder::LoadOutcome::Kind::Opened)
        co_return fail(outcome.kind == MPVDecoder::LoadOutcome::Kind::Failed
                           ? outcome.reason
                           : QStringLiteral("it did not open in time"));

    velmar::traceStartup("file opened");
    m_failuresInARow = 0;
    // A new file always starts with the engine's volume and mute.
    m_decoder->setVolume(m_volume);
    m_decoder->setMuted(m_isMuted);
    setDuration(m_decoder->duration());
    m_playlist->updateCurrentDuration(m_duration);
    m_thumbnails->setup(url, m_duration);

    const std::optional<double> resumeAt = m_history->resumePosition(url);
    if (resumeAt && *resumeAt > kResumeThresholdSeconds) {
        setState(PlayerState::Kind::Paused);
        QCoro::Task<> landing = seek(*resumeAt);
        co_await landing;
        if (superseded())
            co_return;
        Q_EMIT resumed(*resumeAt);
    }
    m_abLoop->clearLoop();
    // Applied quietly: a file opening announces its resume point, not its settings.
    m_adjustments->restore(m_perFileStore->settings(url.path()).value_or(PerFileSettings{}));
    setState(PlayerState::Kind::Paused);
    refreshMediaInfo();
    play();
}

QCoro::Task<void> PlaybackEngine::playNext()
{
    if (const std::optional<QUrl> url = m_playlist->next()) {
        QCoro::Task<> loading = load(*url);
        co_await loading;
    }
}

QCoro::Task<void> PlaybackEngine::playPrevious()
{
    if (const std::optional<QUrl> url = m_playlist->previous()) {
        QCoro::Task<> loading = load(*url);
        co_await loading;
    }
}

void PlaybackEngine::refreshMediaInfo()
{
    if (!m_state.isActive() || !m_fileDates.isFinished())
        return;
    std::optional<MediaInfo> info = m_decoder->getMediaInfo();
    if (const auto [created, modified] = m_fileDates.result(); info) {
        info->createdAt = created.isValid() ? std::optional(created) : std::nullopt;
        info->modifiedAt = modified.isValid() ? std::optional(modified) : std::nullopt;
    }
    set(m_mediaInfo, info, &PlaybackEngine::mediaInfoChanged);
}

void PlaybackEngine::fail(const QString& reason)
{
    m_decoder->stop();
    const QString name = QFileInfo(m_currentURL.path()).fileName();
    setState(
        PlayerState::error(QStringLiteral("Cannot play \u201c%1\u201d: %2").arg(name, reason)));

    // A playlist goes on past a broken item, unless the items keep failing; a file opened on
    // its own stays on screen with its error.
    const std::optional<PlaylistItem> item = m_playlist->currentItem();
    if (!item || item->url != m_currentURL || ++m_failuresInARow >= kFailuresBeforeStopping ||
        !m_playlist->hasNext())
        return;
    QTimer::singleShot(kFailureGlimpse, this, [this, generation = m_loadGeneration] {
        if (generation != m_loadGeneration || m_state.kind() != PlayerState::Kind::Error ||
            !m_playlist->hasNext())
            return;
        m_advancingAfterFailure = true;
        playNext();
    });
}

// MARK: remembering the place and the settings

void PlaybackEngine::savePlace()
{
    // Only a file that opened has a place, and settings of its own: while one loads, or after
    // it failed, the adjustments are still those of the file before.
    if (m_currentURL.isEmpty() || !m_state.isActive() || isLoading())
        return;
    m_history->recordPosition(m_currentURL, m_mediaTitle, m_currentTime, m_duration);
    m_perFileStore->save(m_adjustments->perFileSettings(), m_currentURL);
}

void PlaybackEngine::onPositionTick()
{
    setCurrentTime(m_decoder->currentTime());
    setDuration(m_decoder->duration());
    if (const std::optional<double> loopStart = m_abLoop->shouldLoop(m_currentTime))
        seek(*loopStart);
}

void PlaybackEngine::handleEndReached()
{
    if (!m_state.isActive() || isLoading())
        return;
    if (m_playlist->hasNext()) {
        playNext();
        return;
    }
    setIsAtEnd(true);
    setState(PlayerState::Kind::Paused);
}

void PlaybackEngine::handleFileEnded(MPVDecoder::EndReason reason, const QString& error)
{
    if (reason != MPVDecoder::EndReason::Failed || !m_state.isActive() || isLoading())
        return;
    savePlace(); // a file that breaks off (a truncated download) keeps the place it reached
    fail(error);
}

void PlaybackEngine::setState(const PlayerState& state)
{
    if (!velmar::assignIfChanged(m_state, state))
        return;
    // Positions follow libmpv only while playing; paused ones are set by seeks and scrubs.
    state.kind() == PlayerState::Kind::Playing ? m_positionTimer.start() : m_positionTimer.stop();
    Q_EMIT stateChanged();
}

void PlaybackEngine::setDisplayedImage(const QImage& image)
{
    // Identity is what matters: comparing images would compare every pixel.
    if (std::exchange(m_displayedImage, image).cacheKey() != image.cacheKey())
        Q_EMIT displayedImageChanged();
}
