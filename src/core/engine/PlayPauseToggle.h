#pragma once

class PlaybackEngine;

/// The single play/pause button of remote controls: plays when paused and pauses when
/// playing, confirming it on the on-screen display; in any other state (idle, loading,
/// stopped, error, image) it does nothing. GUI thread only.
void togglePlayPauseWithIndicator(PlaybackEngine& engine);
