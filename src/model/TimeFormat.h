#pragma once

#include <QDateTime>
#include <QString>

namespace velmar {

/// The one time formatter of the program: "mm:ss" below an hour, "h:mm:ss" from an hour on.
/// Non-finite input gives "00:00"; negative input counts as 0; fractions are truncated.
QString formatTime(double seconds);

/// Stored time stamps count seconds from 2001-01-01 00:00:00 UTC rather than from the Unix epoch.
inline constexpr qint64 kReferenceDateUnixOffset = 978307200;

double toReferenceTimestamp(const QDateTime& dateTime);
QDateTime fromReferenceTimestamp(double seconds);
double referenceTimestampNow();

/// The shortest text that reads back as the same single-precision number, always with a
/// decimal point: 0.5 gives "0.5", 1 gives "1.0", 0.75 gives "0.75".
QString shortestFloatText(float value);

} // namespace velmar
