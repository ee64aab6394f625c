#include "FileRevealer.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDesktopServices>
#include <QFileInfo>
#include <QUrl>

namespace FileRevealer {

void reveal(const QString& filePath)
{
    const QUrl folder = QUrl::fromLocalFile(QFileInfo(filePath).absolutePath());
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        QDesktopServices::openUrl(folder);
        return;
    }
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.FileManager1"),
        QStringLiteral("/org/freedesktop/FileManager1"),
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
    call << QStringList{QUrl::fromLocalFile(filePath).toString(QUrl::FullyEncoded)} << QString();
    // Asynchronous: a slow file manager must not stall playback.
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(call, 2000));
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher,
                     [folder](QDBusPendingCallWatcher* finished) {
                         if (finished->isError())
                             QDesktopServices::openUrl(folder);
                         finished->deleteLater();
                     });
}

} // namespace FileRevealer
