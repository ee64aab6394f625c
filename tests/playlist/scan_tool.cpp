// Prints what a folder scan finds, one path per line. The playlist test runs it as an
// unprivileged user to see how the scan treats folders it may not read.
#include "features/playlist/FolderScanner.h"

#include <cstdio>
#include <QCoreApplication>

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    if (argc < 2)
        return 2;
    for (const QUrl& url : FolderScanner::scanForVideos(QByteArray(argv[1])))
        std::printf("%s\n", qPrintable(url.toLocalFile()));
    return 0;
}
