#pragma once

#include <QString>

/// A named stretch of a media file, starting at `time` seconds; the title may be empty.
struct Chapter
{
    double time = 0;
    QString title;

    friend bool operator==(const Chapter&, const Chapter&) = default;
};
