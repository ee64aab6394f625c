// The playback engine on real libmpv and generated media: the state machine, seeks, scrubs and
// frame steps, sound and speed, images and broken files, tracks and media information.
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
#include "features/playlist/PlaylistManager.h"
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

class EngineTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        freshStart();
        failOnWarnings();
    }

    void playsPausesAndStopsAtTheEnd()
    {
        TestPlayer player;
        PlaybackEngine& engine = player.engine();
        QList<Kind> states;
        connect(&engine, &PlaybackEngine::stateChanged, this,
                [&] { states << engine.state().kind(); });

        player.open(fixtureUrl(QStringLiteral("clip10.mp4")));
        QCOMPARE(states, (QList<Kind>{Kind::Loading, Kind::Paused, Kind::Playing}));
        QCOMPARE(engine.mediaTitle(), QStringLiteral("clip10"));
        QVERIFY(qAbs(engine.duration() - 10.0) < 0.2);
        QTRY_VERIFY_WITH_TIMEOUT(engine.currentTime() > 0.3, 5000); // the timer follows libmpv

        engine.pause();
        QTRY_COMPARE(mpv<bool>(engine, MPVName::pause), std::optional<bool>(true));
        const double pausedAt = engine.currentTime();
        QTest::qWait(300); // paused: the position stays put
        QCOMPARE(engine.currentTime(), pausedAt);
        engine.play();
        engine.play(); // already playing: nothing happens
        QCOMPARE(engine.state().kind(), Kind::Playing);

        seek(engine, 9.5);
        QTRY_VERIFY_WITH_TIMEOUT(engine.isAtEnd(), 30000);
        QCOMPARE(engine.state().kind(), Kind::Paused);
        QCOMPARE(engine.progress(), 1.0);
        engine.play(); // after the end: from the start
        QVERIFY(!engine.isAtEnd());
        QTRY_VERIFY_WITH_TIMEOUT(engine.currentTime() > 0.2, 5000);
        QVERIFY(engine.currentTime() < 3.0);
    }

    void operationsNeedMedia()
    {
        TestPlayer player;
        PlaybackEngine& engine = player.engine();
        engine.play();
        engine.pause();
        player.commands().togglePlayPause();
        player.commands().stepFrame(true);
        player.commands().seekBy(5);
        player.commands().addBookmark();
        engine.scrubBegan();
        engine.scrub(4);
        seek(engine, 3);
        QCOMPARE(engine.state().kind(), Kind::Idle);
        QCOMPARE(engine.currentTime(), 0.0);
        QCOMPARE(engine.progress(), 0.0);
        QCOMPARE(player.osdText(), QString());
    }

    void seeksScrubsAndFrameSteps()
    {
        TestPlayer player;
        PlaybackEngine& engine = player.engine();
        player.open(fixtureUrl(QStringLiteral("clip30.mp4")));

        // A drag holds the picture (the state stays "playing") and lets it run on at the end.
        QSignalSpy refresh(&engine, &PlaybackEngine::needsFrameRefreshChanged);
        engine.scrubBegan();
        QCOMPARE(engine.state().kind(), Kind::Playing);
        QTRY_COMPARE(mpv<bool>(engine, MPVName::pause), std::optional<bool>(true));
        engine.scrub(12.0);
        QCOMPARE(engine.currentTime(), 12.0);
        QVERIFY(refresh.count() >= 1);
        engine.scrubEnded(16.0);
        QTRY_COMPARE_WITH_TIMEOUT(mpv<bool>(engine, MPVName::pause), std::optional<bool>(false),
                                  5000);
        QTRY_VERIFY_WITH_TIMEOUT(engine.currentTime() >= 16.0, 5000);

        engine.pause();
        seek(engine, 4.0); // resumes once libmpv has landed
        QVERIFY(!engine.isSeeking());
        QCOMPARE(engine.currentTime(), 4.0);
        QVERIFY(qAbs(mpv<double>(engine, MPVName::timePos).value_or(-1) - 4.0) < 0.05);
        for (double nowhere : {qQNaN(), qInf()}) { // a seek bar of zero width asks for these
            engine.scrub(nowhere);
            seek(engine, nowhere);
            QCoro::waitFor(engine.seekRelative(nowhere));
        }
        QCOMPARE(engine.currentTime(), 4.0);
        player.commands().seekBy(3);
        QVERIFY(qAbs(engine.currentTime() - 7.0) < 0.1);
        QCOMPARE(player.osdText(), QStringLiteral("00:07 / 00:30"));
        player.commands().seekBy(-30);
        QCOMPARE(engine.currentTime(), 0.0);
        QCOMPARE(player.osdText(), QStringLiteral("00:00 / 00:30"));
        player.commands().seekBy(60);
        QCOMPARE(engine.currentTime(), engine.decoder()->duration());

        // A drag that starts paused stays paused.
        engine.scrubBegan();
        engine.scrubEnded(5.0);
        QTRY_COMPARE(engine.currentTime(), 5.0);
        QCOMPARE(engine.state().kind(), Kind::Paused);

        seek(engine, 2.0);
        player.commands().stepFrame(true);
        QCOMPARE(player.osdText(), QStringLiteral("Frame \u2192"));
        QTRY_VERIFY_WITH_TIMEOUT(mpv<double>(engine, MPVName::timePos).value_or(0) > 2.02, 5000);
        const double afterStep = *mpv<double>(engine, MPVName::timePos);
        player.commands().stepFrame(false);
        QCOMPARE(player.osdText(), QStringLiteral("\u2190 Frame"));
        QTRY_VERIFY_WITH_TIMEOUT( // one frame at 25 fps back
            qAbs(mpv<double>(engine, MPVName::timePos).value_or(-1) - (afterStep - 0.04)) < 0.02,
            5000);
    }

    void soundAndSpeedAreAnnouncedAndRemembered()
    {
        {
            TestPlayer player;
            PlaybackEngine& engine = player.engine();
            UserCommands& commands = player.commands();
            QCOMPARE(engine.volume(), 1.0f);
            QCOMPARE(player.osdText(), QString()); // nothing stored: a silent start

            commands.setVolume(0.5f);
            QCOMPARE(player.osdText(), QStringLiteral("Volume: 50%"));
            QTRY_COMPARE(mpv<double>(engine, MPVName::volume), std::optional<double>(50.0));
            commands.toggleMute();
            QCOMPARE(player.osdText(), QStringLiteral("Muted"));
            commands.setVolume(0.75f);
            QCOMPARE(player.osdText(), QStringLiteral("Volume: 0%")); // muted reads 0
            commands.adjustVolume(1.0f);
            QSignalSpy messages(engine.osd(), &OSDManager::currentMessageChanged);
            commands.adjustVolume(0.1f); // at the limit: no change, no message
            QCOMPARE(messages.count(), 0);
            commands.setVolume(0.5f);
            // What is not a number (a slider divided by a zero width) changes nothing, and a
            // speed is one the player offers.
            commands.setVolume(qQNaN());
            QCOMPARE(engine.volume(), 0.5f);

            commands.cyclePlaybackRate();
            QCOMPARE(engine.playbackRate(), 1.25f);
            QCOMPARE(player.osdText(), QStringLiteral("1.2x"));
            for (float notASpeed : {float(qQNaN()), float(qInf()), 0.0f, -2.0f})
                engine.setPlaybackRate(notASpeed);
            QCOMPARE(engine.playbackRate(), 1.25f);
            engine.setPlaybackRate(100.0f);
            QCOMPARE(engine.playbackRate(), 4.0f);
            engine.cyclePlaybackRate();
            QCOMPARE(engine.playbackRate(), 0.25f);
            engine.setPlaybackRate(1.1f); // not in the list: back to normal
            engine.cyclePlaybackRate();
            QCOMPARE(engine.playbackRate(), 1.0f);
            engine.setPlaybackRate(2.0f); // survives opening a file, and is not remembered
            player.open(fixtureUrl(QStringLiteral("clip10.mp4")));
            QTRY_COMPARE(mpv<double>(engine, MPVName::speed), std::optional<double>(2.0));
        }
        {
            // The next start has the volume and mute back, and says so.
            TestPlayer player;
            QCOMPARE(player.engine().volume(), 0.5f);
            QVERIFY(player.engine().isMuted());
            QCOMPARE(player.engine().playbackRate(), 1.0f);
            QCOMPARE(player.osdText(), QStringLiteral("Muted"));
            QTRY_COMPARE(mpv<double>(player.engine(), MPVName::volume),
                         std::optional<double>(50.0));
        }
    }

    void imagesAndBrokenFiles()
    {
        TestPlayer player;
        PlaybackEngine& engine = player.engine();
        player.open(fixtureUrl(QStringLiteral("clip10.mp4")));
        player.open(fixtureUrl(QStringLiteral("still.png")));
        QCOMPARE(engine.state().kind(), Kind::ViewingImage);
        QCOMPARE(engine.duration(), 0.0);
        QCOMPARE(engine.displayedImage().size(), QSize(320, 240));
        QTRY_VERIFY(
            !mpv<QString>(engine, MPVName::path)); // the video is stopped; images skip libmpv
        engine.play();
        QCOMPARE(engine.state().kind(), Kind::ViewingImage);
        player.open(fixtureUrl(QStringLiteral("missing.png")));
        QCOMPARE(engine.state(), PlayerState::error(QStringLiteral("Failed to load image")));

        player.expectLibmpvErrors();
        for (const QString& file : {QStringLiteral("no-such-file.mp4"), QStringLiteral("empty.mp4"),
                                    QStringLiteral("truncated.mp4")}) {
            player.open(fixtureUrl(file));
            QCOMPARE(engine.state().kind(), Kind::Error);
            QVERIFY2(engine.state().message().contains(file), qPrintable(engine.state().message()));
        }
        QTest::qWait(300); // and it stays there
        QCOMPARE(engine.state().kind(), Kind::Error);

        // A pipe nobody writes to, named like a video, would keep a load opening for ever.
        QTemporaryDir dir;
        const QByteArray pipe = QFile::encodeName(dir.filePath(QStringLiteral("x.mkv")));
        QCOMPARE(::mkfifo(pipe.constData(), 0600), 0);
        engine.decoder()->setLoadTimeout(std::chrono::milliseconds(500));
        player.open(QUrl::fromLocalFile(dir.filePath(QStringLiteral("x.mkv"))));
        QCOMPARE(engine.state(), PlayerState::error(QStringLiteral(
                                     "Cannot play \u201cx.mkv\u201d: it did not open in time")));

        // Names that are not UTF-8 reach the disk and libmpv as the bytes they are: a folder
        // scan finds such a video, which plays with its dates, takes such a subtitle and image.
        const QByteArray oddFolder = QFile::encodeName(dir.path()) + "/d\xe9j\xe0";
        const QByteArray oddName = oddFolder + "/caf\xe9 \xff.mp4";
        std::filesystem::create_directory(oddFolder.toStdString());
        for (const auto& [fixture, copy] :
             {std::pair{"clip10.mp4", oddName},
              std::pair{"still.png", oddFolder + "/\xe9t\xe9.png"},
              std::pair{"embedded-subtitles.srt", oddFolder + "/s\xe9.srt"}})
            std::filesystem::copy_file(
                QFile::encodeName(fixturePath(QLatin1String(fixture))).toStdString(),
                copy.toStdString());
        const QUrl oddUrl = MediaFiles::urlForLocalPath(oddName);
        QCoro::waitFor(engine.playlist()->addFolder(MediaFiles::urlForLocalPath(oddFolder)));
        QCOMPARE(engine.playlist()->items().size(), 1);
        QCOMPARE(engine.playlist()->items().constFirst().url, oddUrl);
        player.open(oddUrl);
        QCOMPARE(engine.state().kind(), Kind::Playing);
        QVERIFY(qAbs(engine.duration() - 10.0) < 0.1);
        QTRY_VERIFY(engine.mediaInfo() && engine.mediaInfo()->modifiedAt);
        player.commands().addSubtitles({MediaFiles::urlForLocalPath(oddFolder + "/s\xe9.srt")});
        QTRY_COMPARE(engine.tracks()->subtitleTracks().size(), 1);
        player.open(MediaFiles::urlForLocalPath(oddFolder + "/\xe9t\xe9.png"));
        QCOMPARE(engine.displayedImage().size(), QSize(320, 240));
        std::filesystem::remove_all(oddFolder.toStdString()); // Qt could not name them to remove
    }

    void tracksMediaInformationAndColours()
    {
        TestPlayer player;
        PlaybackEngine& engine = player.engine();
        const TrackManager& tracks = *engine.tracks();
        player.open(fixtureUrl(QStringLiteral("tracks.mkv")));
        QTRY_COMPARE_WITH_TIMEOUT(tracks.audioTracks().size(), 2, 5000);
        QCOMPARE(tracks.subtitleTracks().size(), 1);
        QCOMPARE(tracks.audioTracks()[0].displayLabel(),
                 QStringLiteral("English Stereo \u2014 ENG"));
        QCOMPARE(tracks.audioTracks()[1].displayLabel(), QStringLiteral("Commentary \u2014 JPN"));
        QCOMPARE(tracks.subtitleTracks()[0].displayLabel(), QStringLiteral("ENG"));
        QTRY_COMPARE(tracks.currentAudioID(), 1);
        QTRY_VERIFY(engine.mediaInfo() && engine.mediaInfo()->width &&
                    engine.mediaInfo()->modifiedAt);
        const MediaInfo info = *engine.mediaInfo();
        QCOMPARE(info.filename, QStringLiteral("tracks.mkv"));
        QCOMPARE(info.width, std::optional<int>(320));
        QCOMPARE(info.height, std::optional<int>(180));
        QVERIFY(info.videoCodec.value_or(QString()).contains(QStringLiteral("264")));
        QVERIFY(info.fileSize.value_or(0) > 0);

        player.commands().cycleAudioTrack();
        QCOMPARE(player.osdText(), QStringLiteral("Audio: Commentary \u2014 JPN (2/2)"));
        QTRY_COMPARE(tracks.currentAudioID(), 2);
        player.commands().selectSubtitleTrack(0);
        player.commands().cycleSubtitleTrack();
        QCOMPARE(player.osdText(), QStringLiteral("Subtitle: ENG (1/1)"));
        QTRY_COMPARE(tracks.currentSubtitleID(), 1);
        player.commands().cycleSubtitleTrack();
        QCOMPARE(player.osdText(), QStringLiteral("Subtitle: Off"));
        QCOMPARE(tracks.currentSubtitleID(), 0);
        QTRY_COMPARE(mpv<QString>(engine, MPVName::sid),
                     std::optional<QString>(QStringLiteral("no")));

        player.open(fixtureUrl(QStringLiteral("pq.mkv")));
        QTRY_VERIFY_WITH_TIMEOUT(engine.hdr()->isHDRContent(), 5000);
        QCOMPARE(engine.hdr()->primaries(), QStringLiteral("bt.2020"));
        QTRY_COMPARE(tracks.audioTracks().size(), 0); // nothing of the last file lingers
        player.commands().cycleAudioTrack();
        QCOMPARE(player.osdText(), QStringLiteral("No other audio tracks"));
        player.commands().cycleSubtitleTrack();
        QCOMPARE(player.osdText(), QStringLiteral("No subtitle tracks"));

        player.open(fixtureUrl(QStringLiteral("audio-only.m4a")));
        QVERIFY(qAbs(engine.duration() - 12.0) < 0.2);
        QVERIFY(!engine.hdr()->isHDRContent());
        QTRY_VERIFY(engine.mediaInfo() && engine.mediaInfo()->audioCodec);
        QVERIFY(!engine.mediaInfo()->width);
    }
};

VELMAR_TEST_MAIN(EngineTest)
#include "tst_engine.moc"
