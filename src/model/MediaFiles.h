#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QImage>
#include <QString>
#include <QUrl>
#include <utility>

/// What the player needs to know of a media file before and beside libmpv. Thread-safe; the
/// functions that touch the disk run on the thread pool.
///
/// File names are bytes on Linux and need not be UTF-8. Qt names files by text and would turn
/// such a name into one that names no file, so whatever reaches the file system or libmpv takes
/// the name's bytes from `localPath`.
namespace MediaFiles {

/// The URL of a local file named by the bytes the file system uses: bytes that are not text
/// stay percent-encoded in the URL, so nothing of the name is lost. A name that is UTF-8 gets
/// the same URL as QUrl::fromLocalFile gives it.
QUrl urlForLocalPath(const QByteArray& absolutePath);
/// The bytes that name a local file URL's file on disk: the inverse of `urlForLocalPath`.
/// Empty for a URL that names no local file.
QByteArray localPath(const QUrl& url);

/// Whether the URL names a local folder.
bool isFolder(const QUrl& url);
/// Whether the file is a still image, by its extension's type.
bool isImage(const QUrl& url);
/// The image at `path` (bytes, as `localPath` gives them), turned the way its metadata says;
/// null when it cannot be read.
QImage readImage(const QByteArray& path);
/// The file's creation and modification times (invalid when the file system has none).
std::pair<QDateTime, QDateTime> dates(const QByteArray& path);

} // namespace MediaFiles
