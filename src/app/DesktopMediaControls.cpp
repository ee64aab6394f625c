#include "DesktopMediaControls.h"

#include "engine/PlaybackEngine.h"
#include "infrastructure/system/NowPlayingManager.h"
#include "model/PlaybackRate.h"
#include "UserCommands.h"

#include <algorithm>

DesktopMediaControls::DesktopMediaControls(NowPlayingManager& mpris, PlaybackEngine& engine,
                                           UserCommands& commands, QObject* parent)
    : QObject(parent)
    , m_mpris(&mpris)
    , m_engine(&engine)
{
    mpris.setRateLimits(PlaybackRate::steps.front(), PlaybackRate::steps.back());
    m_trackChanged.setSingleShot(true);
    m_trackChanged.setInterval(0);
    connect(&m_trackChanged, &QTimer::timeout, this, &DesktopMediaControls::publishTrack);
    connect(&engine, &PlaybackEngine::stateChanged, this, &DesktopMediaControls::publishState);
    for (auto changed : {&PlaybackEngine::stateChanged, &PlaybackEngine::currentURLChanged,
                         &PlaybackEngine::mediaTitleChanged, &PlaybackEngine::durationChanged})
        connect(&engine, changed, &m_trackChanged, qOverload<>(&QTimer::start));
    // Positions of a file still opening, or opened and not yet published, belong to no track
    // the desktop knows.
    connect(&engine, &PlaybackEngine::currentTimeChanged, &mpris, [this] {
        if (m_engine->currentURL() == m_publishedURL &&
            m_engine->state().kind() != PlayerState::Kind::Loading)
            m_mpris->followPosition(m_engine->currentTime());
    });
    connect(&engine, &PlaybackEngine::playbackRateChanged, &mpris,
            [this] { m_mpris->setRate(m_engine->playbackRate()); });
    connect(&engine, &PlaybackEngine::volumeChanged, &mpris,
            [this] { m_mpris->setVolume(m_engine->volume()); });
    publishState();
    publishTrack();
    mpris.setVolume(engine.volume());

    // The desktop's requests. Remote transport is silent; a toggle shows its indicator, and a
    // volume change its level, as they do from the keyboard.
    PlaybackEngine* e = &engine;
    connect(&mpris, &NowPlayingManager::playRequested, e, &PlaybackEngine::play);
    connect(&mpris, &NowPlayingManager::pauseRequested, e, &PlaybackEngine::pause);
    // The player has no stopped state to enter: a stop holds the picture where it is.
    connect(&mpris, &NowPlayingManager::stopRequested, e, &PlaybackEngine::pause);
    connect(&mpris, &NowPlayingManager::playPauseRequested, &commands,
            &UserCommands::togglePlayPause);
    connect(&mpris, &NowPlayingManager::nextRequested, e, [e] { e->playNext(); });
    connect(&mpris, &NowPlayingManager::previousRequested, e, [e] { e->playPrevious(); });
    connect(&mpris, &NowPlayingManager::positionRequested, e, [e](double s) { e->seek(s); });
    connect(&mpris, &NowPlayingManager::seekRequested, e, [e](double offset) {
        e->seek(std::clamp(e->currentTime() + offset, 0.0, std::max(e->duration(), 0.0)));
    });
    connect(&mpris, &NowPlayingManager::rateRequested, e,
            [e](double rate) { e->setPlaybackRate(float(rate)); });
    connect(&mpris, &NowPlayingManager::volumeRequested, &commands,
            [&commands](double volume) { commands.setVolume(float(volume)); });
}

void DesktopMediaControls::publishState()
{
    if (!m_mpris || !m_engine)
        return;
    switch (m_engine->state().kind()) {
    case PlayerState::Kind::Playing:
        return m_mpris->setPlaybackState(NowPlayingManager::PlaybackState::Playing);
    case PlayerState::Kind::Paused:
    case PlayerState::Kind::Loading:
    case PlayerState::Kind::Stopped:
        return m_mpris->setPlaybackState(NowPlayingManager::PlaybackState::Paused);
    case PlayerState::Kind::Idle:
    case PlayerState::Kind::Error:
    case PlayerState::Kind::ViewingImage:
        return m_mpris->setPlaybackState(NowPlayingManager::PlaybackState::Stopped);
    }
}

void DesktopMediaControls::publishTrack()
{
    if (!m_mpris || !m_engine || m_engine->state().kind() == PlayerState::Kind::Loading)
        return;
    m_publishedURL = m_engine->currentURL();
    m_mpris->setTrack(m_publishedURL, m_engine->mediaTitle(), m_engine->duration(),
                      m_engine->currentTime());
}
