#pragma once

#include <QImage>
#include <QSizeF>

/// The hover bubble above the seek bar: the picture for `time`, centred at `xPosition` on the
/// bar. A value for display only; the seek bar fills it from the thumbnail generator.
struct ThumbnailPreview
{
    QImage image; // null while no picture is available
    double time = 0;
    double xPosition = 0;
    double previewWidth = 0;
    double minHeight = 0;
    double maxHeight = 0;

    /// Size of the picture area: `previewWidth` wide and as tall as the image's aspect ratio
    /// asks, kept within [minHeight, maxHeight]; without an image, the placeholder's height.
    QSizeF size() const;

    /// Without an image the bubble shows a translucent black rounded placeholder.
    bool showsPlaceholder() const { return image.isNull(); }

    static constexpr double kPlaceholderHeight = 135;
    static constexpr double kPlaceholderOpacity = 0.5;
    static constexpr double kPlaceholderCornerRadius = 12;
};
