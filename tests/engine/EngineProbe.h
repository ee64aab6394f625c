// Reading the player core's own properties, to see what the engine told libmpv, and a seek
// that waits until it has landed.
#pragma once

#include "engine/PlaybackEngine.h"
#include "infrastructure/mpv/MPVProperties.h"

#include <optional>
#include <QCoroTask>

namespace velmar::test {

template <typename T> std::optional<T> mpv(PlaybackEngine& engine, const char* name);
template <> inline std::optional<double> mpv(PlaybackEngine& engine, const char* name)
{
    return MPVProperty::readDouble(engine.decoder()->handle(), name);
}
template <> inline std::optional<bool> mpv(PlaybackEngine& engine, const char* name)
{
    return MPVProperty::readFlag(engine.decoder()->handle(), name);
}
template <> inline std::optional<qint64> mpv(PlaybackEngine& engine, const char* name)
{
    return MPVProperty::readInt64(engine.decoder()->handle(), name);
}
template <> inline std::optional<QString> mpv(PlaybackEngine& engine, const char* name)
{
    return MPVProperty::readString(engine.decoder()->handle(), name);
}

inline void seek(PlaybackEngine& engine, double seconds)
{
    QCoro::waitFor(engine.seek(seconds));
}

} // namespace velmar::test
