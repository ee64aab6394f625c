#include "UserCommands.h"

#include "engine/PlaybackEngine.h"
#include "features/osd/OSDManager.h"
#include "features/playback/ABLoopManager.h"
#include "model/TimeFormat.h"

namespace {

// The moving picture already confirms a resume, so its indicator is brief; a pause keeps the
// indicator up for the usual time.
constexpr double kPlayingIndicatorSeconds = 0.8;

} // namespace

UserCommands::UserCommands(PlaybackEngine& engine, QObject* parent)
    : QObject(parent)
    , m_engine(&engine)
{
    connect(&engine, &PlaybackEngine::resumed, this, [this](double position) {
        announceText(QStringLiteral("Resumed at ") + velmar::formatTime(position));
    });
}

void UserCommands::announce(const OSDMessage& message, double seconds)
{
    if (m_engine)
        m_engine->osd()->show(message, seconds);
}

void UserCommands::announceText(const QString& text)
{
    announce(OSDMessage::text(text));
}

void UserCommands::togglePlayPause()
{
    if (!m_engine)
        return;
    switch (m_engine->state().kind()) {
    case PlayerState::Kind::Paused:
        m_engine->play();
        announce(OSDMessage::playing(), kPlayingIndicatorSeconds);
        break;
    case PlayerState::Kind::Playing:
        m_engine->pause();
        announce(OSDMessage::paused());
        break;
    default:
        break;
    }
}

void UserCommands::seekBy(double seconds)
{
    if (!m_engine || !m_engine->state().isActive())
        return;
    m_engine->seekRelative(seconds); // moves the position estimate at once
    announce(OSDMessage::seek(m_engine->currentTime(), m_engine->duration()));
}

void UserCommands::adjustVolume(float delta)
{
    // At either end nothing changes, and nothing is shown.
    if (m_engine && m_engine->adjustVolume(delta))
        announceVolume();
}

void UserCommands::setVolume(float volume)
{
    if (!m_engine)
        return;
    const float before = m_engine->volume();
    m_engine->setVolume(volume);
    if (m_engine->volume() != before)
        announceVolume();
}

void UserCommands::announceVolume()
{
    if (m_engine)
        announce(OSDMessage::volume(m_engine->isMuted() ? 0.0f : m_engine->volume()));
}

void UserCommands::toggleMute()
{
    if (!m_engine)
        return;
    m_engine->setIsMuted(!m_engine->isMuted());
    announceMute();
}

void UserCommands::announceMute()
{
    if (m_engine)
        announce(OSDMessage::muted(m_engine->isMuted()));
}

void UserCommands::setPlaybackRate(float rate)
{
    if (!m_engine)
        return;
    m_engine->setPlaybackRate(rate);
    announce(OSDMessage::playbackRate(m_engine->playbackRate()));
}

void UserCommands::cyclePlaybackRate()
{
    if (!m_engine)
        return;
    m_engine->cyclePlaybackRate();
    announce(OSDMessage::playbackRate(m_engine->playbackRate()));
}

void UserCommands::stepFrame(bool forward)
{
    if (m_engine && (forward ? m_engine->stepForward() : m_engine->stepBackward()))
        announceText(forward ? QStringLiteral("Frame \u2192") : QStringLiteral("\u2190 Frame"));
}

void UserCommands::setLoopPointA()
{
    if (!m_engine)
        return;
    m_engine->abLoop()->markA(m_engine->currentTime());
    announceText(QStringLiteral("Loop A: ") + velmar::formatTime(m_engine->currentTime()) +
                 QStringLiteral("  \u2014 \\ to clear"));
}

void UserCommands::setLoopPointB()
{
    // A B at or before A is refused; without any A nothing is said.
    if (m_engine && m_engine->abLoop()->markB(m_engine->currentTime()))
        announceText(QStringLiteral("Loop A-B active  \u2014 \\ to clear"));
}

void UserCommands::clearLoop()
{
    if (!m_engine)
        return;
    m_engine->abLoop()->clearLoop();
    announceText(QStringLiteral("Loop cleared"));
}

void UserCommands::rotate(bool clockwise)
{
    // Kept within 0…270: a stored -90 turned clockwise becomes 0.
    if (m_engine)
        setRotation(((m_engine->videoRotation() + (clockwise ? 90 : -90)) + 360) % 360);
}

void UserCommands::setRotation(int degrees)
{
    if (!m_engine)
        return;
    m_engine->adjustments()->setRotation(degrees);
    announceText(QStringLiteral("Rotation: %1\u00b0").arg(m_engine->videoRotation()));
}

void UserCommands::setAudioDelay(double seconds)
{
    if (!m_engine)
        return;
    // Returning to zero is deliberately silent.
    if (const double delay = m_engine->adjustments()->setAudioDelay(seconds); delay != 0)
        announceText(QString::asprintf("Audio delay: %s%.2fs", delay > 0 ? "+" : "", delay));
}

void UserCommands::adjustAudioDelay(double delta)
{
    if (m_engine)
        setAudioDelay(m_engine->adjustments()->audioDelay() + delta);
}

void UserCommands::resetAudioDelay()
{
    if (!m_engine)
        return;
    m_engine->adjustments()->setAudioDelay(0.0);
    announceText(QStringLiteral("Audio delay: 0.0s"));
}
