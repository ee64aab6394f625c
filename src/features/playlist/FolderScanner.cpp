#include "FolderScanner.h"

#include "model/MediaExtensions.h"
#include "model/MediaFiles.h"

#include <algorithm>
#include <dirent.h>
#include <memory>
#include <QCollator>
#include <QFile>
#include <sys/stat.h>

namespace FolderScanner {

namespace {

struct Found
{
    QString name; // for sorting only: a name that is not UTF-8 reads with replacements
    QByteArray path;
};

bool isVideoName(const QByteArray& name)
{
    const qsizetype dot = name.lastIndexOf('.');
    return dot >= 0 &&
           MediaExtensions::video.contains(QString::fromUtf8(name.mid(dot + 1)).toLower());
}

/// What a directory entry is, following a link to a file but never one to a folder.
enum class Kind { File, Folder, Other };

Kind kindOf(const dirent& entry, const QByteArray& path)
{
    if (entry.d_type == DT_REG)
        return Kind::File;
    if (entry.d_type == DT_DIR)
        return Kind::Folder;
    if (entry.d_type != DT_LNK && entry.d_type != DT_UNKNOWN)
        return Kind::Other;
    struct stat own
    {
    };
    if (::lstat(path.constData(), &own) != 0)
        return Kind::Other;
    if (S_ISDIR(own.st_mode))
        return Kind::Folder;
    struct stat target
    {
    };
    return ::stat(path.constData(), &target) == 0 && S_ISREG(target.st_mode) ? Kind::File
                                                                             : Kind::Other;
}

void collect(const QByteArray& folder, QList<Found>& found)
{
    const std::unique_ptr<DIR, int (*)(DIR*)> dir(::opendir(folder.constData()), ::closedir);
    if (!dir)
        return; // unreadable, gone, or not a folder
    while (const dirent* entry = ::readdir(dir.get())) {
        const QByteArray name(entry->d_name);
        if (name.startsWith('.'))
            continue; // hidden, and the folder itself and its parent
        const QByteArray path = (folder.endsWith('/') ? folder : folder + '/') + name;
        switch (kindOf(*entry, path)) {
        case Kind::File:
            if (isVideoName(name))
                found.push_back({QFile::decodeName(name), path});
            break;
        case Kind::Folder:
            collect(path, found);
            break;
        case Kind::Other:
            break;
        }
    }
}

} // namespace

QList<QUrl> scanForVideos(const QByteArray& folder)
{
    QList<Found> found;
    collect(folder, found);

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
        urls << MediaFiles::urlForLocalPath(file.path);
    return urls;
}

} // namespace FolderScanner
