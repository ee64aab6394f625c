// The thumbnail generator on generated media: buckets, the background walk and its
// cancellation, answers from neighbours, one request per missing bucket, teardown with grabs in
// flight, the engine's call at load; and the preview bubble's layout.
#include "engine/PlaybackEngine.h"
#include "features/thumbnail/FFmpegFrameExtractor.h"
#include "features/thumbnail/FrameGrabberSession.h"
#include "features/thumbnail/ThumbnailGenerator.h"
#include "features/thumbnail/ThumbnailTimeline.h"
#include "support/TestSupport.h"
#include "ui/ThumbnailPreview.h"

#include <limits>
#include <QSignalSpy>

using namespace velmar::test;
namespace thumbnails = velmar::thumbnails;

namespace {

constexpr int kTimeoutMs = 20000;

/// The picture the grabber itself gives for a time, as the generator stores it.
QImage grabbed(const QString& file, double seconds)
{
    return imageFromFrame(velmar_extract_frame(fixturePath(file).toUtf8().constData(),
                                               ThumbnailGenerator::kThumbnailWidth, seconds));
}

bool sameImage(const QImage& a, const QImage& b)
{
    return !a.isNull() && a.cacheKey() == b.cacheKey();
}

/// The keys in the order the generator stored them.
class InsertionLog
{
public:
    explicit InsertionLog(ThumbnailGenerator& generator, int lastKey)
    {
        QObject::connect(&generator, &ThumbnailGenerator::cacheChanged, &m_context, [&, lastKey] {
            for (qint64 key = 0; key <= lastKey; ++key)
                if (!generator.cachedThumbnail(key).isNull() && !m_keys.contains(key))
                    m_keys << key;
        });
    }
    QList<qint64> keys() const { return m_keys; }

private:
    QObject m_context;
    QList<qint64> m_keys;
};

} // namespace

class ThumbnailsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        freshStart();
        failOnWarnings();
    }
    void cleanup() { finishBackgroundWork(); }

    void walkCoversTheTimelineOncePerBucket()
    {
        const QList<double> short5min = thumbnails::walkTimes(299, thumbnails::bucketSize(299));
        QCOMPARE(short5min.size(), 150);
        QCOMPARE(short5min.first(), 0.0);
        QCOMPARE(short5min.last(), 298.0);
        for (int i = 0; i < short5min.size(); ++i)
            QCOMPARE(thumbnails::bucketKey(short5min[i] + 1.9, 2.0), qint64(i)); // truncated

        QCOMPARE(thumbnails::walkTimes(300, thumbnails::bucketSize(300)).size(), 60);
        QCOMPARE(thumbnails::walkTimes(7200, 12).size(), 600);
        QCOMPARE(thumbnails::walkTimes(0.5, 2), QList<double>{0.0});
        // A bogus duration cannot make the walk endless.
        QCOMPARE(thumbnails::walkTimes(1e300, 12).size(), thumbnails::kMaxWalkLength);
        QCOMPARE(thumbnails::walkTimes(std::numeric_limits<double>::infinity(), 12).size(),
                 thumbnails::kMaxWalkLength);
    }

    void walkFillsEveryBucketFrontToBack()
    {
        ThumbnailGenerator generator;
        InsertionLog log(generator, 10);
        generator.setup(fixtureUrl(QStringLiteral("clip10.mp4")), 10.0);
        QCOMPARE(generator.bucketSize(), 2.0);

        QTRY_COMPARE_WITH_TIMEOUT(generator.cachedCount(), 5, kTimeoutMs);
        QCOMPARE(log.keys(), (QList<qint64>{0, 1, 2, 3, 4}));
        for (qint64 key = 0; key < 5; ++key) {
            const QImage image = generator.cachedThumbnail(key);
            QCOMPARE(image, grabbed(QStringLiteral("clip10.mp4"), double(key) * 2));
            QCOMPARE(image.size(), QSize(240, 136));
        }
        // Nothing more once the timeline is covered.
        QTest::qWait(500);
        QCOMPARE(generator.cachedCount(), 5);
        QCOMPARE(log.keys().size(), 5);
    }

    void newSetupStopsThePreviousWalkAndDropsItsRequests()
    {
        ThumbnailGenerator generator;
        generator.setup(fixtureUrl(QStringLiteral("clip30.mp4")), 30.0);
        QTRY_VERIFY_WITH_TIMEOUT(generator.cachedCount() >= 2, kTimeoutMs);
        generator.thumbnail(29.0); // a request still in flight when the file changes

        // odd.mkv: 6 s of 200x151 frames, so a picture of the old file would stand out.
        generator.setup(fixtureUrl(QStringLiteral("odd.mkv")), 6.0);
        QCOMPARE(generator.cachedCount(), 0);
        QVERIFY(generator.lastImage().isNull());
        QTRY_COMPARE_WITH_TIMEOUT(generator.cachedCount(), 3, kTimeoutMs);
        // Long enough for several more steps of the old walk, had it gone on.
        QTest::qWait(1000);
        QCOMPARE(generator.cachedCount(), 3);
        for (qint64 key = 0; key < 3; ++key)
            QCOMPARE(generator.cachedThumbnail(key).size(), QSize(200, 151));
    }

    void answersAtOnceFromTheBucketOrANeighbour()
    {
        ThumbnailGenerator generator;
        generator.setup(fixtureUrl(QStringLiteral("clip30.mp4")), 0); // no walk
        QCOMPARE(generator.bucketSize(), 2.0);

        // Nothing yet: no answer, but the buckets are asked for.
        QVERIFY(generator.thumbnail(4.5).isNull());
        QVERIFY(generator.thumbnail(8.5).isNull());
        QVERIFY(generator.thumbnail(16.5).isNull());
        QTRY_COMPARE_WITH_TIMEOUT(generator.cachedCount(), 3, kTimeoutMs);
        const QImage two = generator.cachedThumbnail(2);
        const QImage four = generator.cachedThumbnail(4);
        const QImage eight = generator.cachedThumbnail(8);
        QCOMPARE(two, grabbed(QStringLiteral("clip30.mp4"), 4.5));
        // No picture was shown, so none became the last one.
        QVERIFY(generator.lastImage().isNull());

        // Each answer comes at once, before any new grab can finish.
        QVERIFY(sameImage(generator.thumbnail(9.0), four));   // 4 itself
        QVERIFY(sameImage(generator.thumbnail(6.5), four));   // 3: 4 before 2
        QVERIFY(sameImage(generator.thumbnail(12.5), eight)); // 6: 8 before 4
        QVERIFY(sameImage(generator.thumbnail(20.0), eight)); // 10: 8
        QVERIFY(sameImage(generator.thumbnail(0.5), two));    // 0: 2
        QVERIFY(sameImage(generator.thumbnail(40.0), two));   // 20: none, the last picture
        QVERIFY(sameImage(generator.lastImage(), two));
    }

    void asksForAMissingBucketOnce()
    {
        ThumbnailGenerator generator;
        generator.setup(fixtureUrl(QStringLiteral("clip30.mp4")), 0);
        QSignalSpy stored(&generator, &ThumbnailGenerator::cacheChanged);
        QSignalSpy requested(&generator, &ThumbnailGenerator::thumbnailRequested);
        generator.thumbnail(12.9);
        generator.thumbnail(12.1); // the same bucket, its grab still in flight
        QTRY_COMPARE_WITH_TIMEOUT(generator.cachedCount(), 1, kTimeoutMs);
        const QImage six = generator.cachedThumbnail(6);
        QVERIFY(sameImage(generator.thumbnail(12.9), six));

        // 10.9 s is bucket 5: bucket 6 stands in while 5 is fetched, whichever way the pointer
        // moves meanwhile.
        QVERIFY(sameImage(generator.thumbnail(10.9), six));
        QVERIFY(sameImage(generator.thumbnail(10.1), six));
        QVERIFY(sameImage(generator.thumbnail(12.0), six));
        QVERIFY(sameImage(generator.thumbnail(11.5), six));
        QTRY_COMPARE_WITH_TIMEOUT(generator.cachedCount(), 2, kTimeoutMs);
        const QImage five = generator.cachedThumbnail(5);
        QVERIFY(!sameImage(five, six));
        QVERIFY(sameImage(generator.lastImage(), five));
        QVERIFY(sameImage(generator.thumbnail(11.0), five));

        finishBackgroundWork();
        QCOMPARE(stored.count(), 2);
        QCOMPARE(requested.count(), 2);
        QCOMPARE(requested.at(0).at(0).toLongLong(), 6);
        QCOMPARE(requested.at(1).at(0).toLongLong(), 5);
    }

    void aFailedGrabIsAskedForAgainLater()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("arriving.mp4"));
        QVERIFY(QFile(path).open(QIODevice::WriteOnly)); // empty for now

        ThumbnailGenerator generator;
        generator.setup(QUrl::fromLocalFile(path), 10.0);
        QVERIFY(generator.thumbnail(3.0).isNull());
        finishBackgroundWork();
        QCOMPARE(generator.cachedCount(), 0);
        QVERIFY(generator.lastImage().isNull());

        QVERIFY(
            QFile::copy(fixturePath(QStringLiteral("clip10.mp4")), path + QStringLiteral(".part")));
        QVERIFY(QFile::remove(path));
        QVERIFY(QFile::rename(path + QStringLiteral(".part"), path));
        generator.thumbnail(3.0);
        QTRY_COMPARE_WITH_TIMEOUT(generator.cachedCount(), 1, kTimeoutMs);
        QVERIFY(!generator.cachedThumbnail(1).isNull());
    }

    void onlyLocalVideoGetsPictures()
    {
        ThumbnailGenerator generator;
        generator.setup(fixtureUrl(QStringLiteral("audio-only.m4a")), 5.0);
        generator.thumbnail(1.0);
        generator.setup(QUrl(QStringLiteral("https://example.invalid/clip.mp4")), 60.0);
        generator.thumbnail(1.0);
        generator.setup(QUrl(), 60.0);
        generator.thumbnail(1.0);
        finishBackgroundWork();
        QCOMPARE(generator.cachedCount(), 0);
        QVERIFY(generator.lastImage().isNull());
    }

    void goingAwayWithGrabsInFlightIsSafe()
    {
        auto generator = std::make_unique<ThumbnailGenerator>();
        generator->setup(fixtureUrl(QStringLiteral("clip30.mp4")), 30.0);
        for (double seconds = 0; seconds < 30; seconds += 2.5)
            generator->thumbnail(seconds);
        generator.reset();
        finishBackgroundWork(); // the results come back to nobody
    }

    void theEngineSetsUpThumbnailsForEachFile()
    {
        TestPlayer player;
        PlaybackEngine& engine = player.engine();
        ThumbnailGenerator* generator = engine.thumbnails();
        QCOMPARE(engine.property("thumbnails").value<ThumbnailGenerator*>(), generator);

        // One picture per bucket of the duration libmpv found.
        auto buckets = [&] { return int(thumbnails::walkTimes(engine.duration(), 2).size()); };
        player.open(fixtureUrl(QStringLiteral("clip10.mp4")));
        QCOMPARE(generator->bucketSize(), 2.0);
        QTRY_COMPARE_WITH_TIMEOUT(generator->cachedCount(), buckets(), kTimeoutMs);
        QCOMPARE(generator->cachedThumbnail(0).size(), QSize(240, 136));
        // Times no seek bar can mean ask for nothing.
        QVERIFY(generator->thumbnail(qQNaN()).isNull());
        QVERIFY(generator->thumbnail(std::numeric_limits<double>::infinity()).isNull());
        QVERIFY(generator->thumbnail(1e300).isNull());

        player.open(fixtureUrl(QStringLiteral("odd.mkv")));
        QTRY_COMPARE_WITH_TIMEOUT(generator->cachedCount(), buckets(), kTimeoutMs);
        QCOMPARE(generator->cachedThumbnail(0).size(), QSize(200, 151));
        // A load right after another leaves walks and grabs in flight: nothing may break.
        player.open(fixtureUrl(QStringLiteral("clip30.mp4")));
        generator->thumbnail(17.0);
    }

    void previewHeightFollowsThePicture()
    {
        ThumbnailPreview preview;
        preview.previewWidth = 240;
        preview.minHeight = 90;
        preview.maxHeight = 200;
        QVERIFY(preview.showsPlaceholder());
        QCOMPARE(preview.size(), QSizeF(240, ThumbnailPreview::kPlaceholderHeight));

        preview.image = QImage(1920, 1080, QImage::Format_RGBA8888);
        QVERIFY(!preview.showsPlaceholder());
        QCOMPARE(preview.size(), QSizeF(240, 135));
        preview.image = QImage(1920, 400, QImage::Format_RGBA8888); // 50 high: at least 90
        QCOMPARE(preview.size(), QSizeF(240, 90));
        preview.image = QImage(1080, 1920, QImage::Format_RGBA8888); // portrait: at most 200
        QCOMPARE(preview.size(), QSizeF(240, 200));
        preview.minHeight = 300; // contradictory limits: the maximum wins
        QCOMPARE(preview.size(), QSizeF(240, 200));
    }
};

VELMAR_TEST_MAIN(ThumbnailsTest)
#include "tst_thumbnails.moc"
