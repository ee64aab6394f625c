#pragma once

#include <QObject>
#include <QSocketNotifier>

/// Turns SIGTERM, SIGINT and SIGHUP (a desktop logging out, Ctrl+C in a terminal, a closed
/// terminal) into a Qt signal on the GUI thread, so that they end the player the way closing
/// its window does: through the event loop, with the place and the settings saved.
///
/// A signal handler may only do async-signal-safe work, so it writes the signal number into
/// a socket pair that the GUI thread watches. One instance at a time; GUI thread only.
class TerminationSignals : public QObject
{
    Q_OBJECT

public:
    explicit TerminationSignals(QObject* parent = nullptr);
    /// Restores the default handlers: after this, the signals end the process at once.
    ~TerminationSignals() override;

Q_SIGNALS:
    void received(int signalNumber);

private:
    void drain();

    int m_sockets[2] = {-1, -1};
    QSocketNotifier* m_notifier = nullptr;
};
