#include "PlayPauseToggle.h"

#include "features/osd/OSDManager.h"
#include "PlaybackEngine.h"

namespace {

// The moving picture already confirms a resume, so its indicator is brief; a pause keeps the
// indicator up for the usual time.
constexpr double kPlayingIndicatorSeconds = 0.8;
constexpr double kPausedIndicatorSeconds = 1.5;

} // namespace

void togglePlayPauseWithIndicator(PlaybackEngine& engine)
{
    switch (engine.state().kind()) {
    case PlayerState::Kind::Paused:
        engine.play();
        engine.osd()->show(OSDMessage::playing(), kPlayingIndicatorSeconds);
        break;
    case PlayerState::Kind::Playing:
        engine.pause();
        engine.osd()->show(OSDMessage::paused(), kPausedIndicatorSeconds);
        break;
    default:
        break;
    }
}
