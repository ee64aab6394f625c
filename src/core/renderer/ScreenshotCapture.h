#pragma once

#include <optional>
#include <QByteArray>
#include <QDateTime>
#include <QString>

/// Where screenshots go and how bookmark thumbnails are made from a captured frame.
namespace ScreenshotCapture {

/// "<Pictures>/VelmarPlayer Screenshots".
QString screenshotFolder();
/// "VelmarPlayer_2026-11-22T12-30-05Z.png": the UTC time in ISO 8601, colons made dashes so
/// that the name is valid everywhere.
QString screenshotFileName(const QDateTime& when);

/// Reads a captured frame and encodes it as a JPEG at most 160 pixels wide (never enlarged),
/// quality 50. Thread-safe; runs on the thread pool.
std::optional<QByteArray> thumbnailJpeg(const QString& framePath);

} // namespace ScreenshotCapture
