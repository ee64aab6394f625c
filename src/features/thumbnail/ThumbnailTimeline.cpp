#include "ThumbnailTimeline.h"

#include <cmath>

namespace velmar::thumbnails {

double bucketSize(double duration)
{
    if (!(duration > 0) || duration < 300)
        return 2.0;
    if (duration < 1800)
        return 5.0;
    if (duration < 7200)
        return 8.0;
    return 12.0;
}

qint64 bucketKey(double seconds, double bucketSize)
{
    const double quotient = seconds / bucketSize;
    // [-2^63, 2^63): the doubles whose truncation is a 64-bit integer.
    constexpr double kLimit = 9223372036854775808.0;
    if (!std::isfinite(quotient) || quotient >= kLimit || quotient < -kLimit)
        qFatal("[ThumbnailGenerator] no bucket for %f s in buckets of %f s", seconds, bucketSize);
    return qint64(quotient);
}

QList<double> walkTimes(double duration, double bucketSize)
{
    QList<double> times{0.0};
    // The cap also ends the loop where huge sums stop growing.
    for (double time = bucketSize; time < duration && times.size() < kMaxWalkLength;
         time += bucketSize)
        times.append(time);
    return times;
}

} // namespace velmar::thumbnails
