// Thumbnail grabbing against the ffmpeg tool, on one 2-hour 480p file (made on the first run).
//
// Times 50 grabs at the same random times three ways: the one-shot velmar_extract_frame, one
// grabber session, and `ffmpeg -ss T -i FILE -frames:v 1 -vf scale=240:-2`; prints median and
// 90th percentile of each and their ratios to the tool. Then grabs the whole timeline (600
// buckets of 12 s) through one session, as the generator's walk does, and finally lets the
// generator itself walk it with its pacing.
//
// Usage: bench_thumbnails [MEDIA_DIR]   (run it niced on a shared machine)
#include "features/thumbnail/FFmpegFrameExtractor.h"
#include "features/thumbnail/ThumbnailGenerator.h"
#include "features/thumbnail/ThumbnailTimeline.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFileInfo>
#include <QProcess>
#include <QTimer>
#include <random>

namespace {

constexpr double kDuration = 7200;
constexpr int kGrabs = 50;
constexpr int kWidth = ThumbnailGenerator::kThumbnailWidth;

/// Splits a command line written out in full; only for arguments without spaces.
QStringList words(const char* text)
{
    return QProcess::splitCommand(QString::fromLatin1(text));
}

bool runFFmpeg(const QStringList& arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(QStringLiteral("ffmpeg"),
                  words("-nostdin -hide_banner -loglevel error -y") + arguments);
    return process.waitForFinished(-1) && process.exitStatus() == QProcess::NormalExit &&
           process.exitCode() == 0;
}

/// A 2-hour 854x480 H.264/AAC MP4 with a key frame every 2 s. Two minutes are encoded and then
/// repeated by stream copy: the pictures repeat, but index, key frames and packet layout are
/// those of a real 2-hour file, which is what opening, seeking and decoding cost depends on.
QString longFixture(const QString& directory)
{
    const QString path = directory + QStringLiteral("/long-480p.mp4");
    if (QFileInfo::exists(path))
        return path;
    QDir().mkpath(directory);
    // Made under other names and renamed at the end, so that an interrupted run leaves no
    // half-written file behind to be taken for the fixture next time.
    const QString part = directory + QStringLiteral("/part-480p.mp4");
    const QString unfinished = directory + QStringLiteral("/unfinished-long-480p.mp4");
    std::printf("Making %s (once)...\n", qPrintable(path));
    std::fflush(stdout);
    const bool made =
        runFFmpeg(words("-f lavfi -i testsrc2=size=854x480:rate=25:duration=120"
                        " -f lavfi -i sine=frequency=440:sample_rate=48000:duration=120"
                        " -c:v libx264 -preset veryfast -pix_fmt yuv420p"
                        " -g 50 -keyint_min 50 -sc_threshold 0 -c:a aac -b:a 96k")
                  << part) &&
        runFFmpeg(words("-stream_loop -1 -i")
                  << part << QStringLiteral("-t") << QString::number(kDuration) << words("-c copy")
                  << unfinished) &&
        QFile::rename(unfinished, path);
    QFile::remove(part);
    QFile::remove(unfinished);
    return made ? path : QString();
}

struct Summary
{
    double median = 0;
    double p90 = 0;
};

/// Median and 90th percentile (nearest rank) of durations in milliseconds.
Summary summarize(std::vector<double> milliseconds)
{
    std::sort(milliseconds.begin(), milliseconds.end());
    const auto rank = [&](double fraction) {
        const auto index = size_t(std::ceil(fraction * double(milliseconds.size()))) - 1;
        return milliseconds[std::min(index, milliseconds.size() - 1)];
    };
    const size_t n = milliseconds.size();
    const double median =
        n % 2 ? milliseconds[n / 2] : (milliseconds[n / 2 - 1] + milliseconds[n / 2]) / 2.0;
    return {median, rank(0.9)};
}

/// Times `grab` at each time; `grab` answers whether it produced a picture.
std::vector<double> timeEach(const std::vector<double>& times,
                             const std::function<bool(double)>& grab)
{
    std::vector<double> milliseconds;
    for (const double seconds : times) {
        QElapsedTimer clock;
        clock.start();
        if (!grab(seconds)) {
            std::fprintf(stderr, "grab at %.3f s failed\n", seconds);
            std::exit(1);
        }
        milliseconds.push_back(double(clock.nsecsElapsed()) / 1e6);
    }
    return milliseconds;
}

bool keep(VelmarFrame frame)
{
    const bool ok = frame.data && frame.width == kWidth;
    std::free(frame.data);
    return ok;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QString directory =
        argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral(VELMAR_BENCH_MEDIA_DIR);
    const QString path = longFixture(directory);
    if (path.isEmpty()) {
        std::fprintf(stderr, "could not make the 2-hour fixture with ffmpeg\n");
        return 1;
    }
    const QByteArray nativePath = path.toUtf8();

    std::mt19937_64 random(20261122);
    std::uniform_real_distribution<double> anywhere(0.0, kDuration);
    std::vector<double> times(kGrabs);
    for (double& seconds : times)
        seconds = std::round(anywhere(random) * 1000) / 1000;

    // Warm the page cache and the libraries so no method pays for coming first.
    keep(velmar_extract_frame(nativePath.constData(), kWidth, 1.0));

    const auto oneShot = timeEach(times, [&](double seconds) {
        return keep(velmar_extract_frame(nativePath.constData(), kWidth, seconds));
    });

    QElapsedTimer openClock;
    openClock.start();
    VelmarFrameGrabber* session = velmar_grabber_open(nativePath.constData(), 0);
    const double openMs = double(openClock.nsecsElapsed()) / 1e6;
    if (!session) {
        std::fprintf(stderr, "cannot open %s\n", nativePath.constData());
        return 1;
    }
    const auto sessionGrabs = timeEach(
        times, [&](double seconds) { return keep(velmar_grabber_grab(session, kWidth, seconds)); });

    const auto command = timeEach(times, [&](double seconds) {
        QProcess ffmpeg;
        ffmpeg.start(QStringLiteral("ffmpeg"),
                     words("-nostdin -loglevel error -ss")
                         << QString::number(seconds, 'f', 3) << QStringLiteral("-i") << path
                         << words("-frames:v 1 -vf scale=240:-2 -f rawvideo -pix_fmt rgba -"));
        ffmpeg.waitForFinished(-1);
        const QByteArray picture = ffmpeg.readAllStandardOutput();
        return ffmpeg.exitCode() == 0 && !picture.isEmpty() && picture.size() % (kWidth * 4) == 0;
    });

    const Summary tool = summarize(command);
    std::printf("\n%d grabs at random times in %s (240 px wide)\n", kGrabs, qPrintable(path));
    std::printf("%-24s %10s %10s %14s %12s\n", "", "median ms", "p90 ms", "median/tool",
                "p90/tool");
    const auto row = [&](const char* name, const Summary& s) {
        std::printf("%-24s %10.2f %10.2f %14.3f %12.3f\n", name, s.median, s.p90,
                    s.median / tool.median, s.p90 / tool.p90);
    };
    row("velmar_extract_frame", summarize(oneShot));
    row("grabber session", summarize(sessionGrabs));
    row("ffmpeg -ss T -i ...", tool);
    std::printf("session open: %.2f ms\n", openMs);
    const double sessionRatio = summarize(sessionGrabs).median / tool.median;
    std::printf("target session median <= 0.15x tool: %s (%.3f)\n",
                sessionRatio <= 0.15 ? "met" : "MISSED", sessionRatio);

    // The whole timeline, front to back through one session, as the walk grabs it.
    const QList<double> walk =
        velmar::thumbnails::walkTimes(kDuration, velmar::thumbnails::bucketSize(kDuration));
    const auto timeline =
        timeEach(std::vector<double>(walk.begin(), walk.end()), [&](double seconds) {
            return keep(velmar_grabber_grab(session, kWidth, seconds));
        });
    velmar_grabber_close(session);
    double timelineMs = openMs;
    for (const double ms : timeline)
        timelineMs += ms;
    std::printf("\ntimeline: %lld buckets, open + grabs = %.2f s of work (target < 10 s: %s)\n",
                static_cast<long long>(walk.size()), timelineMs / 1000,
                timelineMs < 10000 ? "met" : "MISSED");

    // The generator's own walk: thread pool, coroutines, images, and the pause between
    // pictures, which is taken out of the figure.
    ThumbnailGenerator generator;
    QEventLoop loop;
    QObject::connect(&generator, &ThumbnailGenerator::cacheChanged, &loop, [&] {
        if (generator.cachedCount() == walk.size())
            loop.quit();
    });
    QTimer::singleShot(std::chrono::minutes(5), &loop, [&] {
        std::fprintf(stderr, "the walk stopped at %d pictures\n", generator.cachedCount());
        std::exit(1);
    });
    QElapsedTimer walkClock;
    walkClock.start();
    generator.setup(QUrl::fromLocalFile(path), kDuration);
    loop.exec();
    const double wallSeconds = double(walkClock.nsecsElapsed()) / 1e9;
    const double pauses = double(walk.size() - 1) * 0.1;
    std::printf("generator walk: %lld pictures in %.2f s, %.2f s without its %lld pauses\n",
                static_cast<long long>(walk.size()), wallSeconds, wallSeconds - pauses,
                static_cast<long long>(walk.size() - 1));
    return 0;
}
