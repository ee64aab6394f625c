#pragma once

#include <mpv/client.h>
#include <optional>
#include <QString>

/// Names of the libmpv properties, options and commands the player uses.
namespace MPVName {
inline constexpr const char* pause = "pause";
inline constexpr const char* timePos = "time-pos";
inline constexpr const char* duration = "duration";
inline constexpr const char* eofReached = "eof-reached";
inline constexpr const char* primaries = "video-params/primaries";
inline constexpr const char* gamma = "video-params/gamma";
inline constexpr const char* trackCount = "track-list/count";
inline constexpr const char* aid = "aid";
inline constexpr const char* sid = "sid";
inline constexpr const char* volume = "volume";
inline constexpr const char* mute = "mute";
inline constexpr const char* speed = "speed";
inline constexpr const char* audioDelay = "audio-delay";
} // namespace MPVName

/// Typed property reads: each returns nothing when libmpv cannot answer (no handle, property
/// unavailable, wrong format). Blocking calls into the core; callers pick their thread with care.
namespace MPVProperty {
std::optional<QString> readString(mpv_handle* mpv, const char* name);
std::optional<qint64> readInt64(mpv_handle* mpv, const char* name);
std::optional<double> readDouble(mpv_handle* mpv, const char* name);
std::optional<bool> readFlag(mpv_handle* mpv, const char* name);

void writeDouble(mpv_handle* mpv, const char* name, double value);
void writeFlag(mpv_handle* mpv, const char* name, bool value);
void writeInt64(mpv_handle* mpv, const char* name, qint64 value);
void writeString(mpv_handle* mpv, const char* name, const QString& value);
} // namespace MPVProperty
