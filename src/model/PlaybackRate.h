#pragma once

#include <algorithm>
#include <array>

/// The speeds the player steps through, slowest first.
namespace PlaybackRate {

inline constexpr std::array<float, 9> steps = {0.25f, 0.5f, 0.75f, 1.0f, 1.25f,
                                               1.5f,  2.0f, 3.0f,  4.0f};

/// The speed after `rate`: one that is not in the list returns to normal speed, and the
/// fastest wraps round to the slowest.
inline float next(float rate)
{
    const auto* found = std::find(steps.begin(), steps.end(), rate);
    if (found == steps.end())
        return 1.0f;
    return std::next(found) == steps.end() ? steps.front() : *std::next(found);
}

} // namespace PlaybackRate
