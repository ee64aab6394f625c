#include "TimeFormat.h"

#include <charconv>
#include <cmath>
#include <cstdio>

namespace velmar {

QString formatTime(double seconds)
{
    if (!std::isfinite(seconds))
        return QStringLiteral("00:00");
    // Clamp before converting so that huge values cannot overflow the integer.
    const double clamped = std::min(std::max(seconds, 0.0), 9.0e15);
    const auto total = static_cast<long long>(clamped);
    const long long hours = total / 3600;
    const long long minutes = (total % 3600) / 60;
    const long long secs = total % 60;
    if (hours == 0)
        return QString::asprintf("%02lld:%02lld", minutes, secs);
    return QString::asprintf("%lld:%02lld:%02lld", hours, minutes, secs);
}

double toReferenceTimestamp(const QDateTime& dateTime)
{
    return double(dateTime.toMSecsSinceEpoch()) / 1000.0 - double(kReferenceDateUnixOffset);
}

QDateTime fromReferenceTimestamp(double seconds)
{
    const double unixMs = (seconds + double(kReferenceDateUnixOffset)) * 1000.0;
    return QDateTime::fromMSecsSinceEpoch(qint64(std::llround(unixMs)), Qt::UTC);
}

double referenceTimestampNow()
{
    return toReferenceTimestamp(QDateTime::currentDateTimeUtc());
}

QString shortestFloatText(float value)
{
    char digits[32];
    const auto result = std::to_chars(digits, digits + sizeof digits, value);
    QString text = QString::fromLatin1(digits, int(result.ptr - digits));
    if (!text.contains(QLatin1Char('.')) && !text.contains(QLatin1Char('e')) &&
        !text.contains(QLatin1Char('n')))
        text += QStringLiteral(".0");
    return text;
}

QString formatRate(double rate)
{
    char digits[32];
    std::snprintf(digits, sizeof digits, "%.2g", rate);
    return QString::fromLatin1(digits);
}

} // namespace velmar
