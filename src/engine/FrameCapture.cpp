#include "FrameCapture.h"

#include "engine/MPVDecoder.h"

#include <QBuffer>
#include <QCoroFuture>
#include <QDir>
#include <QImage>
#include <QImageReader>
#include <QStandardPaths>
#include <QtConcurrent/QtConcurrentRun>
#include <QUuid>

namespace FrameCapture {

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

QCoro::Task<std::optional<QString>> screenshot(QPointer<MPVDecoder> decoder)
{
    const QString folder = screenshotFolder();
    const QString path =
        folder + QLatin1Char('/') + screenshotFileName(QDateTime::currentDateTime());
    // A folder that cannot be made shows up as a failed capture below.
    QFuture<bool> making = QtConcurrent::run([folder] { return QDir().mkpath(folder); });
    co_await making;
    if (!decoder)
        co_return std::nullopt;
    QCoro::Task<bool> writing = decoder->screenshot(path);
    const bool written = co_await writing;
    if (!written)
        co_return std::nullopt;
    co_return path;
}

QCoro::Task<std::optional<QByteArray>> bookmarkPicture(QPointer<MPVDecoder> decoder)
{
    if (!decoder)
        co_return std::nullopt;
    const QString framePath = QDir::tempPath() + QStringLiteral("/velmar_bm_") +
                              QUuid::createUuid().toString(QUuid::WithoutBraces) +
                              QStringLiteral(".jpg");
    QCoro::Task<bool> capturing = decoder->screenshot(framePath);
    const bool captured = co_await capturing;
    QFuture<std::optional<QByteArray>> encoding = QtConcurrent::run([framePath, captured] {
        const auto jpeg = captured ? thumbnailJpeg(framePath) : std::nullopt;
        QFile::remove(framePath);
        return jpeg;
    });
    const std::optional<QByteArray> jpeg = co_await encoding;
    co_return jpeg;
}

} // namespace FrameCapture
