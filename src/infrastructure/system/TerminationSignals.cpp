#include "TerminationSignals.h"

#include <cerrno>
#include <csignal>
#include <sys/socket.h>
#include <unistd.h>

namespace {

constexpr int kHandledSignals[] = {SIGTERM, SIGINT, SIGHUP};

// The write end of the socket pair. A signal handler can reach nothing else, so this one
// value is process-wide by necessity; it is set before the handlers go in and cleared after
// they come out.
volatile sig_atomic_t g_writeEnd = -1;

extern "C" void forwardSignal(int signalNumber)
{
    const int savedErrno = errno;
    const unsigned char byte = static_cast<unsigned char>(signalNumber);
    if (g_writeEnd >= 0) {
        // A failed write means the socket is full: a request to quit is already waiting.
        const ssize_t written = ::write(g_writeEnd, &byte, 1);
        static_cast<void>(written);
    }
    errno = savedErrno;
}

void install(void (*handler)(int))
{
    struct sigaction action = {};
    action.sa_handler = handler;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    for (int signalNumber : kHandledSignals)
        sigaction(signalNumber, &action, nullptr);
}

} // namespace

TerminationSignals::TerminationSignals(QObject* parent)
    : QObject(parent)
{
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, m_sockets) != 0)
        return; // the signals keep their default: ending the process
    g_writeEnd = m_sockets[1];
    m_notifier = new QSocketNotifier(m_sockets[0], QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &TerminationSignals::drain);
    install(forwardSignal);
}

TerminationSignals::~TerminationSignals()
{
    if (m_sockets[0] < 0)
        return;
    install(SIG_DFL);
    g_writeEnd = -1;
    ::close(m_sockets[0]);
    ::close(m_sockets[1]);
}

void TerminationSignals::drain()
{
    unsigned char byte = 0;
    while (::read(m_sockets[0], &byte, 1) == 1)
        Q_EMIT received(byte);
}
