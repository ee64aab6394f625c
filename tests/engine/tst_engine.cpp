// The playback engine driving real libmpv on generated media: the state machine, seeking,
// scrubbing, frame steps, volume/mute persistence, speed, images, unplayable files, tracks.
#include "core/engine/MPVDecoder.h"
#include "core/engine/MPVProperties.h"
#include "core/engine/PlaybackEngine.h"
#include "features/osd/OSDManager.h"
#include "features/playlist/PlaybackHistoryManager.h"
#include "features/track/TrackManager.h"
#include "infrastructure/preferences/Preferences.h"
#include "support/TestSupport.h"

#include <QCoroTask>
#include <QSignalSpy>

using namespace velmar::test;
using Kind = PlayerState::Kind;

namespace {

/// An engine with its video window, torn down window first as in the application.
struct Player
{
    std::unique_ptr<PlaybackEngine> engine = makeSilentEngine();
    std::unique_ptr<PlayerWindow> window = std::make_unique<PlayerWindow>(engine.get());

    ~Player()
    {
        window.reset();
        engine.reset();
    }

    mpv_handle* mpv() const { return engine->decoder()->handle(); }
    QString osdText() const
    {
        const auto message = engine->osd()->currentMessage();
        return message ? message->text() : QString();
    }
};

std::optional<bool> mpvFlag(const Player& player, const char* name)
{
    return MPVProperty::readFlag(player.mpv(), name);
}

std::optional<double> mpvDouble(const PlaybackEngine& engine, const char* name)
{
    return MPVProperty::readDouble(engine.decoder()->handle(), name);
}

void waitFor(const std::function<QCoro::Task<void>()>& operation)
{
    QCoro::waitFor(operation());
}

} // namespace

class EngineTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        Preferences preferences;
        preferences.remove(PreferenceKeys::volume);
        preferences.remove(PreferenceKeys::isMuted);
    }

    void playsPausesAndStopsAtTheEnd()
    {
        Player player;
        QVERIFY(player.window->showAndWaitForRenderContext());
        QList<Kind> states;
        connect(player.engine.get(), &PlaybackEngine::stateChanged, this,
                [&] { states << player.engine->state().kind(); });

        loadAndWait(*player.engine, fixtureUrl(QStringLiteral("clip10.mp4")));
        QCOMPARE(states, (QList<Kind>{Kind::Loading, Kind::Paused, Kind::Playing}));
        QCOMPARE(player.engine->mediaTitle(), QStringLiteral("clip10"));
        QVERIFY(qAbs(player.engine->duration() - 10.0) < 0.2);
        // The 30 Hz timer follows libmpv while playing.
        QTRY_VERIFY_WITH_TIMEOUT(player.engine->currentTime() > 0.3, 5000);

        player.engine->pause();
        QCOMPARE(player.engine->state().kind(), Kind::Paused);
        QCOMPARE(mpvFlag(player, "pause"), std::optional<bool>(true));
        QVERIFY(!player.engine->sleepPreventer().isActive());
        const double pausedAt = player.engine->currentTime();
        QTest::qWait(300);
        QCOMPARE(player.engine->currentTime(), pausedAt);

        player.engine->play();
        QCOMPARE(player.engine->state().kind(), Kind::Playing);
        QCOMPARE(mpvFlag(player, "pause"), std::optional<bool>(false));
        player.engine->play(); // already playing: nothing happens
        QCOMPARE(player.engine->state().kind(), Kind::Playing);

        waitFor([&] { return player.engine->seek(9.5); });
        QTRY_VERIFY_WITH_TIMEOUT(player.engine->isAtEnd(), 30000);
        QCOMPARE(player.engine->state().kind(), Kind::Paused);
        QCOMPARE(player.engine->progress(), 1.0);

        // Play after the end starts over from the beginning.
        player.engine->play();
        QCOMPARE(player.engine->state().kind(), Kind::Playing);
        QVERIFY(!player.engine->isAtEnd());
        QTRY_VERIFY_WITH_TIMEOUT(player.engine->currentTime() > 0.2, 5000);
        QVERIFY(player.engine->currentTime() < 3.0);
    }

    void operationsNeedLoadedMedia()
    {
        auto engine = makeSilentEngine();
        engine->play();
        engine->pause();
        engine->stepForward();
        engine->scrubBegan();
        engine->scrub(4);
        waitFor([&] { return engine->seek(3); });
        waitFor([&] { return engine->seekRelative(5); });
        QCOMPARE(engine->state().kind(), Kind::Idle);
        QCOMPARE(engine->currentTime(), 0.0);
        QCOMPARE(engine->progress(), 0.0);
        QVERIFY(!engine->osd()->currentMessage().has_value());
    }

    void exactAndRelativeSeeks()
    {
        Player player;
        QVERIFY(player.window->showAndWaitForRenderContext());
        loadAndWait(*player.engine, fixtureUrl(QStringLiteral("clip10.mp4")));
        player.engine->pause();
        QSignalSpy refresh(player.engine.get(), &PlaybackEngine::needsFrameRefreshChanged);

        waitFor([&] { return player.engine->seek(4.0); });
        QCOMPARE(player.engine->currentTime(), 4.0);
        QVERIFY(!player.engine->isSeeking());
        QVERIFY(refresh.count() >= 1);
        QTRY_VERIFY_WITH_TIMEOUT(
            qAbs(mpvDouble(*player.engine, "time-pos").value_or(-1) - 4.0) < 0.05, 5000);
        QTest::qWait(200); // let the position report settle in the decoder's mirror

        waitFor([&] { return player.engine->seekRelative(3); });
        QVERIFY(qAbs(player.engine->currentTime() - 7.0) < 0.1);
        QCOMPARE(player.osdText(), QStringLiteral("00:07 / 00:10"));

        waitFor([&] { return player.engine->seekRelative(-30); });
        QCOMPARE(player.engine->currentTime(), 0.0);
        QCOMPARE(player.osdText(), QStringLiteral("00:00 / 00:10"));

        waitFor([&] { return player.engine->seekRelative(30); });
        QCOMPARE(player.engine->currentTime(), player.engine->decoder()->duration());
        QCOMPARE(player.engine->state().kind(), Kind::Paused);
    }

    void scrubbingHoldsThePictureThenResumes()
    {
        Player player;
        QVERIFY(player.window->showAndWaitForRenderContext());
        loadAndWait(*player.engine, fixtureUrl(QStringLiteral("clip30.mp4")));

        QSignalSpy refresh(player.engine.get(), &PlaybackEngine::needsFrameRefreshChanged);
        player.engine->scrubBegan();
        QCOMPARE(player.engine->state().kind(), Kind::Playing); // the state does not change
        QCOMPARE(mpvFlag(player, "pause"), std::optional<bool>(true));
        player.engine->scrub(12.0);
        QCOMPARE(player.engine->currentTime(), 12.0);
        QVERIFY(refresh.count() >= 1);
        player.engine->scrub(15.0);
        player.engine->scrubEnded(16.0);
        QTRY_COMPARE_WITH_TIMEOUT(mpvFlag(player, "pause"), std::optional<bool>(false), 5000);
        QTRY_VERIFY_WITH_TIMEOUT(player.engine->currentTime() >= 16.0, 5000);

        // A drag that starts paused stays paused.
        player.engine->pause();
        player.engine->scrubBegan();
        player.engine->scrubEnded(5.0);
        QTest::qWait(300);
        QCOMPARE(player.engine->state().kind(), Kind::Paused);
        QCOMPARE(mpvFlag(player, "pause"), std::optional<bool>(true));
        QCOMPARE(player.engine->currentTime(), 5.0);
    }

    void frameStepsPauseAndAnnounce()
    {
        Player player;
        QVERIFY(player.window->showAndWaitForRenderContext());
        loadAndWait(*player.engine, fixtureUrl(QStringLiteral("clip10.mp4")));
        waitFor([&] { return player.engine->seek(2.0); });
        QTRY_VERIFY_WITH_TIMEOUT(
            qAbs(mpvDouble(*player.engine, "time-pos").value_or(-1) - 2.0) < 0.2, 5000);

        player.engine->stepForward();
        QCOMPARE(player.engine->state().kind(), Kind::Paused);
        QCOMPARE(player.osdText(), QStringLiteral("Frame \u2192"));
        QTRY_VERIFY_WITH_TIMEOUT(mpvFlag(player, "pause") == std::optional<bool>(true), 3000);
        QTest::qWait(300);
        const double afterStep = mpvDouble(*player.engine, "time-pos").value_or(-1);

        player.engine->stepBackward();
        QCOMPARE(player.osdText(), QStringLiteral("\u2190 Frame"));
        // One frame at 30 fps back.
        QTRY_VERIFY_WITH_TIMEOUT(qAbs(mpvDouble(*player.engine, "time-pos").value_or(-1) -
                                      (afterStep - 1.0 / 30)) < 0.02,
                                 5000);
    }

    void volumeAndMutePersistAcrossEngines()
    {
        {
            auto engine = makeSilentEngine();
            QCOMPARE(engine->volume(), 1.0f);
            QVERIFY(!engine->osd()->currentMessage().has_value());

            engine->setVolume(0.5f);
            QCOMPARE(engine->osd()->currentMessage()->text(), QStringLiteral("Volume: 50%"));
            QCOMPARE(mpvDouble(*engine, "volume"), std::optional<double>(50.0));

            engine->setIsMuted(true);
            QCOMPARE(engine->osd()->currentMessage()->text(), QStringLiteral("Muted"));
            QCOMPARE(MPVProperty::readFlag(engine->decoder()->handle(), "mute"),
                     std::optional<bool>(true));
            engine->setVolume(0.75f);
            QCOMPARE(engine->osd()->currentMessage()->text(), QStringLiteral("Volume: 0%"));

            engine->adjustVolume(1.0f);
            QCOMPARE(engine->volume(), 1.0f);
            QSignalSpy messages(engine->osd(), &OSDManager::currentMessageChanged);
            QSignalSpy volumes(engine.get(), &PlaybackEngine::volumeChanged);
            engine->adjustVolume(0.1f); // at the limit: no change, no message
            QCOMPARE(volumes.count(), 0);
            QCOMPARE(messages.count(), 0);
            engine->adjustVolume(-2.0f);
            QCOMPARE(engine->volume(), 0.0f);
            engine->setVolume(0.5f);
        }
        {
            auto engine = makeSilentEngine();
            QCOMPARE(engine->volume(), 0.5f);
            QVERIFY(engine->isMuted());
            QCOMPARE(mpvDouble(*engine, "volume"), std::optional<double>(50.0));
            QCOMPARE(engine->osd()->currentMessage()->text(), QStringLiteral("Muted"));
            engine->setVolume(1.0f);
            engine->setIsMuted(false);
        }
        {
            // A stored volume of exactly 1.0 and no mute start silently.
            auto engine = makeSilentEngine();
            QCOMPARE(engine->volume(), 1.0f);
            QVERIFY(!engine->isMuted());
            QVERIFY(!engine->osd()->currentMessage().has_value());
        }
    }

    void playbackRateCyclesThroughTheList()
    {
        Player player;
        PlaybackEngine& engine = *player.engine;
        engine.cyclePlaybackRate();
        QCOMPARE(engine.playbackRate(), 1.25f);
        QCOMPARE(player.osdText(), QStringLiteral("1.2x"));
        QCOMPARE(mpvDouble(engine, "speed"), std::optional<double>(1.25));
        engine.setPlaybackRate(4.0f);
        engine.cyclePlaybackRate();
        QCOMPARE(engine.playbackRate(), 0.25f);
        engine.setPlaybackRate(1.1f);
        engine.cyclePlaybackRate();
        QCOMPARE(engine.playbackRate(), 1.0f);

        // The rate survives opening a file.
        engine.setPlaybackRate(2.0f);
        QVERIFY(player.window->showAndWaitForRenderContext());
        loadAndWait(engine, fixtureUrl(QStringLiteral("clip10.mp4")));
        QCOMPARE(engine.playbackRate(), 2.0f);
        QTRY_COMPARE_WITH_TIMEOUT(mpvDouble(engine, "speed"), std::optional<double>(2.0), 3000);
    }

    void imagesNeverReachLibmpv()
    {
        Player player;
        QVERIFY(player.window->showAndWaitForRenderContext());
        loadAndWait(*player.engine, fixtureUrl(QStringLiteral("clip10.mp4")));
        QTRY_VERIFY(MPVProperty::readString(player.mpv(), "path").has_value());

        loadAndWait(*player.engine, fixtureUrl(QStringLiteral("still.png")));
        QCOMPARE(player.engine->state().kind(), Kind::ViewingImage);
        QCOMPARE(player.engine->duration(), 0.0);
        QCOMPARE(player.engine->currentTime(), 0.0);
        QCOMPARE(player.engine->displayedImage().size(), QSize(320, 240));
        QCOMPARE(player.engine->mediaTitle(), QStringLiteral("still"));
        // The video that played before is stopped; the image itself never reaches libmpv.
        QTRY_VERIFY(!MPVProperty::readString(player.mpv(), "path").has_value());

        player.engine->play(); // nothing to play in an image
        QCOMPARE(player.engine->state().kind(), Kind::ViewingImage);

        loadAndWait(*player.engine, fixtureUrl(QStringLiteral("missing.png")));
        QCOMPARE(player.engine->state(),
                 PlayerState::error(QStringLiteral("Failed to load image")));
    }

    void unplayableFilesEndInError_data()
    {
        QTest::addColumn<QString>("file");
        QTest::newRow("missing") << QStringLiteral("no-such-file.mp4");
        QTest::newRow("zero bytes") << QStringLiteral("empty.mp4");
        QTest::newRow("truncated") << QStringLiteral("truncated.mp4");
    }

    void unplayableFilesEndInError()
    {
        QFETCH(QString, file);
        Player player;
        QVERIFY(player.window->showAndWaitForRenderContext());
        loadAndWait(*player.engine, fixtureUrl(file));
        QTRY_COMPARE_WITH_TIMEOUT(player.engine->state().kind(), Kind::Error, 5000);
        const QString message = player.engine->state().message();
        QVERIFY2(message.contains(file), qPrintable(message));
        QVERIFY(!player.engine->sleepPreventer().isActive());

        QTest::qWait(400); // and it stays there
        QCOMPARE(player.engine->state().kind(), Kind::Error);
        QCOMPARE(player.engine->currentTime(), 0.0);

        // A good file afterwards plays normally.
        loadAndWait(*player.engine, fixtureUrl(QStringLiteral("clip10.mp4")));
        QCOMPARE(player.engine->state().kind(), Kind::Playing);
    }

    void tracksAndMediaInformation()
    {
        Player player;
        QVERIFY(player.window->showAndWaitForRenderContext());
        loadAndWait(*player.engine, fixtureUrl(QStringLiteral("tracks.mkv")));
        const TrackManager& tracks = *player.engine->tracks();
        QTRY_COMPARE_WITH_TIMEOUT(tracks.audioTracks().size(), 2, 5000);
        QCOMPARE(tracks.subtitleTracks().size(), 1);
        QCOMPARE(tracks.audioTracks()[0].displayLabel(),
                 QStringLiteral("English Stereo \u2014 ENG"));
        QCOMPARE(tracks.audioTracks()[1].displayLabel(), QStringLiteral("Commentary \u2014 JPN"));
        QCOMPARE(tracks.subtitleTracks()[0].displayLabel(), QStringLiteral("ENG"));
        QCOMPARE(tracks.audioTracks()[1].id, 2);
        QTRY_COMPARE(tracks.currentAudioID(), 1);

        const auto info = player.engine->mediaInfo();
        QVERIFY(info.has_value());
        QCOMPARE(info->filename, QStringLiteral("tracks.mkv"));
        QCOMPARE(info->width, std::optional<int>(320));
        QCOMPARE(info->height, std::optional<int>(180));
        QVERIFY(info->videoCodec.value_or(QString()).contains(QStringLiteral("264")));
        QVERIFY(info->audioCodec.has_value());
        QVERIFY(info->fileSize.value_or(0) > 0);
        QVERIFY(info->modifiedAt.has_value());

        loadAndWait(*player.engine, fixtureUrl(QStringLiteral("audio-only.m4a")));
        QCOMPARE(player.engine->state().kind(), Kind::Playing);
        // The load reads the duration after a fixed short wait; a slow build may only learn it
        // from libmpv's later report.
        QTRY_VERIFY(qAbs(player.engine->duration() - 12.0) < 0.2);
        QTRY_COMPARE(tracks.audioTracks().size(), 1);
        QVERIFY(tracks.subtitleTracks().isEmpty());
        const auto audioInfo = player.engine->mediaInfo();
        QVERIFY(!audioInfo->width.has_value());
    }

    // Runs last: it leaves a history record and settings for clip30 in the shared library.
    void reopeningAFileResumesItAndRestoresItsSettings()
    {
        const QUrl a = fixtureUrl(QStringLiteral("clip30.mp4"));
        const QUrl b = fixtureUrl(QStringLiteral("clip10.mp4"));
        {
            Player player;
            QVERIFY(player.window->showAndWaitForRenderContext());
            loadAndWait(*player.engine, a);
            QCOMPARE(player.engine->history()->resumePosition(a), std::nullopt);
            waitFor([&] { return player.engine->seek(12.0); });
            player.engine->setRotation(450);
            QCOMPARE(player.engine->videoRotation(), 90);
            QCOMPARE(player.osdText(), QStringLiteral("Rotation: 90\u00b0"));
            player.engine->setAudioDelay(7);
            QCOMPARE(player.osdText(), QStringLiteral("Audio delay: +5.00s"));
            player.engine->setAudioDelay(0.3);
            QCOMPARE(player.osdText(), QStringLiteral("Audio delay: +0.30s"));

            loadAndWait(*player.engine, b);
            const auto recorded = player.engine->history()->resumePosition(a);
            QVERIFY(recorded && qAbs(*recorded - 12.0) < 0.5);
            // B has nothing stored: upright again; the audio delay carries over between files.
            QCOMPARE(player.engine->videoRotation(), 0);
            QTRY_COMPARE(MPVProperty::readInt64(player.mpv(), "video-rotate"),
                         std::optional<qint64>(0));
            QVERIFY(qAbs(mpvDouble(*player.engine, "audio-delay").value_or(-1) - 0.3) < 1e-6);
            QSignalSpy messages(player.engine->osd(), &OSDManager::currentMessageChanged);
            player.engine->setAudioDelay(0); // back to zero, silently
            QCOMPARE(messages.count(), 0);
            player.engine->setAudioDelay(0.3);
        }
        {
            // A later session opens A again.
            Player player;
            QVERIFY(player.window->showAndWaitForRenderContext());
            loadAndWait(*player.engine, a);
            QCOMPARE(player.engine->state().kind(), Kind::Playing);
            QVERIFY(qAbs(player.engine->currentTime() - 12.0) < 0.5);
            QCOMPARE(player.osdText(), QStringLiteral("Resumed at 00:12"));
            QCOMPARE(player.engine->videoRotation(), 90);
            QTRY_COMPARE(MPVProperty::readInt64(player.mpv(), "video-rotate"),
                         std::optional<qint64>(90));
            QVERIFY(qAbs(mpvDouble(*player.engine, "audio-delay").value_or(-1) - 0.3) < 1e-6);
            QTRY_VERIFY_WITH_TIMEOUT(
                qAbs(mpvDouble(*player.engine, "time-pos").value_or(0) - 12.0) < 1.0, 3000);
        }
    }
};

VELMAR_TEST_MAIN(EngineTest)
#include "tst_engine.moc"
