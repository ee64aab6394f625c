// Engine features on real libmpv and the fixtures: the A-B loop, picture filters read back from
// libmpv, per-file restore, HDR detection, track cycling, external subtitles, screenshots and
// bookmarks with their thumbnails.
#include "core/engine/MPVDecoder.h"
#include "core/engine/MPVProperties.h"
#include "core/engine/PlaybackEngine.h"
#include "core/model/TimeFormat.h"
#include "core/renderer/ScreenshotCapture.h"
#include "features/bookmark/BookmarkManager.h"
#include "features/filter/FilterManager.h"
#include "features/hdr/HDRManager.h"
#include "features/osd/OSDManager.h"
#include "features/playback/ABLoopManager.h"
#include "features/track/TrackManager.h"
#include "support/TestSupport.h"

#include <QCoroTask>
#include <QImageReader>
#include <QRegularExpression>

using namespace velmar::test;
using Kind = PlayerState::Kind;

namespace {

struct Player
{
    std::unique_ptr<PlaybackEngine> engine = makeSilentEngine();
    std::unique_ptr<PlayerWindow> window = std::make_unique<PlayerWindow>(engine.get());

    ~Player()
    {
        window.reset();
        engine.reset();
    }

    bool open(const QUrl& url)
    {
        if (!engine->decoder()->renderContext() && !window->showAndWaitForRenderContext())
            return false;
        loadAndWait(*engine, url);
        return engine->state().kind() == Kind::Playing;
    }
    void seek(double seconds) { QCoro::waitFor(engine->seek(seconds)); }
    mpv_handle* mpv() const { return engine->decoder()->handle(); }
    QString osdText() const
    {
        const auto message = engine->osd()->currentMessage();
        return message ? message->text() : QString();
    }
};

} // namespace

class FeaturesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void loopPointsAndTheirMessages()
    {
        ABLoopManager loop;
        loop.setPointA(10);
        loop.setPointB(20);
        QCOMPARE(loop.shouldLoop(19.99), std::nullopt);
        QCOMPARE(loop.shouldLoop(20.0), std::optional<double>(10));
        QCOMPARE(loop.shouldLoop(25.0), std::optional<double>(10));

        Player player;
        QVERIFY(player.open(fixtureUrl(QStringLiteral("clip30.mp4"))));
        player.engine->pause();
        player.engine->setLoopPointB(); // no A yet: nothing, silently
        QCOMPARE(player.engine->abLoop()->pointB(), std::nullopt);
        QVERIFY(player.osdText().isEmpty() || !player.osdText().startsWith(QStringLiteral("Loop")));

        player.seek(10);
        player.engine->setLoopPointA();
        QCOMPARE(player.osdText(), QStringLiteral("Loop A: 00:10  \u2014 \\ to clear"));
        player.seek(6);
        player.engine->setLoopPointB(); // before A: refused
        QCOMPARE(player.engine->abLoop()->pointB(), std::nullopt);
        player.seek(13);
        player.engine->setLoopPointB();
        QCOMPARE(player.engine->abLoop()->pointB(), std::optional<double>(13));
        QCOMPARE(player.osdText(), QStringLiteral("Loop A-B active  \u2014 \\ to clear"));

        // Paused beyond B: no jump until playing again.
        player.seek(20);
        QTest::qWait(300);
        QCOMPARE(player.engine->currentTime(), 20.0);
        player.engine->play();
        QTRY_VERIFY_WITH_TIMEOUT(player.engine->currentTime() < 13.0, 3000);
        // And it keeps looping between A and B.
        QTest::qWait(4000);
        QVERIFY2(player.engine->currentTime() >= 9.9 && player.engine->currentTime() < 13.5,
                 qPrintable(QString::number(player.engine->currentTime())));

        // Setting A after B drops B; a new file clears the loop.
        player.engine->pause();
        player.seek(15);
        player.engine->setLoopPointA();
        QCOMPARE(player.engine->abLoop()->pointB(), std::nullopt);
        QVERIFY(player.open(fixtureUrl(QStringLiteral("clip10.mp4"))));
        QCOMPARE(player.engine->abLoop()->pointA(), std::nullopt);
    }

    void filtersReachLibmpvAndComeBackPerFile()
    {
        QCOMPARE(velmar::shortestFloatText(0.5f), QStringLiteral("0.5"));
        QCOMPARE(velmar::shortestFloatText(1.0f), QStringLiteral("1.0"));
        QCOMPARE(velmar::shortestFloatText(0.75f), QStringLiteral("0.75"));
        QCOMPARE(velmar::shortestFloatText(0.1f), QStringLiteral("0.1"));

        const QUrl clip = fixtureUrl(QStringLiteral("clip10.mp4"));
        Player player;
        QVERIFY(player.open(clip));
        FilterManager& filters = *player.engine->filters();
        auto property = [&](const char* name) {
            return MPVProperty::readDouble(player.mpv(), name);
        };

        filters.setFilter(QStringLiteral("contrast"), true, 2.0f);
        filters.setFilter(QStringLiteral("brightness"), true, 0.25f);
        filters.setFilter(QStringLiteral("sharpen"), true, 0.75f);
        filters.setFilter(QStringLiteral("deband"), true, 64.0f);
        player.engine->syncFiltersToMPV();
        QCOMPARE(property("contrast"), std::optional<double>(100));
        QCOMPARE(property("brightness"), std::optional<double>(25));
        // libmpv reports option values with its length quoting ("%4%0.75").
        QCOMPARE(MPVProperty::readString(player.mpv(), "vf")
                     .value_or(QString())
                     .remove(QRegularExpression(QStringLiteral("%\\d+%"))),
                 QStringLiteral("unsharp=la=0.75"));
        QCOMPARE(MPVProperty::readFlag(player.mpv(), "deband"), std::optional<bool>(true));
        QCOMPARE(MPVProperty::readInt64(player.mpv(), "deband-threshold"),
                 std::optional<qint64>(64));

        // Switched off, a filter goes back to neutral; deband leaves its threshold alone.
        filters.setFilter(QStringLiteral("contrast"), false, 2.0f);
        filters.setFilter(QStringLiteral("sharpen"), true, 0.0f);
        filters.setFilter(QStringLiteral("deband"), false, 10.0f);
        player.engine->syncFiltersToMPV();
        QCOMPARE(property("contrast"), std::optional<double>(0));
        QCOMPARE(MPVProperty::readString(player.mpv(), "vf").value_or(QStringLiteral("?")),
                 QString());
        QCOMPARE(MPVProperty::readFlag(player.mpv(), "deband"), std::optional<bool>(false));
        QCOMPARE(MPVProperty::readInt64(player.mpv(), "deband-threshold"),
                 std::optional<qint64>(64));

        // Another file starts neutral; coming back restores this file's adjustments.
        filters.setFilter(QStringLiteral("saturation"), true, 1.5f);
        player.engine->syncFiltersToMPV();
        QVERIFY(player.open(fixtureUrl(QStringLiteral("tracks.mkv"))));
        QCOMPARE(property("saturation"), std::optional<double>(0));
        QCOMPARE(property("brightness"), std::optional<double>(0));
        QVERIFY(player.open(clip));
        QCOMPARE(property("saturation"), std::optional<double>(50));
        QCOMPARE(property("brightness"), std::optional<double>(25));
        QVERIFY(filters.filters()[2].isEnabled);
        filters.resetAll();
        player.engine->syncFiltersToMPV();
    }

    void hdrFlagsFollowTheFile()
    {
        Player player;
        QVERIFY(player.open(fixtureUrl(QStringLiteral("pq.mkv"))));
        const HDRManager& hdr = *player.engine->hdr();
        QTRY_VERIFY_WITH_TIMEOUT(hdr.isHDRContent(), 5000);
        QCOMPARE(hdr.transferFunction(), QStringLiteral("pq"));
        QCOMPARE(hdr.primaries(), QStringLiteral("bt.2020"));

        QVERIFY(player.open(fixtureUrl(QStringLiteral("clip10.mp4"))));
        QTRY_VERIFY_WITH_TIMEOUT(hdr.transferFunction() != QStringLiteral("pq"), 5000);
        QVERIFY(!hdr.isHDRContent());
    }

    void tracksCycleWithTheirLabels()
    {
        Player player;
        QVERIFY(player.open(fixtureUrl(QStringLiteral("clip10.mp4"))));
        QTRY_COMPARE(player.engine->tracks()->audioTracks().size(), 1);
        player.engine->cycleAudioTrack();
        QCOMPARE(player.osdText(), QStringLiteral("No other audio tracks"));
        player.engine->cycleSubtitleTrack();
        QCOMPARE(player.osdText(), QStringLiteral("No subtitle tracks"));

        QVERIFY(player.open(fixtureUrl(QStringLiteral("tracks.mkv"))));
        TrackManager& tracks = *player.engine->tracks();
        QTRY_COMPARE_WITH_TIMEOUT(tracks.currentAudioID(), 1, 5000);
        player.engine->cycleAudioTrack();
        QCOMPARE(player.osdText(), QStringLiteral("Audio: Commentary \u2014 JPN (2/2)"));
        QTRY_COMPARE(tracks.currentAudioID(), 2);
        player.engine->cycleAudioTrack();
        QCOMPARE(player.osdText(), QStringLiteral("Audio: English Stereo \u2014 ENG (1/2)"));
        QTRY_COMPARE(tracks.currentAudioID(), 1);

        // Subtitles cycle through the track and "off".
        player.engine->setSubtitleTrack(0);
        tracks.setCurrentSubtitleID(0);
        player.engine->cycleSubtitleTrack();
        QCOMPARE(player.osdText(), QStringLiteral("Subtitle: ENG (1/1)"));
        QTRY_COMPARE(MPVProperty::readInt64(player.mpv(), "sid"), std::optional<qint64>(1));
        QTRY_COMPARE(tracks.currentSubtitleID(), 1);
        player.engine->cycleSubtitleTrack();
        QCOMPARE(player.osdText(), QStringLiteral("Subtitle: Off"));
        QCOMPARE(tracks.currentSubtitleID(), 0);
        QCOMPARE(MPVProperty::readString(player.mpv(), "sid"),
                 std::optional<QString>(QStringLiteral("no")));
    }

    void externalSubtitlesLoadOrFailClearly()
    {
        QTemporaryDir dir;
        const QString srt = dir.filePath(QStringLiteral("extra.srt"));
        QFile file(srt);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("1\n00:00:00,000 --> 00:00:09,000\nExtra line\n");
        file.close();

        Player player;
        QVERIFY(player.open(fixtureUrl(QStringLiteral("clip10.mp4"))));
        player.engine->addExternalSubtitle(
            QUrl::fromLocalFile(dir.filePath(QStringLiteral("missing.srt"))));
        QCOMPARE(player.osdText(), QStringLiteral("Could not load subtitle: missing.srt"));
        QCOMPARE(player.engine->state().kind(), Kind::Playing);

        player.engine->addExternalSubtitle(QUrl::fromLocalFile(srt));
        QCOMPARE(player.osdText(), QStringLiteral("Subtitle loaded: extra.srt"));
        const TrackManager& tracks = *player.engine->tracks();
        QTRY_COMPARE_WITH_TIMEOUT(tracks.subtitleTracks().size(), 1, 5000);
        QVERIFY(tracks.subtitleTracks()[0].isExternal);
        QTRY_COMPARE(tracks.currentSubtitleID(), tracks.subtitleTracks()[0].id);
    }

    void screenshotsArePngsOfTheFrame()
    {
        const QDateTime when(QDate(2026, 11, 22), QTime(12, 30, 5), Qt::UTC);
        QCOMPARE(ScreenshotCapture::screenshotFileName(when),
                 QStringLiteral("VelmarPlayer_2026-11-22T12-30-05Z.png"));

        Player player;
        QVERIFY(player.open(fixtureUrl(QStringLiteral("clip10.mp4"))));
        player.engine->pause();
        QDir folder(ScreenshotCapture::screenshotFolder());
        player.engine->takeScreenshot();
        QCOMPARE(player.osdText(), QStringLiteral("Screenshot saved"));
        const QStringList shots = folder.entryList({QStringLiteral("VelmarPlayer_*.png")});
        QCOMPARE(shots.size(), 1);
        QImageReader reader(folder.filePath(shots[0]));
        QCOMPARE(reader.format(), QByteArray("png"));
        QCOMPARE(reader.size(), QSize(640, 360));
        QVERIFY(!reader.read().isNull());
        QVERIFY(QFile::remove(folder.filePath(shots[0])));

        // A screenshot folder that cannot exist: a plain failure, playback untouched.
        QVERIFY(folder.removeRecursively());
        QFile blocker(folder.path());
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        blocker.close();
        player.engine->takeScreenshot();
        QCOMPARE(player.osdText(), QStringLiteral("Screenshot failed"));
        QCOMPARE(player.engine->state().kind(), Kind::Paused);
        QFile::remove(folder.path());
    }

    void bookmarksCarryThumbnailsAndJump()
    {
        const QUrl clip = fixtureUrl(QStringLiteral("clip30.mp4"));
        Player player;
        QVERIFY(player.open(clip));
        player.engine->pause();
        player.seek(10.0);
        const QStringList leftoversBefore = QDir::temp().entryList({QStringLiteral("velmar_bm_*")});

        player.engine->addBookmark(QStringLiteral("Ten"));
        QCOMPARE(player.osdText(), QStringLiteral("Bookmark added"));
        BookmarkManager& bookmarks = *player.engine->bookmarks();
        QTRY_VERIFY_WITH_TIMEOUT(bookmarks.bookmarks(clip).value(0).thumbnailData.has_value(),
                                 5000);
        const QByteArray jpeg = *bookmarks.bookmarks(clip)[0].thumbnailData;
        const QImage thumbnail = QImage::fromData(jpeg, "JPEG");
        QCOMPARE(thumbnail.size(), QSize(160, 90));
        QVERIFY(jpeg.startsWith("\xff\xd8"));
        QTRY_COMPARE(QDir::temp().entryList({QStringLiteral("velmar_bm_*")}), leftoversBefore);

        player.seek(10.5);
        player.engine->addBookmark();
        QCOMPARE(player.osdText(), QStringLiteral("Bookmark already exists"));

        bookmarks.removeAllBookmarks(clip);
        bookmarks.add(clip, 3.0, QStringLiteral("early"));
        bookmarks.add(clip, 10.3, QStringLiteral("near"));
        bookmarks.add(clip, 12.0, QStringLiteral("far"));
        player.seek(10.0);
        // 10.3 lies within half a second of the position: the next one is 12.
        QCoro::waitFor(player.engine->seekToNextBookmark());
        QCOMPARE(player.engine->currentTime(), 12.0);
        QCOMPARE(player.osdText(), QStringLiteral("\u25b8 far"));
        QCoro::waitFor(player.engine->seekToPreviousBookmark());
        QCOMPARE(player.engine->currentTime(), 10.3);
        QCOMPARE(player.osdText(), QStringLiteral("\u25c2 near"));
        QCoro::waitFor(player.engine->seekToPreviousBookmark());
        QCOMPARE(player.engine->currentTime(), 3.0);
        QCoro::waitFor(player.engine->seekToPreviousBookmark()); // nothing before: stays
        QCOMPARE(player.engine->currentTime(), 3.0);
        bookmarks.removeAllBookmarks(clip);
    }
};

VELMAR_TEST_MAIN(FeaturesTest)
#include "tst_features.moc"
