#pragma once

#include <optional>
#include <QString>

/// The picture adjustments as the player core takes them: its picture controls in their own
/// units (-100…100, where 0 is neutral), the video filter chain that sharpens (empty for none),
/// and debanding with its threshold (sent only while debanding is on).
struct PictureSettings
{
    qint64 brightness = 0;
    qint64 contrast = 0;
    qint64 saturation = 0;
    QString videoFilters;
    bool deband = false;
    std::optional<qint64> debandThreshold;

    friend bool operator==(const PictureSettings&, const PictureSettings&) = default;
};
