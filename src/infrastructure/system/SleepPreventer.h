#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QPointer>

class QDBusPendingCallWatcher;

/// Keeps the display awake while video plays, through the desktop's
/// org.freedesktop.ScreenSaver service on the session bus. Calls are asynchronous: the player
/// never waits for the screen saver. Without a bus or without that service it silently stays
/// inactive, and the next `preventSleep` tries again.
///
/// GUI thread only.
class SleepPreventer : public QObject
{
    Q_OBJECT

public:
    /// Uses the session bus.
    explicit SleepPreventer(QObject* parent = nullptr);
    explicit SleepPreventer(const QDBusConnection& bus, QObject* parent = nullptr);
    /// Releases a held inhibit.
    ~SleepPreventer() override;

    void preventSleep();
    void allowSleep();
    /// While held, the latest wish is remembered but the screen saver is not asked: a starting
    /// player asks once its first picture is up, and not while making it.
    void setHeld(bool held);

    /// Whether the screen saver granted an inhibit that is still held.
    bool isActive() const { return m_assertionID != 0; }
    quint32 assertionID() const { return m_assertionID; }

Q_SIGNALS:
    /// The inhibit was granted or released.
    void activeChanged();

private:
    void reconcile();
    void releaseWhenGranted(QDBusPendingCallWatcher* inhibitCall);

    QDBusConnection m_bus;
    bool m_wanted = false; // what the player asked for last
    bool m_held = false;
    // The Inhibit or UnInhibit call on its way, if any; only one at a time.
    QPointer<QDBusPendingCallWatcher> m_pendingCall;
    bool m_pendingIsInhibit = false;
    quint32 m_assertionID = 0; // the service's inhibit cookie, 0 when none is held
};
