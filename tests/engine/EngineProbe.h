// Reading the player core's own properties, to see what the engine told libmpv, and a seek
// that waits until it has landed.
#pragma once

#include "engine/PlaybackEngine.h"
#include "infrastructure/mpv/MPVProperties.h"

#include <optional>
#include <QCoroTask>
#include <type_traits>

namespace velmar::test {

template <typename T> std::optional<T> mpv(PlaybackEngine& engine, const char* name)
{
    mpv_handle* const handle = engine.decoder()->handle();
    if constexpr (std::is_same_v<T, double>)
        return MPVProperty::readDouble(handle, name);
    else if constexpr (std::is_same_v<T, bool>)
        return MPVProperty::readFlag(handle, name);
    else if constexpr (std::is_same_v<T, qint64>)
        return MPVProperty::readInt64(handle, name);
    else
        return MPVProperty::readString(handle, name);
}

inline void seek(PlaybackEngine& engine, double seconds)
{
    QCoro::waitFor(engine.seek(seconds));
}

} // namespace velmar::test
