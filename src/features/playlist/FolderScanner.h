#pragma once

#include <QByteArray>
#include <QFile>
#include <QList>
#include <QString>
#include <QUrl>

/// Finds the video files below a folder, in the order a person would list them: by file name
/// (not folder), case-insensitively and with numbers compared by value (file2 before file10).
/// Hidden files and folders are skipped, symbolic links to folders are not followed (so link
/// loops cannot trap the scan), and unreadable folders are passed over. Names are taken as the
/// bytes the file system holds, so a name that is not UTF-8 is found and can be opened.
///
/// Pure and thread-safe: the playlist runs it on the thread pool.
namespace FolderScanner {

/// `folder` as the bytes that name it (see MediaFiles::localPath).
QList<QUrl> scanForVideos(const QByteArray& folder);
/// The same for a folder named by text.
inline QList<QUrl> scanForVideos(const QString& folder)
{
    return scanForVideos(QFile::encodeName(folder));
}

} // namespace FolderScanner
