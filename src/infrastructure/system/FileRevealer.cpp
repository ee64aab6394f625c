#include "FileRevealer.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDesktopServices>
#include <QUrl>

namespace FileRevealer {

namespace {

/// Without a file manager that selects files, the folder opens in whatever the desktop uses
/// for folders. Outside a desktop session there is nothing to show it in.
void openFolder(const QUrl& folder)
{
    if (!qEnvironmentVariableIsEmpty("XDG_CURRENT_DESKTOP"))
        QDesktopServices::openUrl(folder);
}

} // namespace

void reveal(const QUrl& file)
{
    const QUrl folder = file.adjusted(QUrl::RemoveFilename);
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        openFolder(folder);
        return;
    }
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.FileManager1"),
        QStringLiteral("/org/freedesktop/FileManager1"),
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
    call << QStringList{file.toString(QUrl::FullyEncoded)} << QString();
    // Asynchronous: a slow file manager must not stall playback.
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(call, 2000));
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher,
                     [folder](QDBusPendingCallWatcher* finished) {
                         if (finished->isError())
                             openFolder(folder);
                         finished->deleteLater();
                     });
}

} // namespace FileRevealer
