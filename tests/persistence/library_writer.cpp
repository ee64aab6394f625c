// Writes history and bookmarks into a library as fast as it can, printing one line per
// committed write ("H <url>" or "B <uuid>"), until it is killed. The crash test uses it.
#include "features/bookmark/BookmarkManager.h"
#include "features/playlist/PlaybackHistoryManager.h"
#include "infrastructure/persistence/Library.h"
#include "infrastructure/persistence/LibraryTables.h"

#include <cstdio>
#include <QCoreApplication>

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    if (argc < 3)
        return 2;
    const QString path = QString::fromLocal8Bit(argv[1]);
    const QString run = QString::fromLocal8Bit(argv[2]);

    Library library(path);
    // No trimming here: every committed row must still be found afterwards.
    PlaybackHistoryManager history(library, 1000000);
    BookmarkManager bookmarks(library);

    for (int i = 0;; ++i) {
        const QUrl url =
            QUrl::fromLocalFile(QStringLiteral("/media/run-%1/clip %2.mp4").arg(run).arg(i));
        history.recordPosition(url, QStringLiteral("clip %1").arg(i), 10.0 + i % 50, 200.0);
        const auto id = bookmarks.add(url, 30.0, QStringLiteral("mark"), QByteArray(512, 'j'));
        // Reported only once the library has written them.
        library.waitForPendingWrites(std::chrono::seconds(10));
        std::printf("H %s\n", qPrintable(LibraryTables::urlText(url)));
        if (id)
            std::printf("B %s\n", qPrintable(LibraryTables::uuidText(*id)));
        std::fflush(stdout);
    }
}
