// What the user does to the open file, on real libmpv and generated media: picture adjustments
// and loop points, subtitles, screenshots and bookmarks, picture in picture, and what a file
// remembers from one session to the next.
#include "app/ControlStrip.h"
#include "app/Player.h"
#include "app/UserCommands.h"
#include "core/renderer/MPVVideoView.h"
#include "engine/FrameCapture.h"
#include "engine/PlaybackEngine.h"
#include "features/bookmark/BookmarkManager.h"
#include "features/filter/FilterManager.h"
#include "features/hdr/HDRManager.h"
#include "features/osd/OSDManager.h"
#include "features/pip/PiPManager.h"
#include "features/playlist/PlaybackHistoryManager.h"
#include "features/track/TrackManager.h"
#include "infrastructure/mpv/MPVProperties.h"
#include "model/MediaFiles.h"
#include "support/TestSupport.h"

#include "EngineProbe.h"
#include <filesystem>
#include <QCoroTask>
#include <QImageReader>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QSignalSpy>
#include <sys/stat.h>

using namespace velmar::test;
using Kind = PlayerState::Kind;

class FileActionsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        freshStart();
        failOnWarnings();
    }

    void adjustmentsAndLoopPoints()
    {
        TestPlayer player;
        PlaybackEngine& engine = player.engine();
        UserCommands& commands = player.commands();
        player.open(fixtureUrl(QStringLiteral("clip30.mp4")));
        FilterManager& filters = *engine.filters();
        filters.setFilter(QStringLiteral("contrast"), true, 2.0f);
        filters.setFilter(QStringLiteral("sharpen"), true, 0.75f);
        filters.setFilter(QStringLiteral("deband"), true, 64.0f);
        QTRY_COMPARE(mpv<double>(engine, MPVName::contrast), std::optional<double>(100));
        QTRY_COMPARE(mpv<qint64>(engine, MPVName::debandThreshold), std::optional<qint64>(64));
        // libmpv reports option values with its length quoting ("%4%0.75").
        QCOMPARE(mpv<QString>(engine, MPVName::videoFilters)
                     .value_or(QString())
                     .remove(QRegularExpression(QStringLiteral("%\\d+%"))),
                 QStringLiteral("unsharp=la=0.75"));
        filters.setFilter(QStringLiteral("contrast"), false, 2.0f); // off means neutral
        QTRY_COMPARE(mpv<double>(engine, MPVName::contrast), std::optional<double>(0));

        commands.setRotation(450);
        QCOMPARE(engine.videoRotation(), 90);
        QCOMPARE(player.osdText(), QStringLiteral("Rotation: 90\u00b0"));
        QTRY_COMPARE(mpv<qint64>(engine, MPVName::videoRotate), std::optional<qint64>(90));
        commands.setRotation(-90); // kept as asked; libmpv, which takes 0…359, gets 270
        QCOMPARE(engine.videoRotation(), -90);
        QTRY_COMPARE(mpv<qint64>(engine, MPVName::videoRotate), std::optional<qint64>(270));
        commands.rotate(false);
        QCOMPARE(engine.videoRotation(), 180);
        commands.setAudioDelay(7);
        QCOMPARE(player.osdText(), QStringLiteral("Audio delay: +5.00s"));
        commands.adjustAudioDelay(-5.25);
        QCOMPARE(player.osdText(), QStringLiteral("Audio delay: -0.25s"));
        commands.resetAudioDelay();
        QCOMPARE(player.osdText(), QStringLiteral("Audio delay: 0.0s"));
        QTRY_COMPARE(mpv<double>(engine, MPVName::audioDelay), std::optional<double>(0));

        engine.pause();
        commands.setLoopPointB(); // no A yet: nothing, silently
        QVERIFY(!player.osdText().startsWith(QStringLiteral("Loop")));
        seek(engine, 10);
        commands.setLoopPointA();
        QCOMPARE(player.osdText(), QStringLiteral("Loop A: 00:10  \u2014 \\ to clear"));
        seek(engine, 13);
        commands.setLoopPointB();
        QCOMPARE(player.osdText(), QStringLiteral("Loop A-B active  \u2014 \\ to clear"));
        seek(engine, 20);
        QTest::qWait(300); // paused beyond B: no jump until playing again
        QCOMPARE(engine.currentTime(), 20.0);
        engine.play();
        QTRY_VERIFY_WITH_TIMEOUT(engine.currentTime() < 13.0, 3000);
        QTest::qWait(3500); // and it keeps looping between A and B
        QVERIFY2(engine.currentTime() >= 9.9 && engine.currentTime() < 13.5,
                 qPrintable(QString::number(engine.currentTime())));
        player.open(fixtureUrl(QStringLiteral("clip10.mp4"))); // a new file clears the loop
        QCOMPARE(engine.abLoop()->pointA(), std::nullopt);
    }

    void subtitlesScreenshotsAndBookmarks()
    {
        QTemporaryDir dir;
        QFile srt(dir.filePath(QStringLiteral("extra.srt")));
        QVERIFY(srt.open(QIODevice::WriteOnly));
        srt.write("1\n00:00:00,000 --> 00:00:09,000\nExtra line\n");
        srt.close();

        TestPlayer player;
        PlaybackEngine& engine = player.engine();
        UserCommands& commands = player.commands();
        const QUrl clip = fixtureUrl(QStringLiteral("clip30.mp4"));
        player.open(clip);
        engine.pause();
        player.expectLibmpvErrors(); // the missing subtitle file
        commands.addSubtitles({QUrl::fromLocalFile(dir.filePath(QStringLiteral("missing.srt"))),
                               QUrl::fromLocalFile(srt.fileName())});
        QTRY_COMPARE(player.osdText(), QStringLiteral("Subtitle loaded: extra.srt"));
        QTRY_COMPARE_WITH_TIMEOUT(engine.tracks()->subtitleTracks().size(), 1, 5000);
        QVERIFY(engine.tracks()->subtitleTracks()[0].isExternal);

        QDir shots(FrameCapture::screenshotFolder());
        shots.removeRecursively(); // what other tests of this run saved
        commands.takeScreenshot();
        QTRY_COMPARE(player.osdText(), QStringLiteral("Screenshot saved"));
        const QStringList files = shots.entryList({QStringLiteral("VelmarPlayer_*.png")});
        QCOMPARE(files.size(), 1);
        QCOMPARE(QImageReader(shots.filePath(files[0])).size(), QSize(320, 180));
        QVERIFY(shots.removeRecursively());
        QFile blocker(shots.path()); // a folder that cannot exist: a plain failure
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        blocker.close();
        commands.takeScreenshot();
        QTRY_COMPARE(player.osdText(), QStringLiteral("Screenshot failed"));
        QFile::remove(shots.path());

        seek(engine, 10.0);
        const QStringList leftovers = QDir::temp().entryList({QStringLiteral("velmar_bm_*")});
        commands.addBookmark();
        QCOMPARE(player.osdText(), QStringLiteral("Bookmark added"));
        BookmarkManager& bookmarks = *engine.bookmarks();
        QTRY_VERIFY_WITH_TIMEOUT(bookmarks.bookmarks(clip).value(0).thumbnailData, 5000);
        const QImage picture =
            QImage::fromData(*bookmarks.bookmarks(clip)[0].thumbnailData, "JPEG");
        QCOMPARE(picture.size(), QSize(160, 90));
        QTRY_COMPARE(QDir::temp().entryList({QStringLiteral("velmar_bm_*")}), leftovers);
        seek(engine, 10.5);
        commands.addBookmark();
        QCOMPARE(player.osdText(), QStringLiteral("Bookmark already exists"));

        bookmarks.removeAllBookmarks(clip);
        bookmarks.add(clip, 10.3, QStringLiteral("near"));
        bookmarks.add(clip, 12.0, QStringLiteral("far"));
        seek(engine, 10.0);
        commands.seekToNextBookmark(); // 10.3 lies within half a second: the next one is 12
        QTRY_COMPARE(player.osdText(), QStringLiteral("\u25b8 far"));
        QCOMPARE(engine.currentTime(), 12.0);
        commands.seekToPreviousBookmark();
        QTRY_COMPARE(player.osdText(), QStringLiteral("\u25c2 near"));
        QCOMPARE(engine.currentTime(), 10.3);
    }

    void aScreenshotOfAFullHDFrameLeavesTheWindowResponsive()
    {
        TestPlayer player;
        player.open(fixtureUrl(QStringLiteral("full-hd.mp4")));
        player.engine().pause();
        const qint64 allowed = GuiHeartbeat::allowance(50);
        GuiHeartbeat heartbeat;
        player.commands().takeScreenshot();
        QTRY_COMPARE_WITH_TIMEOUT(player.osdText(), QStringLiteral("Screenshot saved"), 10000);
        QVERIFY2(heartbeat.longestStall() < allowed,
                 qPrintable(QStringLiteral("%1 ms").arg(heartbeat.longestStall())));
    }

    // Picture in picture's states and the floating window's place with plain items, then its
    // play/pause and control strip on a real player.
    void pictureInPictureStatesAndItsControlStrip()
    {
        QQmlEngine qml;
        QQmlComponent floating(&qml);
        floating.setData("import QtQuick\nWindow { Item { objectName: \"videoHost\" } }", QUrl());
        PiPManager pip;
        int toggles = 0;
        pip.onTogglePlayPause = [&] { ++toggles; };
        int returns = 0;
        connect(&pip, &PiPManager::floatingWindowChanged, this,
                [&](QQuickWindow* window) { returns += window ? 0 : 1; });
        QQuickItem holder;
        QQuickItem video;
        pip.setVideoView(&video);
        pip.enterPiP(); // not in a window: nothing to move
        QVERIFY(!pip.isPossible() && !pip.isActive());

        auto mainWindow = std::make_unique<QQuickWindow>();
        holder.setParentItem(mainWindow->contentItem());
        video.setParentItem(&holder); // no size
        QVERIFY(pip.isPossible());
        // Asked for while the interface that declares the floating window still loads: taken
        // back, nothing happens when it arrives; left standing, it enters then.
        pip.toggle();
        pip.toggle();
        pip.setWindowComponent(&floating);
        QVERIFY(!pip.isActive());
        pip.setWindowComponent(nullptr);
        pip.enterPiP();
        QVERIFY(!pip.isActive());
        pip.setWindowComponent(&floating);
        QVERIFY(pip.isActive());
        pip.enterPiP();
        QCOMPARE(pip.lockedAspectRatio(), std::nullopt);
        const QWindowList windows = QGuiApplication::topLevelWindows();
        QCOMPARE(std::count_if(windows.begin(), windows.end(),
                               [](QWindow* w) { return w->flags() & Qt::WindowStaysOnTopHint; }),
                 1);
        QCOMPARE(video.window(), pip.floatingWindow());
        // The first time: a quarter of the screen wide, in its bottom-right corner.
        const QRect screen = pip.floatingWindow()->screen()->availableGeometry();
        QRect frame = pip.floatingWindow()->geometry();
        QCOMPARE(frame.width(), screen.width() / 4);
        QVERIFY(screen.contains(frame));
        QVERIFY(frame.right() > screen.right() - 50 && frame.bottom() > screen.bottom() - 50);
        pip.actionPlay();
        pip.actionPause();
        pip.actionStop();
        QCOMPARE(toggles, 3);
        // Moved and resized, then closed with the key: the video comes back, once.
        pip.floatingWindow()->setGeometry(100, 120, 400, 225);
        pip.exitPiP();
        pip.exitPiP();
        QCOMPARE(returns, 1);
        QCOMPARE(video.parentItem(), &holder);

        // The next time it opens where it was left, in the proportions of the picture.
        video.setSize(QSizeF(640, 360));
        pip.enterPiP();
        QCOMPARE(pip.lockedAspectRatio(), QSizeF(640, 360));
        frame = pip.floatingWindow()->geometry();
        QCOMPARE(frame, QRect(100, 120, 400, 225));
        // With the main window gone, closing the floating one still returns the item to its
        // holder and forgets everything.
        mainWindow.reset();
        QPointer<QQuickWindow> window = pip.floatingWindow();
        window->close();
        QCOMPARE(returns, 2);
        QVERIFY(!pip.isActive() && !pip.floatingWindow());
        QCOMPARE(pip.lockedAspectRatio(), std::nullopt);
        QCOMPARE(video.parentItem(), &holder);
        QTRY_VERIFY(!window);

        TestPlayer player;
        PlaybackEngine& engine = player.engine();
        ControlStrip& strip = player.player().controlStrip();
        strip.syncState();
        QCOMPARE(strip.timeText(), QStringLiteral("00:00 / 00:00"));
        player.open(fixtureUrl(QStringLiteral("clip60.mp4")));
        // The floating window's buttons toggle playback, saying so as the keys do; picture in
        // picture knows whether it plays.
        PiPManager& realPip = *engine.pip();
        QVERIFY(realPip.playing());
        realPip.actionPause();
        QCOMPARE(engine.state().kind(), Kind::Paused);
        QCOMPARE(player.osdText(), QStringLiteral("Paused"));
        QVERIFY(!realPip.playing());
        realPip.actionPlay();
        QCOMPARE(engine.state().kind(), Kind::Playing);
        QCOMPARE(player.osdText(), QStringLiteral("Playing"));
        realPip.actionStop();
        QCOMPARE(engine.state().kind(), Kind::Paused);
        strip.seekSliderChanged(0.25);
        QTRY_VERIFY(qAbs(engine.currentTime() - 15.0) < 0.5);
        strip.syncState();
        QCOMPARE(strip.timeText(), QStringLiteral("00:15 / 01:00"));
        // Nothing to time (a picture): the slider stays where it was.
        player.open(fixtureUrl(QStringLiteral("still.png")));
        strip.syncState();
        QCOMPARE(strip.timeText(), QStringLiteral("00:00 / 00:00"));
        QCOMPARE(strip.sliderValue(), 0.25);
        // The play button does nothing while a file loads.
        QCoro::Task<> loading = engine.load(fixtureUrl(QStringLiteral("clip10.mp4")));
        const QString shown = player.osdText();
        realPip.actionPlay();
        QCOMPARE(engine.state().kind(), Kind::Loading);
        QCOMPARE(player.osdText(), shown);
        QCoro::waitFor(std::move(loading));
        QCOMPARE(engine.state().kind(), Kind::Playing);
    }

    // Leaving a file for another and quitting the player both keep its place and settings.
    void aFileIsResumedWithItsSettingsInTheNextSession()
    {
        const QUrl a = fixtureUrl(QStringLiteral("clip30.mp4"));
        const QUrl b = fixtureUrl(QStringLiteral("clip60.mp4"));
        const QUrl cutOff = fixtureUrl(QStringLiteral("cut-off.mp4"));
        double cutOffAt = 0;
        {
            TestPlayer player;
            player.expectLibmpvErrors(); // the damaged packets where the download broke off
            // A file that ends early keeps the place it reached.
            player.open(cutOff);
            seek(player.engine(), 15.0);
            QTRY_VERIFY_WITH_TIMEOUT(player.engine().isAtEnd(), 20000);
            cutOffAt = player.engine().currentTime();
            QVERIFY2(cutOffAt > 15.0 && cutOffAt < 20.0, qPrintable(QString::number(cutOffAt)));
            player.open(a);
            QCOMPARE(player.engine().history()->resumePosition(a), std::nullopt);
            seek(player.engine(), 12.0);
            player.commands().setRotation(90);
            player.commands().setAudioDelay(0.3);
            player.open(b);
            QVERIFY(qAbs(player.engine().history()->resumePosition(a).value_or(0) - 12.0) < 0.5);
            QCOMPARE(player.engine().videoRotation(), 0); // nothing stored: upright again
            QCOMPARE(player.engine().adjustments()->audioDelay(), 0.3); // the delay carries over
            seek(player.engine(), 40.0);
            player.commands().setRotation(270);
        } // quit while b plays
        TestPlayer player;
        player.expectLibmpvErrors();
        for (const auto& [url, position, rotation] :
             {std::tuple(a, 12.0, 90), {b, 40.0, 270}, {cutOff, cutOffAt, 0}}) {
            player.open(url);
            QCOMPARE(player.engine().state().kind(), Kind::Playing);
            QVERIFY(qAbs(player.engine().currentTime() - position) < 0.5);
            QCOMPARE(
                player.osdText(),
                QStringLiteral("Resumed at 00:%1").arg(int(position), 2, 10, QLatin1Char('0')));
            QCOMPARE(player.engine().videoRotation(), rotation);
            QTRY_COMPARE(mpv<qint64>(player.engine(), MPVName::videoRotate),
                         std::optional<qint64>(rotation));
            QTRY_VERIFY_WITH_TIMEOUT(
                qAbs(mpv<double>(player.engine(), MPVName::timePos).value_or(0) - position) < 1.0,
                3000);
        }
    }
};

VELMAR_TEST_MAIN(FileActionsTest)
#include "tst_fileactions.moc"
