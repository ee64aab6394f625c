#pragma once

#include <optional>
#include <QByteArray>
#include <QCoroTask>
#include <QDateTime>
#include <QPointer>
#include <QString>

class MPVDecoder;

/// Pictures taken from the video: screenshots saved for the user, and the small pictures that
/// bookmarks keep. libmpv writes the frames on its own threads, and folders are made and
/// pictures encoded on the thread pool, so the GUI thread never waits for the disk.
namespace FrameCapture {

/// "<Pictures>/VelmarPlayer Screenshots".
QString screenshotFolder();
/// "VelmarPlayer_2026-11-22T12-30-05Z.png": the UTC time in ISO 8601, colons made dashes so
/// that the name is valid everywhere.
QString screenshotFileName(const QDateTime& when);
/// Reads a captured frame and encodes it as a JPEG at most 160 pixels wide (never enlarged),
/// quality 50. Thread-safe.
std::optional<QByteArray> thumbnailJpeg(const QString& framePath);

/// Saves the current frame as a PNG in the screenshot folder; its path, or nothing.
QCoro::Task<std::optional<QString>> screenshot(QPointer<MPVDecoder> decoder);
/// The current frame as a bookmark's JPEG, or nothing.
QCoro::Task<std::optional<QByteArray>> bookmarkPicture(QPointer<MPVDecoder> decoder);

} // namespace FrameCapture
