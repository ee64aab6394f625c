#include "ABLoopManager.h"

#include "base/PropertyUpdate.h"

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

void ABLoopManager::markA(double seconds)
{
    setPointA(seconds);
    if (m_pointB && *m_pointB <= seconds)
        setPointB(std::nullopt);
}

bool ABLoopManager::markB(double seconds)
{
    if (m_pointA && *m_pointA < seconds)
        setPointB(seconds);
    return m_pointA && m_pointB;
}
