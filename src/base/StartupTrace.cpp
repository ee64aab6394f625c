#include "StartupTrace.h"

#include "Log.h"

#include <ctime>
#include <QFile>
#include <unistd.h>

namespace velmar {

namespace {

/// Seconds since boot at which this process started, from /proc/self/stat; 0 if unreadable.
double processStartSinceBoot()
{
    QFile stat(QStringLiteral("/proc/self/stat"));
    if (!stat.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray line = stat.readAll();
    // The command name may hold spaces and parentheses: the fields follow its last ')'.
    const QList<QByteArray> fields = line.mid(line.lastIndexOf(')') + 2).split(' ');
    constexpr int kStartTimeField = 22 - 3; // field 22 of the line, counting from field 3
    return fields.size() > kStartTimeField
               ? fields.at(kStartTimeField).toDouble() / double(sysconf(_SC_CLK_TCK))
               : 0;
}

} // namespace

void traceStartup(const char* phase)
{
    static const bool enabled = qEnvironmentVariableIsSet("VELMAR_STARTUP_TRACE");
    if (!enabled)
        return;
    timespec now{};
    clock_gettime(CLOCK_BOOTTIME, &now);
    const double sinceStart =
        double(now.tv_sec) + double(now.tv_nsec) / 1e9 - processStartSinceBoot();
    logLine(QStringLiteral("[Startup] %1 ms %2")
                .arg(sinceStart * 1000, 0, 'f', 1)
                .arg(QString::fromUtf8(phase)));
}

} // namespace velmar
