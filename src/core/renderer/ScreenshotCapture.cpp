#include "ScreenshotCapture.h"

#include <QBuffer>
#include <QImage>
#include <QImageReader>
#include <QStandardPaths>

namespace ScreenshotCapture {

namespace {
constexpr int kThumbnailMaxWidth = 160;
constexpr int kThumbnailQuality = 50;
} // namespace

QString screenshotFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::PicturesLocation) +
           QStringLiteral("/VelmarPlayer Screenshots");
}

QString screenshotFileName(const QDateTime& when)
{
    const QString stamp =
        when.toUTC().toString(Qt::ISODate).replace(QLatin1Char(':'), QLatin1Char('-'));
    return QStringLiteral("VelmarPlayer_") + stamp + QStringLiteral(".png");
}

std::optional<QByteArray> thumbnailJpeg(const QString& framePath)
{
    QImage frame = QImageReader(framePath).read();
    if (frame.isNull())
        return std::nullopt;
    if (frame.width() > kThumbnailMaxWidth)
        frame = frame.scaledToWidth(kThumbnailMaxWidth, Qt::SmoothTransformation);
    QByteArray jpeg;
    QBuffer buffer(&jpeg);
    buffer.open(QIODevice::WriteOnly);
    if (!frame.convertToFormat(QImage::Format_RGB32).save(&buffer, "JPEG", kThumbnailQuality))
        return std::nullopt;
    return jpeg;
}

} // namespace ScreenshotCapture
