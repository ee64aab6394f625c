#include "VideoAdjustments.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {
constexpr double kMaxAudioDelaySeconds = 5.0;
} // namespace

VideoAdjustments::VideoAdjustments(QObject* parent)
    : QObject(parent)
    , m_filters(new FilterManager(this))
{}

void VideoAdjustments::setRotation(int degrees)
{
    if (std::exchange(m_rotation, degrees % 360) != m_rotation)
        Q_EMIT rotationChanged(m_rotation);
}

double VideoAdjustments::setAudioDelay(double seconds)
{
    const double delay = std::isnan(seconds)
                             ? 0.0
                             : std::clamp(seconds, -kMaxAudioDelaySeconds, kMaxAudioDelaySeconds);
    if (std::exchange(m_audioDelay, delay) != delay)
        Q_EMIT audioDelayChanged(delay);
    return delay;
}

PerFileSettings VideoAdjustments::perFileSettings() const
{
    return PerFileSettings{m_rotation, m_filters->states(), m_audioDelay};
}

void VideoAdjustments::restore(const PerFileSettings& settings)
{
    setRotation(settings.rotation);
    setAudioDelay(settings.audioDelay != 0 ? settings.audioDelay : m_audioDelay);
    m_filters->resetAll();
    for (const FilterState& state : settings.filters)
        m_filters->apply(state);
}
