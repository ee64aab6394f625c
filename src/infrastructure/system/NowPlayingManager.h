#pragma once

#include <QDBusConnection>
#include <QDBusObjectPath>
#include <QElapsedTimer>
#include <QObject>
#include <QPointer>
#include <QTimer>
#include <QUrl>

class PlaybackEngine;
class MPRISPlayerAdaptor;

/// Tells the desktop what is playing and turns its media controls (media keys, headphone
/// buttons, the desktop's media widgets) into engine operations, over MPRIS 2 on the session
/// bus. Without a bus, or with the player's name already taken, it logs one line and the
/// player runs on without it.
///
/// GUI thread only: the bus delivers commands on the thread the manager lives on, and every
/// command answers at once, leaving asynchronous engine operations to run on by themselves.
class NowPlayingManager : public QObject
{
    Q_OBJECT

public:
    enum class PlaybackState { Playing, Paused };

    /// Serves on the session bus.
    explicit NowPlayingManager(QObject* parent = nullptr);
    /// Serves on `bus`.
    explicit NowPlayingManager(const QDBusConnection& bus, QObject* parent = nullptr);
    ~NowPlayingManager() override;

    /// The engine the commands drive and whose current file names the published track.
    /// Held weakly: once it is gone every command does nothing.
    void setEngine(PlaybackEngine* engine);

    /// Claims the player's name on the bus and starts answering. Call once.
    void setupRemoteCommands();
    /// Whether the desktop can see and command the player.
    bool isOnBus() const { return m_player != nullptr; }

    /// Publishes the title, the position and duration (seconds) and the playback rate as
    /// given (a paused player still reports its speed). Called many times a second while
    /// playing; the desktop is only told about values that changed.
    void updateNowPlayingInfo(const QString& title, double currentTime, double duration,
                              float rate);
    void setPlaybackState(PlaybackState state);

    // The remote commands. Each does nothing once the engine is gone.
    void play();
    void pause();
    /// Plays when paused, pauses when playing, with the on-screen indicator; else nothing.
    void togglePlayPause();
    /// Seeks to the position (seconds).
    void changePlaybackPosition(double seconds);
    void nextTrack();
    void previousTrack();
    /// Asks whoever owns the main window to bring it forward.
    void requestRaise() { Q_EMIT raiseRequested(); }
    /// Asks whoever opens files to open this one, as one handed over on the command line.
    void requestOpen(const QUrl& url) { Q_EMIT openRequested(url); }

Q_SIGNALS:
    void raiseRequested();
    void openRequested(const QUrl& url);

private:
    void followPosition(double seconds);
    QDBusObjectPath currentTrackId() const;

    QDBusConnection m_bus;
    QPointer<PlaybackEngine> m_engine;
    MPRISPlayerAdaptor* m_player = nullptr; // present exactly while on the bus
    PlaybackState m_state = PlaybackState::Paused;
    float m_rate = 1.0f;
    // Where the last position report put playback, and when: the next report is a seek when
    // it lands far from where playback alone would have taken it.
    double m_position = 0;
    QElapsedTimer m_sinceLastPosition;
    // A seek is announced once the position has settled, so that a drag on the seek bar or
    // libmpv catching up after a jump reaches the bus as one announcement.
    QTimer m_seekSettle;
};
