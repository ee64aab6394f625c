#pragma once

#include <QDBusConnection>
#include <QDBusObjectPath>
#include <QElapsedTimer>
#include <QObject>
#include <QTimer>
#include <QUrl>

class MPRISPlayerAdaptor;
class MPRISRootAdaptor;

/// Tells the desktop what is playing and hands on its media controls (media keys, headphone
/// buttons, the desktop's media widgets), over MPRIS 2 on the session bus. It knows nothing of
/// the player: its owner feeds it the playback state and acts on the requests it signals.
/// Without a bus, or with the player's name already taken, it logs one line and the player
/// runs on without it.
///
/// GUI thread only, and it never waits for the bus: the player's name is asked for and given
/// back asynchronously. The bus delivers commands on the thread the manager lives on, and
/// every command is answered at once, before its request is acted on.
class NowPlayingManager : public QObject
{
    Q_OBJECT

public:
    enum class PlaybackState { Playing, Paused, Stopped };

    /// Serves on the session bus.
    explicit NowPlayingManager(QObject* parent = nullptr);
    /// Serves on `bus`.
    explicit NowPlayingManager(const QDBusConnection& bus, QObject* parent = nullptr);
    ~NowPlayingManager() override;

    /// Starts answering on the bus and asks for the player's name; `busNameSettled` tells
    /// how that ended. Call once.
    void setupRemoteCommands();
    /// Whether the desktop can see and command the player.
    bool isOnBus() const { return m_ownsName; }

    /// The track of `url` (none for an empty URL) with its title, its duration and where
    /// playback stands in it, in seconds. A new file starting somewhere is not a seek.
    void setTrack(const QUrl& url, const QString& title, double duration, double position);
    /// Where playback is, in seconds. Called many times a second while playing; a jump that
    /// playback itself cannot explain is announced as a seek once the position settles.
    void followPosition(double seconds);
    void setPlaybackState(PlaybackState state);
    void setRate(double rate);
    /// 0…1.
    void setVolume(double volume);
    /// The slowest and fastest speeds the player offers.
    void setRateLimits(double minimum, double maximum);

    /// The id a track is published under: the same for the same file every time.
    static QDBusObjectPath trackId(const QUrl& url);

Q_SIGNALS:
    // What the desktop asks for. Times are seconds; volume 0…1.
    void playRequested();
    void pauseRequested();
    void playPauseRequested();
    void stopRequested();
    void nextRequested();
    void previousRequested();
    void seekRequested(double offset);
    void positionRequested(double seconds);
    void rateRequested(double rate);
    void volumeRequested(double volume);
    void raiseRequested();
    void openRequested(const QUrl& url);
    /// The player's name is the manager's (`isOnBus`), or it cannot be: another program holds
    /// it, or there is no bus.
    void busNameSettled();

private:
    void claimName();
    void giveUp(const QString& why);

    QDBusConnection m_bus;
    MPRISPlayerAdaptor* m_player = nullptr; // present while answering on the bus
    MPRISRootAdaptor* m_root = nullptr;
    bool m_nameRequested = false;
    bool m_ownsName = false;
    PlaybackState m_state = PlaybackState::Stopped;
    QDBusObjectPath m_trackId;
    QString m_title;
    double m_duration = 0;
    double m_rate = 1.0;
    double m_volume = 1.0;
    double m_minimumRate = 1.0;
    double m_maximumRate = 1.0;
    // Where the last position report put playback, and when: the next report is a seek when
    // it lands far from where playback alone would have taken it.
    double m_position = 0;
    QElapsedTimer m_sinceLastPosition;
    // A seek is announced once the position has settled, so that a drag on the seek bar or
    // libmpv catching up after a jump reaches the bus as one announcement.
    QTimer m_seekSettle;
};
