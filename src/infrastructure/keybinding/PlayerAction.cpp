#include "PlayerAction.h"

#include <array>

namespace PlayerActions {
namespace {

struct ActionInfo
{
    PlayerAction action;
    const char* raw;
    const char* displayName; // UTF-8
};

constexpr std::array<ActionInfo, 28> kActions = {{
    {PlayerAction::togglePlayPause, "togglePlayPause", "Play / Pause"},
    {PlayerAction::seekForwardSmall, "seekForwardSmall", "Seek Forward"},
    {PlayerAction::seekBackwardSmall, "seekBackwardSmall", "Seek Backward"},
    {PlayerAction::seekForwardLarge, "seekForwardLarge", "Seek Forward (Large)"},
    {PlayerAction::seekBackwardLarge, "seekBackwardLarge", "Seek Backward (Large)"},
    {PlayerAction::volumeUp, "volumeUp", "Volume Up"},
    {PlayerAction::volumeDown, "volumeDown", "Volume Down"},
    {PlayerAction::toggleMute, "toggleMute", "Toggle Mute"},
    {PlayerAction::cyclePlaybackRate, "cyclePlaybackRate", "Cycle Playback Rate"},
    {PlayerAction::addBookmark, "addBookmark", "Add Bookmark"},
    {PlayerAction::playNext, "playNext", "Play Next"},
    {PlayerAction::playPrevious, "playPrevious", "Play Previous"},
    {PlayerAction::takeScreenshot, "takeScreenshot", "Take Screenshot"},
    {PlayerAction::frameStepForward, "frameStepForward", "Frame Step Forward"},
    {PlayerAction::frameStepBackward, "frameStepBackward", "Frame Step Backward"},
    {PlayerAction::setLoopA, "setLoopA", "Set Loop Point A"},
    {PlayerAction::setLoopB, "setLoopB", "Set Loop Point B"},
    {PlayerAction::clearLoop, "clearLoop", "Clear Loop"},
    {PlayerAction::toggleFullScreen, "toggleFullScreen", "Toggle Full Screen"},
    {PlayerAction::rotateVideo, "rotateVideo", "Rotate Video"},
    {PlayerAction::nextBookmark, "nextBookmark", "Next Bookmark"},
    {PlayerAction::previousBookmark, "previousBookmark", "Previous Bookmark"},
    {PlayerAction::audioDelayIncrease, "audioDelayIncrease", "Audio Delay +0.1s"},
    {PlayerAction::audioDelayDecrease, "audioDelayDecrease", "Audio Delay -0.1s"},
    {PlayerAction::audioDelayReset, "audioDelayReset", "Reset Audio Delay"},
    {PlayerAction::togglePiP, "togglePiP", "PiP \xec\xa0\x84\xed\x99\x98"},
    {PlayerAction::cycleSubtitleTrack, "cycleSubtitleTrack", "Cycle Subtitle Track"},
    {PlayerAction::cycleAudioTrack, "cycleAudioTrack", "Cycle Audio Track"},
}};

const ActionInfo& info(PlayerAction action)
{
    return kActions[size_t(action)];
}

} // namespace

const QList<PlayerAction>& all()
{
    static const QList<PlayerAction> actions = [] {
        QList<PlayerAction> list;
        for (const ActionInfo& entry : kActions)
            list << entry.action;
        return list;
    }();
    return actions;
}

QString rawValue(PlayerAction action)
{
    return QString::fromLatin1(info(action).raw);
}

std::optional<PlayerAction> fromRawValue(const QString& raw)
{
    for (const ActionInfo& entry : kActions) {
        if (raw == QLatin1String(entry.raw))
            return entry.action;
    }
    return std::nullopt;
}

QString displayName(PlayerAction action)
{
    return QString::fromUtf8(info(action).displayName);
}

bool isSeek(PlayerAction action)
{
    return action == PlayerAction::seekForwardSmall || action == PlayerAction::seekBackwardSmall ||
           action == PlayerAction::seekForwardLarge || action == PlayerAction::seekBackwardLarge;
}

} // namespace PlayerActions
