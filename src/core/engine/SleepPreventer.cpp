#include "SleepPreventer.h"

#include <QDBusConnection>
#include <QDBusMessage>

namespace {

const QString kService = QStringLiteral("org.freedesktop.ScreenSaver");
const QString kPath = QStringLiteral("/org/freedesktop/ScreenSaver");
const QString kInterface = QStringLiteral("org.freedesktop.ScreenSaver");
// A screen saver that does not answer quickly is treated as absent rather than stalling play.
constexpr int kCallTimeoutMs = 500;

} // namespace

SleepPreventer::~SleepPreventer()
{
    allowSleep();
}

void SleepPreventer::preventSleep()
{
    if (m_isActive)
        return;
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return;
    QDBusMessage call =
        QDBusMessage::createMethodCall(kService, kPath, kInterface, QStringLiteral("Inhibit"));
    call << QStringLiteral("VelmarPlayer") << QStringLiteral("VelmarPlayer video playback");
    const QDBusMessage reply = bus.call(call, QDBus::Block, kCallTimeoutMs);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty())
        return;
    m_assertionID = reply.arguments().constFirst().toUInt();
    m_isActive = true;
}

void SleepPreventer::allowSleep()
{
    if (!m_isActive)
        return;
    QDBusMessage call =
        QDBusMessage::createMethodCall(kService, kPath, kInterface, QStringLiteral("UnInhibit"));
    call << m_assertionID;
    QDBusConnection::sessionBus().call(call, QDBus::Block, kCallTimeoutMs);
    m_assertionID = 0;
    m_isActive = false;
}
