#include "SingleInstance.h"

#include "base/Log.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>

SingleInstance::SingleInstance(QObject* parent)
    : QObject(parent)
{}

SingleInstance::~SingleInstance()
{
    if (!m_claimed)
        return;
    QDBusConnection bus = QDBusConnection::sessionBus();
    bus.unregisterObject(objectPath);
    bus.unregisterService(serviceName);
}

bool SingleInstance::claim()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return false;
    // The object goes up before the name, so a launch that sees the name can always call it.
    if (!bus.registerObject(objectPath, this, QDBusConnection::ExportScriptableSlots))
        return false;
    if (!bus.registerService(serviceName)) {
        bus.unregisterObject(objectPath);
        return false;
    }
    m_claimed = true;
    return true;
}

bool SingleInstance::forward(const QList<QUrl>& urls)
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return false;
    QStringList uris;
    for (const QUrl& url : urls)
        uris << url.toString(QUrl::FullyEncoded);
    QDBusMessage call = QDBusMessage::createMethodCall(serviceName, objectPath, serviceName,
                                                       QStringLiteral("Open"));
    call << uris;
    const QDBusMessage reply = bus.call(call, QDBus::Block, 5000);
    if (reply.type() == QDBusMessage::ErrorMessage) {
        velmar::logLine(QStringLiteral("[SingleInstance] Could not reach the running player: ") +
                        reply.errorMessage());
        return false;
    }
    return true;
}

void SingleInstance::Open(const QStringList& uris)
{
    QList<QUrl> urls;
    for (const QString& uri : uris) {
        const QUrl url(uri, QUrl::StrictMode);
        if (url.isValid() && !url.isRelative())
            urls << url;
    }
    Q_EMIT openRequested(urls);
}
