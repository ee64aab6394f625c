// The engine's operations on the open file: transport, sound, speed, picture and loop points.
#include "model/PlaybackRate.h"
#include "PlaybackEngine.h"

#include <cmath>
#include <QPointer>

// MARK: transport

void PlaybackEngine::resumeDecoder()
{
    m_decoder->setPaused(false);
    if (m_playbackRate != 1.0f)
        m_decoder->setSpeed(m_playbackRate);
}

void PlaybackEngine::play()
{
    const PlayerState::Kind kind = m_state.kind();
    if (kind != PlayerState::Kind::Paused && kind != PlayerState::Kind::Stopped)
        return;
    if (m_isAtEnd) {
        // Restart after the end: back to the start, then let it run.
        setIsAtEnd(false);
        setCurrentTime(0);
        m_decoder->scrub(0);
    }
    resumeDecoder();
    setState(PlayerState::Kind::Playing);
}

void PlaybackEngine::pause()
{
    if (m_state.kind() != PlayerState::Kind::Playing)
        return;
    m_decoder->setPaused(true);
    setState(PlayerState::Kind::Paused);
}

QCoro::Task<void> PlaybackEngine::seek(double seconds)
{
    if (!m_state.isActive() || !std::isfinite(seconds))
        co_return;
    QPointer<PlaybackEngine> self(this);
    setIsAtEnd(false);
    set(m_isSeeking, true, &PlaybackEngine::isSeekingChanged);
    setCurrentTime(seconds);
    QCoro::Task<> landing = m_decoder->seek(seconds);
    co_await landing;
    if (!self)
        co_return;
    set(m_isSeeking, false, &PlaybackEngine::isSeekingChanged);
    setNeedsFrameRefresh();
}

QCoro::Task<void> PlaybackEngine::seekRelative(double offset)
{
    if (!m_state.isActive() || !std::isfinite(offset))
        co_return;
    setIsAtEnd(false);
    m_decoder->seekRelativeFast(offset);
    setCurrentTime(m_decoder->currentTime());
}

void PlaybackEngine::scrubBegan()
{
    if (!m_state.isActive())
        return;
    // The state stays "playing": the drag only holds the picture still.
    m_wasPlayingBeforeScrub = m_state.kind() == PlayerState::Kind::Playing;
    if (m_wasPlayingBeforeScrub)
        m_decoder->setPaused(true);
}

void PlaybackEngine::scrub(double seconds)
{
    if (!m_state.isActive() || !std::isfinite(seconds))
        return;
    setCurrentTime(seconds);
    m_decoder->scrub(seconds);
    setNeedsFrameRefresh();
}

void PlaybackEngine::scrubEnded(double seconds)
{
    // A target that is not a number ends the drag where it stands (the seek refuses it).
    [](QPointer<PlaybackEngine> self, double target) -> QCoro::Task<void> {
        QCoro::Task<> landing = self->seek(target);
        co_await landing;
        if (!self)
            co_return;
        if (std::exchange(self->m_wasPlayingBeforeScrub, false))
            self->resumeDecoder();
    }(this, seconds);
}

bool PlaybackEngine::step(bool forward)
{
    pause();
    if (m_state.kind() != PlayerState::Kind::Paused)
        return false;
    m_decoder->frameStep(forward);
    setNeedsFrameRefresh();
    return true;
}

// MARK: sound and speed

void PlaybackEngine::setVolume(float volume)
{
    // std::clamp lets NaN through, and libmpv would be sent it.
    if (!std::isfinite(volume) ||
        !velmar::assignIfChanged(m_volume, std::clamp(volume, 0.0f, 1.0f)))
        return;
    m_decoder->setVolume(m_volume);
    Q_EMIT volumeChanged();
}

bool PlaybackEngine::adjustVolume(float delta)
{
    const float before = m_volume;
    setVolume(m_volume + delta); // kept within 0…1: nothing changes at either end
    return m_volume != before;
}

void PlaybackEngine::setIsMuted(bool muted)
{
    if (!velmar::assignIfChanged(m_isMuted, muted))
        return;
    m_decoder->setMuted(muted);
    Q_EMIT isMutedChanged();
}

void PlaybackEngine::setPlaybackRate(float rate)
{
    // Kept to the speeds the player offers; what is not a speed at all is refused.
    if (!std::isfinite(rate) || rate <= 0.0f ||
        !velmar::assignIfChanged(m_playbackRate, std::clamp(rate, PlaybackRate::steps.front(),
                                                            PlaybackRate::steps.back())))
        return;
    m_decoder->setSpeed(rate);
    Q_EMIT playbackRateChanged();
}

void PlaybackEngine::cyclePlaybackRate()
{
    setPlaybackRate(PlaybackRate::next(m_playbackRate));
}
