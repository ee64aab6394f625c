#include "SleepPreventer.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

namespace {

const QString kService = QStringLiteral("org.freedesktop.ScreenSaver");
const QString kPath = QStringLiteral("/org/freedesktop/ScreenSaver");
const QString kInterface = QStringLiteral("org.freedesktop.ScreenSaver");
constexpr int kCallTimeoutMs = 2000;

} // namespace

SleepPreventer::SleepPreventer(QObject* parent)
    : SleepPreventer(QDBusConnection::sessionBus(), parent)
{}

SleepPreventer::SleepPreventer(const QDBusConnection& bus, QObject* parent)
    : QObject(parent)
    , m_bus(bus)
{}

SleepPreventer::~SleepPreventer()
{
    // Nothing waits for the answer: the release only has to leave this process.
    if (m_assertionID != 0 && m_bus.isConnected()) {
        QDBusMessage call = QDBusMessage::createMethodCall(kService, kPath, kInterface,
                                                           QStringLiteral("UnInhibit"));
        call << m_assertionID;
        m_bus.send(call);
    }
    // A cookie still on its way would otherwise keep the display awake after the player left.
    if (m_pendingCall && m_pendingIsInhibit)
        releaseWhenGranted(m_pendingCall);
}

void SleepPreventer::releaseWhenGranted(QDBusPendingCallWatcher* inhibitCall)
{
    // The watcher outlives this object; the application takes it so that nothing leaks if
    // the answer never comes before the event loop ends.
    inhibitCall->disconnect(this);
    inhibitCall->setParent(QCoreApplication::instance());
    QDBusConnection bus = m_bus;
    connect(inhibitCall, &QDBusPendingCallWatcher::finished, inhibitCall,
            [bus](QDBusPendingCallWatcher* finished) mutable {
                finished->deleteLater();
                const QDBusPendingReply<quint32> reply = *finished;
                if (reply.isError() || reply.value() == 0 || !bus.isConnected())
                    return;
                QDBusMessage call = QDBusMessage::createMethodCall(kService, kPath, kInterface,
                                                                   QStringLiteral("UnInhibit"));
                call << reply.value();
                bus.send(call);
            });
}

void SleepPreventer::preventSleep()
{
    m_wanted = true;
    reconcile();
}

void SleepPreventer::allowSleep()
{
    m_wanted = false;
    reconcile();
}

void SleepPreventer::setHeld(bool held)
{
    m_held = held;
    reconcile();
}

// One call at a time; when it answers, the state is compared with the latest wish again, so a
// pause that arrives while an Inhibit is on its way releases the cookie as soon as it exists.
void SleepPreventer::reconcile()
{
    if (m_held || m_pendingCall || m_wanted == isActive() || !m_bus.isConnected())
        return;
    const bool inhibit = m_wanted;
    QDBusMessage call = QDBusMessage::createMethodCall(kService, kPath, kInterface,
                                                       inhibit ? QStringLiteral("Inhibit")
                                                               : QStringLiteral("UnInhibit"));
    if (inhibit)
        call << QStringLiteral("VelmarPlayer") << QStringLiteral("VelmarPlayer video playback");
    else
        call << m_assertionID;
    auto* watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(call, kCallTimeoutMs), this);
    m_pendingCall = watcher;
    m_pendingIsInhibit = inhibit;
    connect(watcher, &QDBusPendingCallWatcher::finished, this,
            [this, inhibit](QDBusPendingCallWatcher* finished) {
                finished->deleteLater();
                m_pendingCall = nullptr;
                if (inhibit) {
                    const QDBusPendingReply<quint32> reply = *finished;
                    // No screen saver: stay inactive, and do not retry until asked again.
                    if (reply.isError() || reply.value() == 0) {
                        m_wanted = false;
                        return;
                    }
                    m_assertionID = reply.value();
                } else {
                    m_assertionID = 0;
                }
                Q_EMIT activeChanged();
                reconcile();
            });
}
