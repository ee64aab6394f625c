// The C frame grabber on generated media: picture sizes, pixel layout and fidelity against the
// ffmpeg tool, broken and hostile input, sessions, and grabs from several threads at once.
#include "features/thumbnail/FFmpegFrameExtractor.h"
#include "support/TestSupport.h"

#include <cmath>
#include <cstdlib>
#include <limits>
#include <sys/stat.h>
#include <thread>

using namespace velmar::test;

namespace {

/// A grabbed frame copied out of its malloc'd buffer, which is freed at once.
struct Picture
{
    QByteArray rgba;
    int width = 0;
    int height = 0;

    bool isNull() const { return rgba.isNull(); }
};

Picture adopt(VelmarFrame frame)
{
    Picture picture;
    picture.width = frame.width;
    picture.height = frame.height;
    if (frame.data)
        picture.rgba = QByteArray(reinterpret_cast<const char*>(frame.data),
                                  qsizetype(frame.width) * frame.height * 4);
    std::free(frame.data);
    return picture;
}

Picture extract(const QString& path, int maxWidth, double seconds)
{
    return adopt(velmar_extract_frame(path.toUtf8().constData(), maxWidth, seconds));
}

struct SessionCloser
{
    void operator()(VelmarFrameGrabber* grabber) const { velmar_grabber_close(grabber); }
};
using Session = std::unique_ptr<VelmarFrameGrabber, SessionCloser>;

Session openSession(const QString& path, int timeoutMs = 0)
{
    return Session(velmar_grabber_open(path.toUtf8().constData(), timeoutMs));
}

/// Peak signal-to-noise ratio over the colour channels, in dB.
double psnr(const QByteArray& a, const QByteArray& b)
{
    double squares = 0;
    qsizetype samples = 0;
    for (qsizetype i = 0; i < a.size(); ++i) {
        if (i % 4 == 3)
            continue; // alpha
        const double difference = double(uchar(a[i])) - double(uchar(b[i]));
        squares += difference * difference;
        ++samples;
    }
    const double mse = squares / double(samples);
    return mse == 0 ? std::numeric_limits<double>::infinity()
                    : 10.0 * std::log10(255.0 * 255.0 / mse);
}

} // namespace

class GrabberTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { failOnWarnings(); }

    void scalesToTheWidthLimit_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<int>("maxWidth");
        QTest::addColumn<QSize>("size");
        QTest::newRow("1080p, odd quotient rounds up") << "full-hd.mp4" << 240 << QSize(240, 136);
        QTest::newRow("1920x800, even quotient stays") << "wide.mp4" << 240 << QSize(240, 100);
        QTest::newRow("360p") << "clip10.mp4" << 240 << QSize(240, 136);
        QTest::newRow("narrower keeps its odd height") << "odd.mkv" << 240 << QSize(200, 151);
        QTest::newRow("exactly the limit") << "full-hd.mp4" << 1920 << QSize(1920, 1080);
        QTest::newRow("no limit") << "clip10.mp4" << 0 << QSize(640, 360);
        QTest::newRow("negative is no limit") << "odd.mkv" << -3 << QSize(200, 151);
        QTest::newRow("still image") << "still.png" << 240 << QSize(240, 180);
    }

    void scalesToTheWidthLimit()
    {
        QFETCH(QString, file);
        QFETCH(int, maxWidth);
        QFETCH(QSize, size);
        const Picture picture = extract(fixturePath(file), maxWidth, 0.5);
        QVERIFY(!picture.isNull());
        QCOMPARE(QSize(picture.width, picture.height), size);
        QCOMPARE(picture.rgba.size(), qsizetype(size.width()) * size.height() * 4);
        // Opaque video, so every fourth byte is alpha 255 if the rows are packed RGBA.
        for (qsizetype i = 3; i < picture.rgba.size(); i += 4)
            QCOMPARE(uchar(picture.rgba[i]), uchar(255));
    }

    void matchesTheReferenceToolOnAKeyFrame()
    {
        QFile file(fixturePath(QStringLiteral("clip10-3s-240.rgba")));
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray reference = file.readAll();

        const Picture picture = extract(fixturePath(QStringLiteral("clip10.mp4")), 240, 3.0);
        QCOMPARE(picture.rgba.size(), reference.size());
        const double db = psnr(picture.rgba, reference);
        qInfo("PSNR against ffmpeg -ss 3 -vf scale=240:-2: %.2f dB", db);
        // Bilinear against the tool's bicubic scaling: close, but not bit-identical.
        QVERIFY2(db > 35.0, qPrintable(QStringLiteral("PSNR %1 dB").arg(db)));

        // The frame one second on is a different picture, which the measure must tell apart.
        const Picture later = extract(fixturePath(QStringLiteral("clip10.mp4")), 240, 4.0);
        QVERIFY(psnr(later.rgba, reference) < db - 10.0);
    }

    void grabsTheKeyFrameAtOrBeforeTheTime()
    {
        // clip10 has a key frame every second: 3.0 and 3.9 give the 3 s key frame, 4.0 the next.
        const QString path = fixturePath(QStringLiteral("clip10.mp4"));
        const Picture atKey = extract(path, 240, 3.0);
        QCOMPARE(extract(path, 240, 3.9).rgba, atKey.rgba);
        QVERIFY(extract(path, 240, 4.0).rgba != atKey.rgba);

        // Counted from the file's first time stamp, not from zero.
        QCOMPARE(extract(fixturePath(QStringLiteral("late-start.mkv")), 240, 3.0).rgba, atKey.rgba);
    }

    void unusableInputGivesNoPicture_data()
    {
        QTest::addColumn<QString>("path");
        QTest::newRow("zero bytes") << fixturePath(QStringLiteral("empty.mp4"));
        QTest::newRow("truncated") << fixturePath(QStringLiteral("truncated.mp4"));
        QTest::newRow("no video stream") << fixturePath(QStringLiteral("audio-only.m4a"));
        QTest::newRow("missing") << fixturePath(QStringLiteral("no-such-file.mp4"));
        QTest::newRow("directory") << fixturePath(QString());
        QTest::newRow("empty path") << QString();
    }

    void unusableInputGivesNoPicture()
    {
        QFETCH(QString, path);
        const Picture picture = extract(path, 240, 1.0);
        QVERIFY(picture.isNull());
        QCOMPARE(picture.width, 0);
        QCOMPARE(picture.height, 0);
        QVERIFY(!openSession(path));
        QVERIFY(adopt(velmar_grabber_grab(nullptr, 240, 1.0)).isNull());
        QVERIFY(adopt(velmar_extract_frame(nullptr, 240, 1.0)).isNull());
    }

    void pipesAreNeverRead()
    {
        // A pipe nobody writes to would block the open forever.
        QTemporaryDir dir;
        const QString fifo = dir.filePath(QStringLiteral("stream.mp4"));
        QCOMPARE(mkfifo(fifo.toUtf8().constData(), 0600), 0);
        QVERIFY(extract(fifo, 240, 0).isNull());
    }

    void aReadThatNeverEndsRunsIntoTheDeadline()
    {
        // A real Matroska start followed by a terabyte of nothing (a sparse file): the demuxer
        // scans for the next cluster through all of it unless the deadline stops it.
        QTemporaryDir dir;
        QFile source(fixturePath(QStringLiteral("odd.mkv")));
        QVERIFY(source.open(QIODevice::ReadOnly));
        QFile hostile(dir.filePath(QStringLiteral("endless.mkv")));
        QVERIFY(hostile.open(QIODevice::WriteOnly));
        hostile.write(source.read(120000));
        QVERIFY(hostile.resize(qint64(1) << 40));
        hostile.close();

        // The open stops at its deadline too, with enough of the header to go on.
        Session session = openSession(hostile.fileName(), 300);
        QVERIFY(session);
        QVERIFY(adopt(velmar_grabber_grab(session.get(), 240, 100.0)).isNull());
    }

    void oddTimesStillGiveAPicture_data()
    {
        QTest::addColumn<double>("seconds");
        QTest::newRow("negative") << -5.0;
        QTest::newRow("past the end") << 1000.0;
        QTest::newRow("huge") << 1e300;
        QTest::newRow("infinite") << std::numeric_limits<double>::infinity();
        QTest::newRow("not a number") << std::numeric_limits<double>::quiet_NaN();
    }

    void oddTimesStillGiveAPicture()
    {
        QFETCH(double, seconds);
        const Picture picture = extract(fixturePath(QStringLiteral("clip10.mp4")), 240, seconds);
        QCOMPARE(QSize(picture.width, picture.height), QSize(240, 136));
    }

    void aSessionGrabsLikeSeparateCalls()
    {
        // Out of order and repeated, so each grab must start clean from its own seek.
        const QString path = fixturePath(QStringLiteral("clip30.mp4"));
        Session session = openSession(path);
        QVERIFY(session);
        for (const double seconds : {20.0, 3.5, 3.5, 29.0, 0.0, 12.2, 7.0}) {
            const Picture fromSession = adopt(velmar_grabber_grab(session.get(), 240, seconds));
            QVERIFY(!fromSession.isNull());
            QCOMPARE(fromSession.rgba, extract(path, 240, seconds).rgba);
        }
        // Another width through the same session.
        QCOMPARE(adopt(velmar_grabber_grab(session.get(), 0, 5.0)).width, 320);
    }

    void severalThreadsGrabFromOneFile()
    {
        const QString path = fixturePath(QStringLiteral("clip30.mp4"));
        const QList<double> times = {1.0, 4.0, 9.0, 13.0, 17.0, 22.0, 26.0, 29.0};
        QList<QByteArray> expected;
        for (const double seconds : times)
            expected << extract(path, 240, seconds).rgba;

        constexpr int kThreads = 6;
        constexpr int kRounds = 3;
        std::vector<QList<QByteArray>> results(kThreads);
        std::vector<std::thread> threads;
        for (int t = 0; t < kThreads; ++t) {
            threads.emplace_back([&, t] {
                // Half the threads use the one-shot call, half keep a session each.
                Session session = t % 2 ? openSession(path) : nullptr;
                for (int round = 0; round < kRounds; ++round)
                    for (const double seconds : times)
                        results[t]
                            << adopt(session ? velmar_grabber_grab(session.get(), 240, seconds)
                                             : velmar_extract_frame(path.toUtf8().constData(), 240,
                                                                    seconds))
                                   .rgba;
            });
        }
        for (auto& thread : threads)
            thread.join();

        for (int t = 0; t < kThreads; ++t)
            for (int i = 0; i < results[t].size(); ++i)
                QVERIFY2(results[t][i] == expected[i % times.size()],
                         qPrintable(QStringLiteral("thread %1, grab %2").arg(t).arg(i)));
    }
};

VELMAR_TEST_MAIN(GrabberTest)
#include "tst_grabber.moc"
