#pragma once

#include <QList>
#include <QString>
#include <QUrl>

/// Finds the video files below a folder, in the order a person would list them: by file name
/// (not folder), case-insensitively and with numbers compared by value (file2 before file10).
/// Hidden files and folders are skipped, symbolic links to folders are not followed (so link
/// loops cannot trap the scan), and unreadable folders are passed over.
///
/// Pure and thread-safe: the playlist runs it on the thread pool.
namespace FolderScanner {

QList<QUrl> scanForVideos(const QString& folder);

} // namespace FolderScanner
