#pragma once

#include <mpv/client.h>
#include <optional>
#include <QString>

/// Names of the libmpv properties, options and commands the player uses, each written once.
namespace MPVName {
// Options, set once before the core starts (and "vo" again when the video output moves)
inline constexpr const char* vo = "vo";
inline constexpr const char* ao = "ao";
inline constexpr const char* config = "config";
inline constexpr const char* inputDefaultBindings = "input-default-bindings";
inline constexpr const char* inputVoKeyboard = "input-vo-keyboard";
inline constexpr const char* inputMediaKeys = "input-media-keys";
inline constexpr const char* hwdec = "hwdec";
inline constexpr const char* osdLevel = "osd-level";
inline constexpr const char* keepOpen = "keep-open";
inline constexpr const char* ytdl = "ytdl";
inline constexpr const char* idle = "idle";
inline constexpr const char* toneMapping = "tone-mapping";
inline constexpr const char* hdrComputePeak = "hdr-compute-peak";
inline constexpr const char* targetColorspaceHint = "target-colorspace-hint";
inline constexpr const char* subAuto = "sub-auto";
inline constexpr const char* hrSeek = "hr-seek";
inline constexpr const char* hrSeekFramedrop = "hr-seek-framedrop";
inline constexpr const char* loadScripts = "load-scripts";
inline constexpr const char* loadStatsOverlay = "load-stats-overlay";
inline constexpr const char* loadOsdConsole = "load-osd-console";
inline constexpr const char* loadAutoProfiles = "load-auto-profiles";
inline constexpr const char* osc = "osc";
inline constexpr const char* audioClientName = "audio-client-name";
// Observed: playback
inline constexpr const char* pause = "pause";
inline constexpr const char* timePos = "time-pos";
inline constexpr const char* duration = "duration";
inline constexpr const char* eofReached = "eof-reached";
// Observed: the file's streams and colours
inline constexpr const char* primaries = "video-params/primaries";
inline constexpr const char* gamma = "video-params/gamma";
inline constexpr const char* trackList = "track-list";
inline constexpr const char* aid = "aid";
inline constexpr const char* sid = "sid";
inline constexpr const char* chapterList = "chapter-list";
// Observed: the technical summary of the file
inline constexpr const char* filename = "filename";
inline constexpr const char* fileSize = "file-size";
inline constexpr const char* fileFormat = "file-format";
inline constexpr const char* videoCodec = "video-codec";
inline constexpr const char* width = "width";
inline constexpr const char* height = "height";
inline constexpr const char* containerFps = "container-fps";
inline constexpr const char* videoBitrate = "video-bitrate";
inline constexpr const char* pixelFormat = "video-params/pixelformat";
inline constexpr const char* audioCodec = "audio-codec";
inline constexpr const char* channelCount = "audio-params/channel-count";
inline constexpr const char* sampleRate = "audio-params/samplerate";
inline constexpr const char* audioBitrate = "audio-bitrate";
// Written
inline constexpr const char* volume = "volume";
inline constexpr const char* mute = "mute";
inline constexpr const char* speed = "speed";
inline constexpr const char* audioDelay = "audio-delay";
inline constexpr const char* videoRotate = "video-rotate";
inline constexpr const char* brightness = "brightness";
inline constexpr const char* contrast = "contrast";
inline constexpr const char* saturation = "saturation";
inline constexpr const char* videoFilters = "vf";
inline constexpr const char* deband = "deband";
inline constexpr const char* debandThreshold = "deband-threshold";
// Read
inline constexpr const char* path = "path";
// Commands, each followed by the flags the player passes it
inline constexpr const char* loadfile = "loadfile";
inline constexpr const char* stop = "stop";
inline constexpr const char* seek = "seek";
inline constexpr const char* seekAbsolute = "absolute";
inline constexpr const char* seekExact = "exact";
inline constexpr const char* seekRelative = "relative";
inline constexpr const char* seekKeyframes = "keyframes";
inline constexpr const char* frameStep = "frame-step";
inline constexpr const char* frameBackStep = "frame-back-step";
inline constexpr const char* subAdd = "sub-add";
inline constexpr const char* subAddSelect = "select";
inline constexpr const char* subRemove = "sub-remove";
inline constexpr const char* screenshotToFile = "screenshot-to-file";
inline constexpr const char* screenshotVideoOnly = "video";
} // namespace MPVName

/// Synchronous typed property reads: each returns nothing when libmpv cannot answer (no
/// handle, property unavailable, wrong format). They wait for the player core, so the GUI
/// thread never uses them; the decoder's event thread and tests do.
namespace MPVProperty {
std::optional<QString> readString(mpv_handle* mpv, const char* name);
std::optional<qint64> readInt64(mpv_handle* mpv, const char* name);
std::optional<double> readDouble(mpv_handle* mpv, const char* name);
std::optional<bool> readFlag(mpv_handle* mpv, const char* name);
} // namespace MPVProperty
