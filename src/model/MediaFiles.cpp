#include "MediaFiles.h"

#include <QFileInfo>
#include <QImageReader>
#include <QMimeDatabase>

namespace MediaFiles {

QUrl urlForLocalPath(const QByteArray& absolutePath)
{
    return QUrl::fromEncoded("file://" + absolutePath.toPercentEncoding("/"), QUrl::StrictMode);
}

QByteArray localPath(const QUrl& url)
{
    // The fully encoded path keeps non-UTF-8 bytes as %XX, where the decoded forms would turn
    // them into replacement characters.
    return QByteArray::fromPercentEncoding(url.path(QUrl::FullyEncoded).toLatin1());
}

bool isImage(const QUrl& url)
{
    const QMimeType type =
        QMimeDatabase().mimeTypeForFile(url.toLocalFile(), QMimeDatabase::MatchExtension);
    return type.isValid() && type.name().startsWith(QLatin1String("image/"));
}

QImage readImage(const QString& path)
{
    QImageReader reader(path);
    reader.setAutoTransform(true);
    return reader.read();
}

std::pair<QDateTime, QDateTime> dates(const QString& path)
{
    const QFileInfo file(path);
    return {file.birthTime(), file.lastModified()};
}

} // namespace MediaFiles
