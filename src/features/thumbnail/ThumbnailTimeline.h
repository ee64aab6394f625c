#pragma once

#include <QList>
#include <QtGlobal>

/// How a file's timeline is cut into thumbnail buckets. Pure functions.
namespace velmar::thumbnails {

/// Bucket width in seconds for a file of this duration: wider buckets for longer files, so that
/// even a long film needs only a few hundred pictures. Without a positive duration, 2 s.
double bucketSize(double duration);

/// The bucket holding `seconds`: the quotient truncated toward zero. A time whose quotient is
/// not finite or does not fit 64 bits is a programming error and stops the program.
qint64 bucketKey(double seconds, double bucketSize);

/// The times the background walk grabs, front to back: 0, s, 2s, ... below the duration (0 is
/// always included). Capped so that a bogus duration cannot make the walk endless.
QList<double> walkTimes(double duration, double bucketSize);

/// The most pictures one walk grabs (10 hours of 12 s buckets).
inline constexpr int kMaxWalkLength = 3000;

} // namespace velmar::thumbnails
