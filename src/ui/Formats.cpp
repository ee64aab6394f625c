#include "Formats.h"

#include "model/MediaInfoFormat.h"
#include "model/TimeFormat.h"

#include <QLocale>

QString Formats::time(double seconds)
{
    return velmar::formatTime(seconds);
}

QString Formats::bitrate(qint64 bitsPerSecond)
{
    return velmar::formatBitrate(bitsPerSecond);
}

QString Formats::channels(int count)
{
    return velmar::formatChannels(count);
}

QString Formats::sampleRate(int hertz)
{
    return velmar::formatSampleRate(hertz);
}

QString Formats::fileSize(qint64 bytes)
{
    return QLocale().formattedDataSize(bytes, 1, QLocale::DataSizeSIFormat);
}

QString Formats::dateTime(const QDateTime& when)
{
    return QLocale().toString(when.toLocalTime(), QLocale::ShortFormat);
}

QString Formats::rate(double rate)
{
    return velmar::formatRate(rate);
}
