#include "Formats.h"

#include "model/TimeFormat.h"

QString Formats::time(double seconds)
{
    return velmar::formatTime(seconds);
}

QString Formats::rate(double rate)
{
    return velmar::formatRate(rate);
}
