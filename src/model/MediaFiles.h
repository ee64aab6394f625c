#pragma once

#include <QDateTime>
#include <QImage>
#include <QString>
#include <QUrl>
#include <utility>

/// What the player needs to know of a media file before and beside libmpv. Thread-safe; the
/// functions that touch the disk run on the thread pool.
namespace MediaFiles {

/// The URL of a local file named by the bytes the file system uses, which need not be UTF-8:
/// bytes that are not text stay percent-encoded in the URL, so nothing of the name is lost.
QUrl urlForLocalPath(const QByteArray& absolutePath);
/// The bytes that name a local file URL's file on disk: the inverse of `urlForLocalPath`.
QByteArray localPath(const QUrl& url);

/// Whether the file is a still image, by its extension's type.
bool isImage(const QUrl& url);
/// The image, turned the way its metadata says; null when it cannot be read.
QImage readImage(const QString& path);
/// The file's creation and modification times (invalid when the file system has none).
std::pair<QDateTime, QDateTime> dates(const QString& path);

} // namespace MediaFiles
