#pragma once

#include <optional>
#include <QList>
#include <QString>

/// Every keyboard command of the player. The raw value (the enumerator's name) is what the
/// preferences store.
enum class PlayerAction {
    togglePlayPause,
    seekForwardSmall,
    seekBackwardSmall,
    seekForwardLarge,
    seekBackwardLarge,
    volumeUp,
    volumeDown,
    toggleMute,
    cyclePlaybackRate,
    addBookmark,
    playNext,
    playPrevious,
    takeScreenshot,
    frameStepForward,
    frameStepBackward,
    setLoopA,
    setLoopB,
    clearLoop,
    toggleFullScreen,
    rotateVideo,
    nextBookmark,
    previousBookmark,
    audioDelayIncrease,
    audioDelayDecrease,
    audioDelayReset,
    togglePiP,
    cycleSubtitleTrack,
    cycleAudioTrack,
};

namespace PlayerActions {

/// All 28 actions in their fixed order.
const QList<PlayerAction>& all();
QString rawValue(PlayerAction action);
/// Nothing for a raw value no action has.
std::optional<PlayerAction> fromRawValue(const QString& raw);
/// The name shown in menus and the key-binding editor.
QString displayName(PlayerAction action);
/// The four seeks, whose key repeats are throttled.
bool isSeek(PlayerAction action);

} // namespace PlayerActions
