#include "FolderScanner.h"

#include "model/MediaExtensions.h"

#include <algorithm>
#include <QCollator>
#include <QDirIterator>
#include <QFileInfo>

namespace FolderScanner {

QList<QUrl> scanForVideos(const QString& folder)
{
    struct Found
    {
        QString name;
        QString path;
    };
    QList<Found> found;
    QDirIterator it(folder, QDir::Files | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        it.next();
        const QFileInfo info = it.fileInfo();
        if (info.isFile() && MediaExtensions::video.contains(info.suffix().toLower()))
            found.push_back({info.fileName(), info.filePath()});
    }

    // Under the C locale Qt compares code points and ignores numeric mode; fall back to English
    // ordering there so that file2 still comes before file10.
    const QLocale system = QLocale::system();
    QCollator collator(system.language() == QLocale::C ? QLocale(QLocale::English) : system);
    collator.setNumericMode(true);
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    std::stable_sort(found.begin(), found.end(), [&collator](const Found& a, const Found& b) {
        return collator.compare(a.name, b.name) < 0;
    });

    QList<QUrl> urls;
    urls.reserve(found.size());
    for (const Found& file : found)
        urls << QUrl::fromLocalFile(file.path);
    return urls;
}

} // namespace FolderScanner
