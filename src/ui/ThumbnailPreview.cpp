#include "ThumbnailPreview.h"

#include <algorithm>

QSizeF ThumbnailPreview::size() const
{
    if (showsPlaceholder())
        return {previewWidth, kPlaceholderHeight};
    const double aspectRatio = double(image.width()) / double(image.height());
    // Not std::clamp: a minimum above the maximum must not be undefined; the maximum wins.
    const double height = std::min(std::max(previewWidth / aspectRatio, minHeight), maxHeight);
    return {previewWidth, height};
}
