// What each keyboard action does to the player.
#include "core/engine/MPVDecoder.h"
#include "core/engine/PlaybackEngine.h"
#include "core/engine/PlayPauseToggle.h"
#include "features/osd/OSDManager.h"
#include "features/playback/ABLoopManager.h"
#include "infrastructure/preferences/Preferences.h"
#include "KeyBindingManager.h"

namespace {

constexpr float kVolumeStep = 0.05f;
constexpr double kAudioDelayStep = 0.1;
constexpr double kMessageSeconds = 1.5;

} // namespace

void KeyBindingManager::executeAction(PlayerAction action)
{
    PlaybackEngine* engine = m_engine;
    if (!engine)
        return;
    OSDManager& osd = *engine->osd();
    // Steps are read at every press, so a change in the settings applies at once.
    const Preferences preferences;

    switch (action) {
    case PlayerAction::togglePlayPause:
        togglePlayPauseWithIndicator(*engine);
        break;
    case PlayerAction::seekForwardSmall:
        engine->seekRelative(preferences.seekSmallStep());
        break;
    case PlayerAction::seekBackwardSmall:
        engine->seekRelative(-preferences.seekSmallStep());
        break;
    case PlayerAction::seekForwardLarge:
        engine->seekRelative(preferences.seekLargeStep());
        break;
    case PlayerAction::seekBackwardLarge:
        engine->seekRelative(-preferences.seekLargeStep());
        break;
    case PlayerAction::volumeUp:
        engine->adjustVolume(kVolumeStep);
        break;
    case PlayerAction::volumeDown:
        engine->adjustVolume(-kVolumeStep);
        break;
    case PlayerAction::toggleMute:
        engine->setIsMuted(!engine->isMuted());
        break;
    case PlayerAction::cyclePlaybackRate:
        engine->cyclePlaybackRate();
        break;
    case PlayerAction::addBookmark:
        engine->addBookmark();
        break;
    case PlayerAction::playNext:
        engine->playNext();
        break;
    case PlayerAction::playPrevious:
        engine->playPrevious();
        break;
    case PlayerAction::takeScreenshot:
        engine->takeScreenshot();
        break;
    case PlayerAction::frameStepForward:
        engine->stepForward();
        break;
    case PlayerAction::frameStepBackward:
        engine->stepBackward();
        break;
    case PlayerAction::setLoopA:
        engine->setLoopPointA();
        break;
    case PlayerAction::setLoopB:
        engine->setLoopPointB();
        break;
    case PlayerAction::clearLoop:
        engine->abLoop()->clearLoop();
        osd.show(OSDMessage::text(QStringLiteral("Loop cleared")), kMessageSeconds);
        break;
    case PlayerAction::toggleFullScreen:
        // The window's owner knows which frame to return to.
        Q_EMIT toggleFullScreenRequested();
        break;
    case PlayerAction::rotateVideo:
        engine->setRotation((engine->videoRotation() + 90) % 360);
        break;
    case PlayerAction::nextBookmark:
        engine->seekToNextBookmark();
        break;
    case PlayerAction::previousBookmark:
        engine->seekToPreviousBookmark();
        break;
    case PlayerAction::audioDelayIncrease:
        engine->setAudioDelay(engine->decoder()->audioDelay() + kAudioDelayStep);
        break;
    case PlayerAction::audioDelayDecrease:
        engine->setAudioDelay(engine->decoder()->audioDelay() - kAudioDelayStep);
        break;
    case PlayerAction::audioDelayReset:
        engine->setAudioDelay(0.0);
        osd.show(OSDMessage::text(QStringLiteral("Audio delay: 0.0s")), kMessageSeconds);
        break;
    case PlayerAction::togglePiP:
        // The picture-in-picture window is not part of the player yet; the key is reserved.
        break;
    case PlayerAction::cycleSubtitleTrack:
        engine->cycleSubtitleTrack();
        break;
    case PlayerAction::cycleAudioTrack:
        engine->cycleAudioTrack();
        break;
    }
}
