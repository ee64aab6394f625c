#include "SleepPreventer.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QPointer>

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

// One call at a time; when it answers, the state is compared with the latest wish again, so a
// pause that arrives while an Inhibit is on its way releases the cookie as soon as it exists.
void SleepPreventer::reconcile()
{
    if (m_callPending || m_wanted == isActive() || !m_bus.isConnected())
        return;
    const bool inhibit = m_wanted;
    QDBusMessage call = QDBusMessage::createMethodCall(kService, kPath, kInterface,
                                                       inhibit ? QStringLiteral("Inhibit")
                                                               : QStringLiteral("UnInhibit"));
    if (inhibit)
        call << QStringLiteral("VelmarPlayer") << QStringLiteral("VelmarPlayer video playback");
    else
        call << m_assertionID;
    m_callPending = true;
    auto* watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(call, kCallTimeoutMs), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this,
            [this, inhibit](QDBusPendingCallWatcher* finished) {
                finished->deleteLater();
                m_callPending = false;
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
