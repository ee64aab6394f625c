// Times the playlist's folder scan on a generated tree of 20,000 files against
// `find DIR -type f | sort -V` in the same run, and measures how long the GUI thread is kept
// from its event loop while the playlist scans (the scan runs on the thread pool).
//
//   build/bench/folder_scan_bench [files]
#include "features/playlist/FolderScanner.h"
#include "features/playlist/PlaylistManager.h"

#include <algorithm>
#include <cstdio>
#include <QCoreApplication>
#include <QCoroTask>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTimer>

namespace {

constexpr int kRuns = 7;

double median(QList<double> values)
{
    std::sort(values.begin(), values.end());
    return values.at(values.size() / 2);
}

void makeTree(const QString& root, int files)
{
    const char* kinds[] = {"mp4", "mkv", "webm", "txt", "srt"};
    for (int i = 0; i < files; ++i) {
        const QString folder = root + QStringLiteral("/season %1/disc %2").arg(i % 40).arg(i % 7);
        QDir().mkpath(folder);
        QFile(folder + QStringLiteral("/episode %1.%2").arg(i).arg(QLatin1String(kinds[i % 5])))
            .open(QIODevice::WriteOnly);
    }
}

double timeScanner(const QString& root, qsizetype& found)
{
    QElapsedTimer clock;
    clock.start();
    found = FolderScanner::scanForVideos(root).size();
    return double(clock.nsecsElapsed()) / 1e6;
}

double timeFind(const QString& root)
{
    QElapsedTimer clock;
    clock.start();
    QProcess shell;
    shell.start(
        QStringLiteral("sh"),
        {QStringLiteral("-c"), QStringLiteral("find \"$0\" -type f | sort -V > /dev/null"), root});
    shell.waitForFinished(-1);
    return double(clock.nsecsElapsed()) / 1e6;
}

/// The longest gap between 1 ms timer ticks on this (the GUI) thread while the playlist scans.
double longestStallWhileScanning(const QString& root)
{
    PlaylistManager playlist;
    QElapsedTimer sinceTick;
    double longest = 0;
    QTimer ticker;
    ticker.setInterval(1);
    QObject::connect(&ticker, &QTimer::timeout, [&] {
        longest = std::max(longest, double(sinceTick.nsecsElapsed()) / 1e6);
        sinceTick.restart();
    });
    ticker.start();
    sinceTick.start();
    QCoro::waitFor(playlist.addFolder(QUrl::fromLocalFile(root)));
    std::printf("playlist entries after the scan: %lld\n",
                static_cast<long long>(playlist.items().size()));
    return longest;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const int files = argc > 1 ? std::atoi(argv[1]) : 20000;
    QTemporaryDir dir;
    std::printf("making %d files in %s ...\n", files, qPrintable(dir.path()));
    makeTree(dir.path(), files);

    QList<double> scanner, find;
    qsizetype found = 0;
    timeScanner(dir.path(), found); // warm the file system cache for both
    timeFind(dir.path());
    for (int i = 0; i < kRuns; ++i) {
        scanner << timeScanner(dir.path(), found);
        find << timeFind(dir.path());
    }
    const double scanMs = median(scanner);
    const double findMs = median(find);
    std::printf("folder scan (%lld videos): median %.1f ms\n", static_cast<long long>(found),
                scanMs);
    std::printf("find | sort -V:            median %.1f ms\n", findMs);
    std::printf("ratio scan / find:         %.2fx\n", scanMs / findMs);
    std::printf("longest GUI-thread stall while the playlist scanned: %.1f ms\n",
                longestStallWhileScanning(dir.path()));
    return 0;
}
