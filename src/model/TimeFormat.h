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

/// A playback rate with two significant digits by C's rules (round half to even on the exact
/// binary value, not Qt's): 1 gives "1", 0.25 gives "0.25", 1.25 gives "1.2".
QString formatRate(double rate);

} // namespace velmar
