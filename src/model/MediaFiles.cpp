#include "MediaFiles.h"

#include <fcntl.h>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QMimeDatabase>
#include <sys/stat.h>
#include <unistd.h>

namespace MediaFiles {

namespace {

QDateTime toDateTime(const statx_timestamp& time)
{
    return QDateTime::fromMSecsSinceEpoch(qint64(time.tv_sec) * 1000 + time.tv_nsec / 1000000);
}

} // namespace

QUrl urlForLocalPath(const QByteArray& absolutePath)
{
    if (QString::fromUtf8(absolutePath).toUtf8() == absolutePath)
        return QUrl::fromLocalFile(QString::fromUtf8(absolutePath));
    // Qt leaves these as they are in a file URL's path; encoding them would make another URL.
    return QUrl::fromEncoded("file://" + absolutePath.toPercentEncoding("/!$&'()*+,;=:@"),
                             QUrl::StrictMode);
}

QByteArray localPath(const QUrl& url)
{
    if (!url.isLocalFile())
        return {};
    // The fully encoded path keeps non-UTF-8 bytes as %XX, where the decoded forms would turn
    // them into replacement characters.
    return QByteArray::fromPercentEncoding(url.path(QUrl::FullyEncoded).toLatin1());
}

bool isFolder(const QUrl& url)
{
    struct stat info
    {
    };
    return ::stat(localPath(url).constData(), &info) == 0 && S_ISDIR(info.st_mode);
}

bool isImage(const QUrl& url)
{
    const QMimeType type =
        QMimeDatabase().mimeTypeForFile(url.fileName(), QMimeDatabase::MatchExtension);
    return type.isValid() && type.name().startsWith(QLatin1String("image/"));
}

QImage readImage(const QByteArray& path)
{
    const int descriptor = ::open(path.constData(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0)
        return {};
    QFile file;
    if (!file.open(descriptor, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle)) {
        ::close(descriptor);
        return {};
    }
    // The extension is a hint; the reader still looks at the content when it is wrong.
    QImageReader reader(&file, QFileInfo(QFile::decodeName(path)).suffix().toLower().toLatin1());
    reader.setAutoTransform(true);
    return reader.read();
}

std::pair<QDateTime, QDateTime> dates(const QByteArray& path)
{
    struct statx info
    {
    };
    if (::statx(AT_FDCWD, path.constData(), 0, STATX_BTIME | STATX_MTIME, &info) != 0)
        return {};
    return {info.stx_mask & STATX_BTIME ? toDateTime(info.stx_btime) : QDateTime(),
            info.stx_mask & STATX_MTIME ? toDateTime(info.stx_mtime) : QDateTime()};
}

} // namespace MediaFiles
