#include "Formats.h"

#include "model/TimeFormat.h"

QString Formats::time(double seconds)
{
    return velmar::formatTime(seconds);
}
