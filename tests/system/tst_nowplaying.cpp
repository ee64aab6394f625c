// The desktop's media controls over MPRIS, on the private session bus the tests run in:
// playerctl, the reference client, drives the real engine on real media, and a second
// connection watches what the player announces.
#include "core/engine/PlaybackEngine.h"
#include "features/osd/OSDManager.h"
#include "features/playlist/PlaylistManager.h"
#include "infrastructure/system/NowPlayingManager.h"
#include "support/TestSupport.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCall>
#include <QDeadlineTimer>
#include <QProcess>

using namespace velmar::test;
using Kind = PlayerState::Kind;

namespace {

const QString kService = QStringLiteral("org.mpris.MediaPlayer2.velmarplayer");
const QString kPath = QStringLiteral("/org/mpris/MediaPlayer2");
const QString kPlayer = QStringLiteral("org.mpris.MediaPlayer2.Player");
const QString kProperties = QStringLiteral("org.freedesktop.DBus.Properties");

enum class Timers { Run, Held };

/// Runs playerctl against the player while this thread keeps answering the bus. Gives its
/// output, or a description of its failure that no expected value matches. With timers held,
/// this thread only delivers what the bus hands it, so nothing the engine is waiting for can
/// happen while the command is answered.
QString playerctl(const QStringList& arguments, Timers timers = Timers::Run)
{
    QProcess process;
    process.start(QStringLiteral("playerctl"),
                  QStringList{QStringLiteral("-p"), QStringLiteral("velmarplayer")} + arguments);
    const QDeadlineTimer deadline(10000);
    while (process.state() != QProcess::NotRunning) {
        if (deadline.hasExpired())
            return QStringLiteral("<playerctl did not finish>");
        if (timers == Timers::Held) {
            process.waitForFinished(10);
            QCoreApplication::sendPostedEvents();
        } else {
            QTest::qWait(10);
        }
    }
    if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0)
        return QStringLiteral("<playerctl failed: ") + QString::fromUtf8(process.readAll()) +
               QLatin1Char('>');
    return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
}

QString seconds(double value)
{
    return QString::number(value, 'f', 6); // playerctl's form of a position
}

/// A second client on the bus: records what the player announces and calls it without
/// blocking the thread the player answers on.
class BusClient : public QObject
{
    Q_OBJECT

public:
    BusClient()
        : bus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("client")))
    {
        bus.connect(kService, kPath, kProperties, QStringLiteral("PropertiesChanged"), this,
                    SLOT(onPropertiesChanged(QString, QVariantMap, QStringList)));
        bus.connect(kService, kPath, kPlayer, QStringLiteral("Seeked"), this,
                    SLOT(onSeeked(qlonglong)));
    }
    ~BusClient() override { QDBusConnection::disconnectFromBus(QStringLiteral("client")); }

    QDBusMessage call(const QString& interface, const QString& method, const QVariantList& args)
    {
        QDBusMessage message = QDBusMessage::createMethodCall(kService, kPath, interface, method);
        message.setArguments(args);
        QDBusPendingCall pending = bus.asyncCall(message);
        if (!QTest::qWaitFor([&] { return pending.isFinished(); }, 10000))
            return QDBusMessage(); // no answer: an invalid message
        return pending.reply();
    }

    QVariantMap properties(const QString& interface)
    {
        const QDBusMessage reply = call(kProperties, QStringLiteral("GetAll"), {interface});
        return reply.arguments().isEmpty()
                   ? QVariantMap()
                   : qdbus_cast<QVariantMap>(reply.arguments().constFirst());
    }

    QVariantMap metadata()
    {
        return qdbus_cast<QVariantMap>(properties(kPlayer).value(QStringLiteral("Metadata")));
    }

    QDBusConnection bus;
    QList<QVariantMap> changes;
    QList<qlonglong> seeks;

public Q_SLOTS:
    void onPropertiesChanged(const QString&, const QVariantMap& changed, const QStringList&)
    {
        changes << changed;
    }
    void onSeeked(qlonglong position) { seeks << position; }
};

std::optional<OSDMessage::Kind> indicator(const PlaybackEngine& engine)
{
    const auto message = engine.osd()->currentMessage();
    return message ? std::optional(message->kind()) : std::nullopt;
}

} // namespace

class NowPlayingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void playerctlDrivesTheEngine()
    {
        auto engine = makeSilentEngine();
        PlayerWindow window(engine.get());
        QVERIFY(window.showAndWaitForRenderContext());
        BusClient client;

        // Idle: reported as paused with no track, and play-pause leaves it alone.
        QCOMPARE(playerctl({QStringLiteral("status")}), QStringLiteral("Paused"));
        // playerctl quotes object paths, and only those.
        QCOMPARE(playerctl({QStringLiteral("metadata"), QStringLiteral("mpris:trackid")}),
                 QStringLiteral("'/org/mpris/MediaPlayer2/TrackList/NoTrack'"));
        QCOMPARE(playerctl({QStringLiteral("play-pause")}), QString());
        QCOMPARE(engine->state().kind(), Kind::Idle);
        QCOMPARE(indicator(*engine), std::nullopt);

        PlaylistManager& playlist = *engine->playlist();
        playlist.add(fixtureUrl(QStringLiteral("clip60.mp4")));
        playlist.add(fixtureUrl(QStringLiteral("clip10.mp4")));
        // While a file is loading a toggle has nothing to act on. The load waits on a timer,
        // so holding timers keeps it loading for as long as the command takes.
        engine->open(*playlist.play(0));
        QCOMPARE(engine->state().kind(), Kind::Loading);
        QCOMPARE(playerctl({QStringLiteral("play-pause")}, Timers::Held), QString());
        QCOMPARE(engine->state().kind(), Kind::Loading);
        QCOMPARE(indicator(*engine), std::nullopt);
        QTRY_COMPARE_WITH_TIMEOUT(engine->state().kind(), Kind::Playing, 20000);

        QTRY_COMPARE_WITH_TIMEOUT(playerctl({QStringLiteral("metadata"), QStringLiteral("title")}),
                                  QStringLiteral("clip60"), 20000);
        QCOMPARE(playerctl({QStringLiteral("status")}), QStringLiteral("Playing"));
        QCOMPARE(playerctl({QStringLiteral("metadata"), QStringLiteral("mpris:length")}),
                 QString::number(std::llround(engine->duration() * 1e6)));
        const QString firstTrack =
            playerctl({QStringLiteral("metadata"), QStringLiteral("mpris:trackid")});
        QVERIFY2(firstTrack.startsWith(QLatin1String("'/org/velmar/")), qPrintable(firstTrack));

        QCOMPARE(playerctl({QStringLiteral("play-pause")}), QString());
        QCOMPARE(engine->state().kind(), Kind::Paused);
        QCOMPARE(indicator(*engine), OSDMessage::Kind::Paused);
        QCOMPARE(playerctl({QStringLiteral("status")}), QStringLiteral("Paused"));
        QCOMPARE(playerctl({QStringLiteral("position")}),
                 seconds(double(std::llround(engine->currentTime() * 1e6)) / 1e6));

        QCOMPARE(playerctl({QStringLiteral("position"), QStringLiteral("42.5")}), QString());
        QCOMPARE(engine->currentTime(), 42.5);
        QCOMPARE(playerctl({QStringLiteral("position")}), seconds(42.5));
        QTRY_COMPARE_WITH_TIMEOUT(client.seeks, QList<qlonglong>{42500000}, 20000);
        // Beyond the end of the track is not a place to go.
        QCOMPARE(playerctl({QStringLiteral("position"), QStringLiteral("75")}), QString());
        QCOMPARE(engine->currentTime(), 42.5);

        QCOMPARE(playerctl({QStringLiteral("play-pause")}), QString());
        QCOMPARE(engine->state().kind(), Kind::Playing);
        QCOMPARE(indicator(*engine), OSDMessage::Kind::Playing);
        QCOMPARE(playerctl({QStringLiteral("status")}), QStringLiteral("Playing"));

        QCOMPARE(playerctl({QStringLiteral("next")}), QString());
        QTRY_COMPARE_WITH_TIMEOUT(engine->mediaTitle(), QStringLiteral("clip10"), 20000);
        QTRY_COMPARE_WITH_TIMEOUT(playerctl({QStringLiteral("metadata"), QStringLiteral("title")}),
                                  QStringLiteral("clip10"), 20000);
        const QString secondTrack =
            playerctl({QStringLiteral("metadata"), QStringLiteral("mpris:trackid")});
        QVERIFY2(secondTrack.startsWith(QLatin1String("'/org/velmar/")), qPrintable(secondTrack));
        QVERIFY(secondTrack != firstTrack);
        QCOMPARE(playerctl({QStringLiteral("previous")}), QString());
        QTRY_COMPARE_WITH_TIMEOUT(engine->mediaTitle(), QStringLiteral("clip60"), 20000);
        QTRY_COMPARE_WITH_TIMEOUT(
            playerctl({QStringLiteral("metadata"), QStringLiteral("mpris:trackid")}), firstTrack,
            20000);

        // The end of the last item leaves the player paused.
        playlist.play(1);
        loadAndWait(*engine, playlist.items()[1].url);
        QTRY_COMPARE_WITH_TIMEOUT(playerctl({QStringLiteral("metadata"), QStringLiteral("title")}),
                                  QStringLiteral("clip10"), 20000);
        QCoro::waitFor(engine->seek(engine->duration() - 0.3));
        QTRY_VERIFY_WITH_TIMEOUT(engine->isAtEnd(), 30000);
        QCOMPARE(playerctl({QStringLiteral("status")}), QStringLiteral("Paused"));
    }

    void onlyChangesReachTheBus()
    {
        auto engine = makeSilentEngine();
        PlayerWindow window(engine.get());
        QVERIFY(window.showAndWaitForRenderContext());
        BusClient client;

        loadAndWait(*engine, fixtureUrl(QStringLiteral("clip30.mp4")));
        QTest::qWait(5000);
        QStringList announced;
        for (const QVariantMap& change : std::as_const(client.changes))
            announced << change.keys();
        qInfo() << client.changes.size()
                << "PropertiesChanged in load and 5 s of playback:" << announced;
        QVERIFY(client.changes.size() <= 3);
        QCOMPARE(client.changes.constFirst(),
                 (QVariantMap{{QStringLiteral("PlaybackStatus"), QStringLiteral("Playing")}}));
        QVERIFY(!announced.contains(QStringLiteral("Position")));
        QCOMPARE(client.seeks, QList<qlonglong>());

        // A seek while playing, and one while paused, are each announced once, with the
        // place where they landed.
        QCoro::waitFor(engine->seekRelative(10));
        QTRY_COMPARE_WITH_TIMEOUT(client.seeks.size(), 1, 20000);
        QVERIFY(client.seeks[0] >= 10000000);
        client.changes.clear();
        engine->pause();
        QCoro::waitFor(engine->seek(3.25));
        QTRY_COMPARE_WITH_TIMEOUT(client.seeks, (QList<qlonglong>{client.seeks[0], 3250000}),
                                  20000);
        const QVariantMap paused{{QStringLiteral("PlaybackStatus"), QStringLiteral("Paused")}};
        QCOMPARE(client.changes, QList<QVariantMap>{paused});

        // A position request for another track is stale and ignored.
        const QVariantMap metadata = client.metadata();
        QCOMPARE(metadata.value(QStringLiteral("mpris:trackid")).metaType(),
                 QMetaType::fromType<QDBusObjectPath>());
        client.call(kPlayer, QStringLiteral("SetPosition"),
                    {QVariant::fromValue(QDBusObjectPath(QStringLiteral("/org/velmar/other"))),
                     qlonglong(20000000)});
        QCOMPARE(engine->currentTime(), 3.25);

        // The rate is published as set; remote rate changes are not taken.
        engine->setPlaybackRate(2.0f);
        engine->play();
        QTRY_VERIFY_WITH_TIMEOUT(
            client.changes.contains(QVariantMap{{QStringLiteral("Rate"), 2.0}}), 20000);
        client.call(kProperties, QStringLiteral("Set"),
                    {kPlayer, QStringLiteral("Rate"), QVariant::fromValue(QDBusVariant(1.0))});
        QCOMPARE(engine->playbackRate(), 2.0f);
        const QVariantMap player = client.properties(kPlayer);
        QCOMPARE(player.value(QStringLiteral("Rate")), QVariant(2.0));
        QCOMPARE(player.value(QStringLiteral("MinimumRate")), QVariant(0.25));
        QCOMPARE(player.value(QStringLiteral("MaximumRate")), QVariant(4.0));
    }

    void rootInterface()
    {
        auto engine = makeSilentEngine();
        BusClient client;
        const QVariantMap root = client.properties(QStringLiteral("org.mpris.MediaPlayer2"));
        QCOMPARE(root.value(QStringLiteral("Identity")), QVariant(QStringLiteral("VelmarPlayer")));
        QCOMPARE(root.value(QStringLiteral("DesktopEntry")),
                 QVariant(QStringLiteral("velmarplayer")));
        const QStringList types = root.value(QStringLiteral("SupportedMimeTypes")).toStringList();
        QVERIFY(types.contains(QStringLiteral("video/mp4")));
        QVERIFY(types.contains(QStringLiteral("video/x-matroska")));
        QVERIFY(types.contains(QStringLiteral("image/png")));
        for (const QString& type : types)
            QVERIFY2(type.startsWith(QLatin1String("video/")) ||
                         type.startsWith(QLatin1String("image/")),
                     qPrintable(type));

        QSignalSpy raised(engine->nowPlaying(), &NowPlayingManager::raiseRequested);
        client.call(QStringLiteral("org.mpris.MediaPlayer2"), QStringLiteral("Raise"), {});
        QCOMPARE(raised.size(), 1);

        // Local files handed over by URI go to the application; other schemes are not taken.
        QSignalSpy opened(engine->nowPlaying(), &NowPlayingManager::openRequested);
        QCOMPARE(
            playerctl({QStringLiteral("open"), QStringLiteral("http://example.invalid/a.mp4")}),
            QString());
        const QUrl file = fixtureUrl(QStringLiteral("tracks.mkv"));
        QCOMPARE(playerctl({QStringLiteral("open"), file.toString()}), QString());
        QCOMPARE(opened.size(), 1);
        QCOMPARE(opened[0][0].toUrl(), file);
    }

    void offTheBusThePlayerRunsOn()
    {
        // Another program holds the player's name: one line, and playback is unaffected.
        QDBusConnection rival =
            QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("rival"));
        QVERIFY(rival.registerService(kService));
        std::unique_ptr<PlaybackEngine> engine;
        QStringList lines = printedLines([&] { engine = makeSilentEngine(); });
        QCOMPARE(lines.filter(QStringLiteral("[NowPlayingManager]")).size(), 1);
        QVERIFY(!engine->nowPlaying()->isOnBus());
        loadAndWait(*engine, fixtureUrl(QStringLiteral("audio-only.m4a")));
        QCOMPARE(engine->state().kind(), Kind::Playing);
        engine.reset();
        QDBusConnection::disconnectFromBus(QStringLiteral("rival"));

        // No bus at all, and an engine that goes away: commands then do nothing.
        NowPlayingManager manager{QDBusConnection(QStringLiteral("no such connection"))};
        engine = makeSilentEngine();
        manager.setEngine(engine.get());
        lines = printedLines([&] { manager.setupRemoteCommands(); });
        QCOMPARE(lines, QStringList{QStringLiteral("[NowPlayingManager] No session bus: media "
                                                   "keys and desktop media controls are off")});
        engine.reset();
        manager.play();
        manager.togglePlayPause();
        manager.changePlaybackPosition(4);
        manager.nextTrack();
        manager.previousTrack();
        manager.updateNowPlayingInfo(QStringLiteral("gone"), 1, 2, 1);
        QVERIFY(!manager.isOnBus());
    }

    void theApplicationOpensAndQuits()
    {
        QProcess player;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        // The GL driver's own one-off allocations at exit are not this test's concern.
        environment.insert(QStringLiteral("ASAN_OPTIONS"), QStringLiteral("detect_leaks=0"));
        player.setProcessEnvironment(environment);
        player.start(QStringLiteral(VELMAR_PLAYER_EXECUTABLE),
                     {fixturePath(QStringLiteral("clip10.mp4"))});
        QTRY_COMPARE_WITH_TIMEOUT(playerctl({QStringLiteral("status")}), QStringLiteral("Playing"),
                                  20000);
        QCOMPARE(playerctl(
                     {QStringLiteral("open"), fixtureUrl(QStringLiteral("tracks.mkv")).toString()}),
                 QString());
        QTRY_COMPARE_WITH_TIMEOUT(playerctl({QStringLiteral("metadata"), QStringLiteral("title")}),
                                  QStringLiteral("tracks"), 20000);

        BusClient client;
        client.call(QStringLiteral("org.mpris.MediaPlayer2"), QStringLiteral("Quit"), {});
        QTRY_COMPARE_WITH_TIMEOUT(player.state(), QProcess::NotRunning, 20000);
        QCOMPARE(player.exitStatus(), QProcess::NormalExit);
        QCOMPARE(player.exitCode(), 0);
    }
};

VELMAR_TEST_MAIN(NowPlayingTest)
#include "tst_nowplaying.moc"
