// Value types and small models: time formatting, track labels, OSD texts and timing,
// track/HDR change notification and the preference fallbacks.
#include "features/filter/VideoAdjustments.h"
#include "features/hdr/HDRManager.h"
#include "features/osd/OSDManager.h"
#include "features/playback/ABLoopManager.h"
#include "features/track/TrackManager.h"
#include "infrastructure/preferences/Preferences.h"
#include "model/MediaInfoFormat.h"
#include "model/MediaTrack.h"
#include "model/TimeFormat.h"
#include "support/TestSupport.h"

#include <limits>
#include <QSignalSpy>

using velmar::formatTime;
using namespace Qt::StringLiterals;

class ModelTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        velmar::test::freshStart();
        velmar::test::failOnWarnings();
    }

    void formatTime_data()
    {
        QTest::addColumn<double>("seconds");
        QTest::addColumn<QString>("text");
        QTest::newRow("zero") << 0.0 << QStringLiteral("00:00");
        QTest::newRow("truncates") << 59.9 << QStringLiteral("00:59");
        QTest::newRow("last minute form") << 3599.0 << QStringLiteral("59:59");
        QTest::newRow("one hour") << 3600.0 << QStringLiteral("1:00:00");
        QTest::newRow("ten hours") << 36000.0 << QStringLiteral("10:00:00");
        QTest::newRow("negative") << -12.0 << QStringLiteral("00:00");
        QTest::newRow("nan") << std::numeric_limits<double>::quiet_NaN() << QStringLiteral("00:00");
        QTest::newRow("infinity") << std::numeric_limits<double>::infinity()
                                  << QStringLiteral("00:00");
    }

    void formatTime()
    {
        QFETCH(double, seconds);
        QFETCH(QString, text);
        QCOMPARE(velmar::formatTime(seconds), text);
    }

    // Each unit's edge: rounding must not decide the unit, and only whole kilohertz lose the
    // decimal.
    void mediaInfoFormats()
    {
        QCOMPARE(velmar::formatBitrate(0), u"0 kbps"_s);
        QCOMPARE(velmar::formatBitrate(128000), u"128 kbps"_s);
        QCOMPARE(velmar::formatBitrate(999999), u"1000 kbps"_s);
        QCOMPARE(velmar::formatBitrate(1000000), u"1.0 Mbps"_s);
        QCOMPARE(velmar::formatBitrate(2549999), u"2.5 Mbps"_s);
        QCOMPARE(velmar::formatSampleRate(48000), u"48 kHz"_s);
        QCOMPARE(velmar::formatSampleRate(44100), u"44.1 kHz"_s);
        const QStringList channels = {u"0ch"_s, u"Mono"_s, u"Stereo"_s, u"3ch"_s, u"4ch"_s,
                                      u"5ch"_s, u"5.1"_s,  u"7ch"_s,    u"7.1"_s};
        for (int count = 0; count < channels.size(); ++count)
            QCOMPARE(velmar::formatChannels(count), channels.at(count));
    }

    void referenceTimestampsCountFrom2001()
    {
        const QDateTime start(QDate(2001, 1, 1), QTime(0, 0), Qt::UTC);
        QCOMPARE(velmar::toReferenceTimestamp(start), 0.0);
        const QDateTime later(QDate(2026, 11, 22), QTime(7, 30, 15), Qt::UTC);
        QCOMPARE(velmar::fromReferenceTimestamp(velmar::toReferenceTimestamp(later)), later);
    }

    void trackLabels()
    {
        MediaTrack track;
        track.id = 3;
        QCOMPARE(track.displayLabel(), QStringLiteral("Track 3"));
        track.codec = QStringLiteral("aac");
        QCOMPARE(track.displayLabel(), QStringLiteral("aac"));
        track.lang = QStringLiteral("jpn");
        QCOMPARE(track.displayLabel(), QStringLiteral("JPN"));
        track.title = QStringLiteral("Commentary");
        track.lang = QStringLiteral("eng");
        QCOMPARE(track.displayLabel(), QStringLiteral("Commentary \u2014 ENG"));
        track.lang.reset();
        QCOMPARE(track.displayLabel(), QStringLiteral("Commentary"));

        QCOMPARE(trackTypeFromString(QStringLiteral("sub")), TrackType::Sub);
        QVERIFY(!trackTypeFromString(QStringLiteral("Audio")).has_value());
    }

    void osdMessageTexts()
    {
        QCOMPARE(OSDMessage::volume(0.0f).icon(), QStringLiteral("speaker.slash.fill"));
        QCOMPARE(OSDMessage::volume(0.999f).text(), QStringLiteral("Volume: 99%"));
        QCOMPARE(OSDMessage::volume(0.5f).icon(), QStringLiteral("speaker.wave.2.fill"));
        QCOMPARE(OSDMessage::seek(65, 3700).text(), QStringLiteral("01:05 / 1:01:40"));
        QCOMPARE(OSDMessage::playbackRate(1.0f).text(), QStringLiteral("1x"));
        QCOMPARE(OSDMessage::playbackRate(1.5f).text(), QStringLiteral("1.5x"));
        QCOMPARE(OSDMessage::playbackRate(0.25f).text(), QStringLiteral("0.25x"));
        QCOMPARE(OSDMessage::muted(false).icon(), QStringLiteral("speaker.wave.2.fill"));
        QCOMPARE(OSDMessage::paused().icon(), QStringLiteral("pause.fill"));
        QCOMPARE(OSDMessage::text(QStringLiteral("Hi")).icon(), QStringLiteral("info.circle"));
    }

    void osdKeepsTheNewestMessageForItsFullTime()
    {
        OSDManager osd;
        QSignalSpy changes(&osd, &OSDManager::currentMessageChanged);
        QElapsedTimer clock;
        clock.start();
        osd.show(OSDMessage::text(QStringLiteral("first")), 1.5);
        QTest::qWait(1000);
        osd.show(OSDMessage::text(QStringLiteral("second")), 1.5);
        // Past the first message's deadline the second one is still up.
        QTest::qWait(800);
        QVERIFY(osd.currentMessage().has_value());
        QCOMPARE(osd.currentMessage()->text(), QStringLiteral("second"));
        QTRY_VERIFY_WITH_TIMEOUT(!osd.currentMessage().has_value(), 3000);
        QVERIFY(clock.elapsed() >= 2400);
        QCOMPARE(changes.count(), 3); // first, second, gone

        // The same message again restarts the timer but notifies nothing.
        osd.show(OSDMessage::paused(), 1.5);
        changes.clear();
        osd.show(OSDMessage::paused(), 1.5);
        QCOMPARE(changes.count(), 0);
    }

    void trackManagerNotifiesOnlyRealChanges()
    {
        TrackManager manager;
        QSignalSpy audio(&manager, &TrackManager::audioTracksChanged);
        QSignalSpy subtitles(&manager, &TrackManager::subtitleTracksChanged);
        QSignalSpy audioID(&manager, &TrackManager::currentAudioIDChanged);

        MediaTrack video{1, TrackType::Video, {}, {}, QStringLiteral("h264"), true, false};
        MediaTrack english{1, TrackType::Audio, {}, QStringLiteral("eng"), {}, true, false};
        MediaTrack commentary{2,    TrackType::Audio, QStringLiteral("Commentary"), {}, {}, false,
                              false};
        MediaTrack subtitle{1, TrackType::Sub, {}, QStringLiteral("eng"), {}, false, false};
        const QList<MediaTrack> all{video, english, commentary, subtitle};

        manager.updateTracks(all);
        manager.updateTracks(all);
        QCOMPARE(audio.count(), 1);
        QCOMPARE(subtitles.count(), 1);
        QCOMPARE(manager.audioTracks(), (QList<MediaTrack>{english, commentary}));
        QCOMPARE(manager.subtitleTracks(), QList<MediaTrack>{subtitle});

        manager.setCurrentAudioID(2);
        manager.setCurrentAudioID(2);
        QCOMPARE(audioID.count(), 1);

        manager.reset();
        QVERIFY(manager.audioTracks().isEmpty());
        QCOMPARE(manager.currentAudioID(), 0);
        QCOMPARE(audioID.count(), 2);
        manager.reset(); // already empty: silent
        QCOMPARE(audioID.count(), 2);
        QCOMPARE(audio.count(), 2);
    }

    void hdrFollowsTheTransferFunctionOnly()
    {
        HDRManager hdr;
        hdr.updatePrimaries(QStringLiteral("bt.2020"));
        QVERIFY(!hdr.isHDRContent());
        QCOMPARE(hdr.primaries(), QStringLiteral("bt.2020"));

        hdr.updateTransferFunction(QStringLiteral("pq"));
        QVERIFY(hdr.isHDRContent());
        hdr.updateTransferFunction(QStringLiteral("PQ"));
        QVERIFY(!hdr.isHDRContent());
        hdr.updateTransferFunction(QStringLiteral("hlg"));
        QVERIFY(hdr.isHDRContent());
        hdr.updateTransferFunction(QString());
        QVERIFY(!hdr.isHDRContent());
        QCOMPARE(hdr.transferFunction(), QStringLiteral("bt.1886"));

        hdr.updateTransferFunction(QStringLiteral("pq"));
        hdr.reset();
        QVERIFY(!hdr.isHDRContent());
        QCOMPARE(hdr.transferFunction(), QStringLiteral("bt.1886"));
        QCOMPARE(hdr.primaries(), QStringLiteral("bt.709"));
    }

    void preferencesFallBackWhenAbsent()
    {
        Preferences preferences; // emptied by init()
        QCOMPARE(preferences.seekSmallStep(), 5.0);
        QCOMPARE(preferences.seekLargeStep(), 30.0);
        QVERIFY(preferences.resumePlayback());
        QVERIFY(!preferences.storedVolume().has_value());
        QVERIFY(!preferences.storedIsMuted());

        // Zero or negative steps count as absent; real values are read on every call.
        preferences.setDouble(PreferenceKeys::seekSmallStep, 0.0);
        QCOMPARE(preferences.seekSmallStep(), 5.0);
        preferences.setDouble(PreferenceKeys::seekSmallStep, -3.0);
        QCOMPARE(preferences.seekSmallStep(), 5.0);
        preferences.setDouble(PreferenceKeys::seekSmallStep, 12.0);
        QCOMPARE(Preferences().seekSmallStep(), 12.0);

        preferences.setBool(PreferenceKeys::resumePlayback, false);
        QVERIFY(!Preferences().resumePlayback());
        preferences.setFloat(PreferenceKeys::volume, 0.0f);
        QCOMPARE(Preferences().storedVolume(), std::optional<float>(0.0f));

        // Values another program (or an older version) left behind stay harmless.
        preferences.setDouble(PreferenceKeys::volume, 5.0);
        QCOMPARE(preferences.storedVolume(), std::optional<float>(1.0f));
        preferences.setDouble(PreferenceKeys::volume, 1e308);
        QCOMPARE(preferences.storedVolume(), std::optional<float>(1.0f));
        preferences.setValue(PreferenceKeys::volume, QStringLiteral("nan"));
        QCOMPARE(preferences.storedVolume(), std::nullopt);
        preferences.setValue(PreferenceKeys::seekSmallStep, QStringLiteral("inf"));
        QCOMPARE(preferences.seekSmallStep(), 5.0);
    }

    void adjustmentsTrackCyclesAndLoopPoints()
    {
        FilterManager filters;
        QCOMPARE(filters.pictureSettings(), PictureSettings{});
        filters.setFilter(QStringLiteral("brightness"), true, 0.25f);
        filters.setFilter(QStringLiteral("saturation"), true, 0.0f);
        filters.setFilter(QStringLiteral("sharpen"), true, 0.5f);
        filters.setFilter(QStringLiteral("contrast"), false, 3.0f); // off: neutral
        PictureSettings picture = filters.pictureSettings();
        QCOMPARE(picture.brightness, 25);
        QCOMPARE(picture.saturation, -100);
        QCOMPARE(picture.contrast, 0);
        QCOMPARE(picture.videoFilters, QStringLiteral("unsharp=la=0.5"));
        QVERIFY(!picture.deband && !picture.debandThreshold);
        // Stored or slid values far outside a parameter's range come back inside it, and what
        // is not a number changes nothing.
        filters.apply(
            FilterState{QStringLiteral("deband"), true, {{QStringLiteral("threshold"), 1e30f}}});
        QCOMPARE(filters.pictureSettings().debandThreshold, std::optional<qint64>(128));
        filters.apply(
            FilterState{QStringLiteral("deband"), true, {{QStringLiteral("threshold"), qQNaN()}}});
        QCOMPARE(filters.pictureSettings().debandThreshold, std::optional<qint64>(48));
        filters.setFilter(QStringLiteral("deband"), true, qQNaN());
        filters.setFilter(QStringLiteral("deband"), true, -qInf());
        QCOMPARE(filters.pictureSettings().debandThreshold, std::optional<qint64>(48));
        filters.setFilter(QStringLiteral("deband"), true, 1e30f);
        QCOMPARE(filters.pictureSettings().debandThreshold, std::optional<qint64>(128));

        VideoAdjustments adjustments;
        adjustments.setRotation(450);
        QCOMPARE(adjustments.rotation(), 90);
        adjustments.setRotation(-90); // the remainder keeps its sign
        QCOMPARE(adjustments.rotation(), -90);
        QCOMPARE(adjustments.setAudioDelay(7), 5.0);
        QCOMPARE(adjustments.setAudioDelay(qQNaN()), 0.0);
        adjustments.restore(PerFileSettings{0, {}, 12.0}); // a stored delay is clamped too
        QCOMPARE(adjustments.audioDelay(), 5.0);

        TrackManager tracks;
        auto track = [](qint64 id, TrackType type) {
            MediaTrack t;
            t.id = id;
            t.type = type;
            return t;
        };
        tracks.updateTracks({track(3, TrackType::Sub), track(5, TrackType::Sub)});
        tracks.setCurrentSubtitleID(5);
        QCOMPARE(tracks.nextSubtitleTrack().result, TrackCycle::Result::Off);
        tracks.setCurrentSubtitleID(0);
        const TrackCycle first = tracks.nextSubtitleTrack();
        QCOMPARE(first.track.id, 3);
        QCOMPARE(first.position, 1);
        QCOMPARE(first.count, 2);
        QCOMPARE(tracks.nextAudioTrack().result, TrackCycle::Result::NoTracks);

        ABLoopManager loop;
        QVERIFY(!loop.markB(4)); // no A: refused
        loop.markA(10);
        QVERIFY(!loop.markB(10)); // not after A
        QVERIFY(loop.markB(20));
        QCOMPARE(loop.shouldLoop(19.99), std::nullopt);
        QCOMPARE(loop.shouldLoop(20.0), std::optional<double>(10));
        loop.markA(25); // past B: B goes
        QCOMPARE(loop.pointB(), std::nullopt);
    }
};

VELMAR_TEST_MAIN(ModelTest)
#include "tst_model.moc"
