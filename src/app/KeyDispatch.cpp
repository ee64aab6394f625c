#include "KeyDispatch.h"

#include "engine/PlaybackEngine.h"
#include "infrastructure/preferences/Preferences.h"
#include "UserCommands.h"

namespace {

constexpr float kVolumeStep = 0.05f;
constexpr double kAudioDelayStep = 0.1;

} // namespace

KeyDispatch::KeyDispatch(UserCommands& commands, PlaybackEngine& engine, QObject* parent)
    : QObject(parent)
    , m_commands(&commands)
    , m_engine(&engine)
{}

void KeyDispatch::execute(PlayerAction action)
{
    if (!m_commands || !m_engine)
        return;
    UserCommands& commands = *m_commands;
    const Preferences preferences;

    switch (action) {
    case PlayerAction::togglePlayPause:
        return commands.togglePlayPause();
    case PlayerAction::seekForwardSmall:
        return commands.seekBy(preferences.seekSmallStep());
    case PlayerAction::seekBackwardSmall:
        return commands.seekBy(-preferences.seekSmallStep());
    case PlayerAction::seekForwardLarge:
        return commands.seekBy(preferences.seekLargeStep());
    case PlayerAction::seekBackwardLarge:
        return commands.seekBy(-preferences.seekLargeStep());
    case PlayerAction::volumeUp:
        return commands.adjustVolume(kVolumeStep);
    case PlayerAction::volumeDown:
        return commands.adjustVolume(-kVolumeStep);
    case PlayerAction::toggleMute:
        return commands.toggleMute();
    case PlayerAction::cyclePlaybackRate:
        return commands.cyclePlaybackRate();
    case PlayerAction::addBookmark:
        return commands.addBookmark();
    case PlayerAction::playNext:
        m_engine->playNext();
        return;
    case PlayerAction::playPrevious:
        m_engine->playPrevious();
        return;
    case PlayerAction::takeScreenshot:
        return commands.takeScreenshot();
    case PlayerAction::frameStepForward:
        return commands.stepFrame(true);
    case PlayerAction::frameStepBackward:
        return commands.stepFrame(false);
    case PlayerAction::setLoopA:
        return commands.setLoopPointA();
    case PlayerAction::setLoopB:
        return commands.setLoopPointB();
    case PlayerAction::clearLoop:
        return commands.clearLoop();
    case PlayerAction::toggleFullScreen:
        return Q_EMIT fullScreenToggleRequested();
    case PlayerAction::rotateVideo:
        return commands.rotate();
    case PlayerAction::nextBookmark:
        return commands.seekToNextBookmark();
    case PlayerAction::previousBookmark:
        return commands.seekToPreviousBookmark();
    case PlayerAction::audioDelayIncrease:
        return commands.adjustAudioDelay(kAudioDelayStep);
    case PlayerAction::audioDelayDecrease:
        return commands.adjustAudioDelay(-kAudioDelayStep);
    case PlayerAction::audioDelayReset:
        return commands.resetAudioDelay();
    case PlayerAction::togglePiP:
        return Q_EMIT pictureInPictureToggleRequested();
    case PlayerAction::cycleSubtitleTrack:
        return commands.cycleSubtitleTrack();
    case PlayerAction::cycleAudioTrack:
        return commands.cycleAudioTrack();
    }
}
