#include "OSDManager.h"

#include "base/Log.h"

#include "base/PropertyUpdate.h"

#include <cmath>

OSDManager::OSDManager(QObject* parent)
    : QObject(parent)
{
    m_dismissTimer.setSingleShot(true);
    m_dismissTimer.setTimerType(Qt::PreciseTimer);
    connect(&m_dismissTimer, &QTimer::timeout, this, [this] { setCurrentMessage(std::nullopt); });
}

QVariant OSDManager::currentMessageVariant() const
{
    return m_currentMessage ? QVariant::fromValue(*m_currentMessage) : QVariant();
}

void OSDManager::show(const OSDMessage& message, double seconds)
{
    // Restarting the single timer is what keeps an older deadline from hiding a newer message.
    m_dismissTimer.stop();
    // What the user was shown goes to the log too: it is the player's own account of every
    // command it acted on.
    velmar::logLine(QStringLiteral("[OSDManager] ") + message.text());
    setCurrentMessage(message);
    m_dismissTimer.start(std::max(0, int(std::lround(seconds * 1000.0))));
}

void OSDManager::setCurrentMessage(const std::optional<OSDMessage>& message)
{
    if (velmar::assignIfChanged(m_currentMessage, message))
        Q_EMIT currentMessageChanged();
}
