#include "ABLoopManager.h"

#include "core/model/PropertyUpdate.h"

void ABLoopManager::setPointA(std::optional<double> seconds)
{
    if (velmar::assignIfChanged(m_pointA, seconds))
        Q_EMIT pointAChanged();
}

void ABLoopManager::setPointB(std::optional<double> seconds)
{
    if (velmar::assignIfChanged(m_pointB, seconds))
        Q_EMIT pointBChanged();
}

std::optional<double> ABLoopManager::shouldLoop(double currentTime) const
{
    if (!m_pointA || !m_pointB || !(*m_pointB <= currentTime))
        return std::nullopt;
    return m_pointA;
}

void ABLoopManager::clearLoop()
{
    setPointA(std::nullopt);
    setPointB(std::nullopt);
}
