// The player on the desktop's session bus: playerctl, the reference client, drives it over
// MPRIS while a second connection watches what it announces, and a stand-in screen saver sees
// the display kept awake exactly while video plays.
#include "app/Player.h"
#include "app/UserCommands.h"
#include "engine/PlaybackEngine.h"
#include "features/osd/OSDManager.h"
#include "features/playlist/PlaylistManager.h"
#include "infrastructure/system/NowPlayingManager.h"
#include "support/TestSupport.h"

#include <QCoroTask>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCall>
#include <QDeadlineTimer>
#include <QProcess>
#include <QTemporaryDir>
#include <sys/stat.h>

using namespace velmar::test;
using Kind = PlayerState::Kind;

namespace {

const QString kService = QStringLiteral("org.mpris.MediaPlayer2.velmarplayer");
const QString kPath = QStringLiteral("/org/mpris/MediaPlayer2");
const QString kPlayer = QStringLiteral("org.mpris.MediaPlayer2.Player");
const QString kProperties = QStringLiteral("org.freedesktop.DBus.Properties");

/// Runs playerctl against the player while this thread keeps answering the bus. Gives its
/// output, or a description of its failure that no expected value matches.
QString playerctl(const QStringList& arguments)
{
    QProcess process;
    process.start(QStringLiteral("playerctl"),
                  QStringList{QStringLiteral("-p"), QStringLiteral("velmarplayer")} + arguments);
    const QDeadlineTimer deadline(10000);
    while (process.state() != QProcess::NotRunning) {
        if (deadline.hasExpired())
            return QStringLiteral("<playerctl did not finish>");
        QTest::qWait(10);
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

/// The desktop's screen saver, as the player sees it on the bus: who holds an inhibit.
class ScreenSaverStandIn : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.ScreenSaver")

public:
    ScreenSaverStandIn()
        : m_bus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("saver")))
    {
        m_bus.registerObject(QStringLiteral("/org/freedesktop/ScreenSaver"), this,
                             QDBusConnection::ExportAllSlots);
        m_bus.registerService(QStringLiteral("org.freedesktop.ScreenSaver"));
    }
    ~ScreenSaverStandIn() override
    {
        m_bus.unregisterService(QStringLiteral("org.freedesktop.ScreenSaver"));
        QDBusConnection::disconnectFromBus(QStringLiteral("saver"));
    }

    QList<uint> held;
    QStringList requests;

public Q_SLOTS:
    uint Inhibit(const QString& application, const QString& reason)
    {
        requests << application + QLatin1Char('|') + reason;
        held << ++m_lastCookie;
        return m_lastCookie;
    }
    void UnInhibit(uint cookie) { held.removeOne(cookie); }

private:
    QDBusConnection m_bus;
    uint m_lastCookie = 100;
};

} // namespace

class DesktopTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        freshStart();
        failOnWarnings();
    }

    void playerctlDrivesThePlayer()
    {
        TestPlayer player;
        PlaybackEngine& engine = player.engine();
        QVERIFY(player.show());
        BusClient client;

        // Nothing loaded: stopped, with no track, and play-pause leaves it alone.
        QCOMPARE(playerctl({QStringLiteral("status")}), QStringLiteral("Stopped"));
        QCOMPARE(playerctl({QStringLiteral("metadata"), QStringLiteral("mpris:trackid")}),
                 QStringLiteral("'/org/mpris/MediaPlayer2/TrackList/NoTrack'"));
        QCOMPARE(playerctl({QStringLiteral("play-pause")}), QString());
        QCOMPARE(engine.state().kind(), Kind::Idle);

        PlaylistManager& playlist = *engine.playlist();
        playlist.add(fixtureUrl(QStringLiteral("clip60.mp4")));
        playlist.add(fixtureUrl(QStringLiteral("clip10.mp4")));
        // While a file is loading a toggle has nothing to act on. A pipe nobody writes to
        // keeps the load waiting for as long as the command takes.
        QTemporaryDir folder;
        const QString pipe = folder.filePath(QStringLiteral("stalled.mkv"));
        QCOMPARE(mkfifo(pipe.toLocal8Bit().constData(), 0600), 0);
        engine.load(QUrl::fromLocalFile(pipe));
        QCOMPARE(playerctl({QStringLiteral("play-pause")}), QString());
        QCOMPARE(engine.state().kind(), Kind::Loading);
        QCOMPARE(indicator(engine), std::nullopt);
        player.open(*playlist.play(0));
        QCOMPARE(playerctl({QStringLiteral("metadata"), QStringLiteral("title")}),
                 QStringLiteral("clip60"));
        QCOMPARE(playerctl({QStringLiteral("status")}), QStringLiteral("Playing"));
        QCOMPARE(playerctl({QStringLiteral("metadata"), QStringLiteral("mpris:length")}),
                 QString::number(std::llround(engine.duration() * 1e6)));
        const QString firstTrack =
            playerctl({QStringLiteral("metadata"), QStringLiteral("mpris:trackid")});
        QVERIFY2(firstTrack.startsWith(QLatin1String("'/org/velmar/")), qPrintable(firstTrack));

        QCOMPARE(playerctl({QStringLiteral("play-pause")}), QString());
        QCOMPARE(engine.state().kind(), Kind::Paused);
        QCOMPARE(indicator(engine), OSDMessage::Kind::Paused);
        QCOMPARE(playerctl({QStringLiteral("status")}), QStringLiteral("Paused"));

        QCOMPARE(playerctl({QStringLiteral("position"), QStringLiteral("42.5")}), QString());
        QTRY_COMPARE(engine.currentTime(), 42.5);
        QCOMPARE(playerctl({QStringLiteral("position")}), seconds(42.5));
        QTRY_COMPARE_WITH_TIMEOUT(client.seeks, QList<qlonglong>{42500000}, 20000);
        QCOMPARE(playerctl({QStringLiteral("position"), QStringLiteral("75")}), QString());
        QCOMPARE(engine.currentTime(), 42.5); // beyond the end is not a place to go
        QCOMPARE(playerctl({QStringLiteral("position"), QStringLiteral("10+")}), QString());
        QTRY_COMPARE(engine.currentTime(), 52.5);
        QCOMPARE(playerctl({QStringLiteral("position"), QStringLiteral("60-")}), QString());
        QTRY_COMPARE(engine.currentTime(), 0.0);

        QCOMPARE(playerctl({QStringLiteral("volume"), QStringLiteral("0.5")}), QString());
        QTRY_COMPARE(engine.volume(), 0.5f);
        QCOMPARE(player.osdText(), QStringLiteral("Volume: 50%"));
        QCOMPARE(playerctl({QStringLiteral("volume")}), QStringLiteral("0.500000"));
        client.call(kProperties, QStringLiteral("Set"),
                    {kPlayer, QStringLiteral("Rate"), QVariant::fromValue(QDBusVariant(1.5))});
        QTRY_COMPARE(engine.playbackRate(), 1.5f);

        QCOMPARE(playerctl({QStringLiteral("play")}), QString());
        QCOMPARE(engine.state().kind(), Kind::Playing);
        QCOMPARE(playerctl({QStringLiteral("stop")}), QString()); // holds the picture
        QCOMPARE(engine.state().kind(), Kind::Paused);

        QCOMPARE(playerctl({QStringLiteral("next")}), QString());
        QTRY_COMPARE_WITH_TIMEOUT(engine.mediaTitle(), QStringLiteral("clip10"), 20000);
        QTRY_VERIFY(playerctl({QStringLiteral("metadata"), QStringLiteral("mpris:trackid")}) !=
                    firstTrack);
        QCOMPARE(playerctl({QStringLiteral("previous")}), QString());
        QTRY_COMPARE_WITH_TIMEOUT(
            playerctl({QStringLiteral("metadata"), QStringLiteral("mpris:trackid")}), firstTrack,
            20000);
    }

    void onlyChangesReachTheBus()
    {
        TestPlayer player;
        PlaybackEngine& engine = player.engine();
        BusClient client;
        player.open(fixtureUrl(QStringLiteral("clip30.mp4")));
        QTest::qWait(3000);
        QStringList announced;
        for (const QVariantMap& change : std::as_const(client.changes))
            announced << change.keys();
        QVERIFY2(client.changes.size() <= 3, qPrintable(announced.join(QLatin1Char(','))));
        QVERIFY(!announced.contains(QStringLiteral("Position")));
        QCOMPARE(client.seeks, QList<qlonglong>());

        // A seek while playing, and one while paused, are each announced once, with the
        // place where they landed.
        player.commands().seekBy(10);
        QTRY_COMPARE_WITH_TIMEOUT(client.seeks.size(), 1, 20000);
        QVERIFY(client.seeks[0] >= 10000000);
        engine.pause();
        QCoro::waitFor(engine.seek(3.25));
        QTRY_COMPARE_WITH_TIMEOUT(client.seeks, (QList<qlonglong>{client.seeks[0], 3250000}),
                                  20000);

        // A position request for another track is stale and ignored.
        client.call(kPlayer, QStringLiteral("SetPosition"),
                    {QVariant::fromValue(QDBusObjectPath(QStringLiteral("/org/velmar/other"))),
                     qlonglong(20000000)});
        QCOMPARE(engine.currentTime(), 3.25);
        const QVariantMap properties = client.properties(kPlayer);
        QCOMPARE(properties.value(QStringLiteral("MinimumRate")), QVariant(0.25));
        QCOMPARE(properties.value(QStringLiteral("MaximumRate")), QVariant(4.0));
    }

    void theScreenStaysAwakeExactlyWhilePlaying()
    {
        ScreenSaverStandIn saver;
        auto owner = std::make_unique<TestPlayer>();
        TestPlayer& player = *owner;
        PlaybackEngine& engine = player.engine();
        player.expectLibmpvErrors(); // the truncated file
        player.open(fixtureUrl(QStringLiteral("audio-only.m4a")));
        QTRY_COMPARE(saver.held.size(), 1);
        QCOMPARE(saver.requests,
                 QStringList{QStringLiteral("VelmarPlayer|VelmarPlayer video playback")});
        engine.pause();
        QTRY_VERIFY(saver.held.isEmpty());
        engine.play();
        QTRY_COMPARE(saver.held.size(), 1);

        // Whatever ends playback lets the display sleep and tells the desktop: an image after
        // a video, a file that cannot be played, the end of the last file.
        player.open(fixtureUrl(QStringLiteral("still.png")));
        QTRY_VERIFY(saver.held.isEmpty());
        QCOMPARE(playerctl({QStringLiteral("status")}), QStringLiteral("Stopped"));
        player.open(fixtureUrl(QStringLiteral("audio-only.m4a")));
        QTRY_COMPARE(saver.held.size(), 1);
        player.open(fixtureUrl(QStringLiteral("truncated.mp4")));
        QTRY_VERIFY(saver.held.isEmpty());
        QCOMPARE(playerctl({QStringLiteral("status")}), QStringLiteral("Stopped"));
        player.open(fixtureUrl(QStringLiteral("audio-only.m4a")));
        QCoro::waitFor(engine.seek(11.8));
        QTRY_VERIFY_WITH_TIMEOUT(engine.isAtEnd(), 30000);
        QTRY_VERIFY(saver.held.isEmpty());
        QCOMPARE(playerctl({QStringLiteral("status")}), QStringLiteral("Paused"));

        // A player that goes away while playing releases its hold, even when it leaves before
        // the granted cookie has reached it.
        engine.play();
        const QDeadlineTimer deadline(10000);
        while (saver.held.isEmpty() && !deadline.hasExpired())
            QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        QCOMPARE(saver.held.size(), 1);
        owner.reset();
        QTRY_VERIFY(saver.held.isEmpty());
    }

    void rootInterfaceAndOtherOwners()
    {
        TestPlayer player;
        BusClient client;
        const QVariantMap root = client.properties(QStringLiteral("org.mpris.MediaPlayer2"));
        QCOMPARE(root.value(QStringLiteral("Identity")), QVariant(QStringLiteral("VelmarPlayer")));
        QCOMPARE(root.value(QStringLiteral("DesktopEntry")),
                 QVariant(QStringLiteral("velmarplayer")));
        const QStringList types = root.value(QStringLiteral("SupportedMimeTypes")).toStringList();
        QVERIFY(types.contains(QStringLiteral("video/mp4")) &&
                types.contains(QStringLiteral("image/png")));

        QSignalSpy raised(&player.player().nowPlaying(), &NowPlayingManager::raiseRequested);
        client.call(QStringLiteral("org.mpris.MediaPlayer2"), QStringLiteral("Raise"), {});
        QCOMPARE(raised.size(), 1);
        // Local files handed over by URI go to the application; other schemes are not taken.
        QSignalSpy opened(&player.player().nowPlaying(), &NowPlayingManager::openRequested);
        playerctl({QStringLiteral("open"), QStringLiteral("http://example.invalid/a.mp4")});
        const QUrl file = fixtureUrl(QStringLiteral("tracks.mkv"));
        playerctl({QStringLiteral("open"), file.toString()});
        QCOMPARE(opened.size(), 1);
        QCOMPARE(opened[0][0].toUrl(), file);

        // Without a bus, or with the name taken, one line and the player runs on.
        NowPlayingManager offBus{QDBusConnection(QStringLiteral("no such connection"))};
        QCOMPARE(printedLines([&] { offBus.setupRemoteCommands(); }),
                 QStringList{QStringLiteral("[NowPlayingManager] No session bus: media keys and "
                                            "desktop media controls are off")});
        NowPlayingManager second;
        QSignalSpy settled(&second, &NowPlayingManager::busNameSettled);
        const QStringList lines = printedLines([&] {
            second.setupRemoteCommands();
            QTRY_COMPARE(settled.size(), 1);
        });
        QVERIFY2(lines.size() == 1, qPrintable(lines.join(QLatin1Char('\n'))));
        QVERIFY(!second.isOnBus());
        QVERIFY(player.player().nowPlaying().isOnBus());
    }
};

VELMAR_TEST_MAIN(DesktopTest)
#include "tst_desktop.moc"
