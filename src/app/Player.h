#pragma once

#include <memory>
#include <QObject>
#include <QString>

class ControlStrip;
class DesktopMediaControls;
class KeyBindingManager;
class KeyDispatch;
class Library;
class NowPlayingManager;
class PlaybackEngine;
class PlaybackFollowers;
class SleepPreventer;
class UserCommands;

/// The running player without its window: the library, the engine, the commands that act on
/// it, and everything that drives or follows it (the keys, the desktop's media controls, the
/// screen saver, the saved volume). The application builds one, and so do the tests.
///
/// GUI thread only. Going away, it writes down where the current file stands and waits a
/// moment for the library to store it.
class Player : public QObject
{
    Q_OBJECT

public:
    /// A player whose library lives in the database file at `libraryPath`.
    explicit Player(const QString& libraryPath, QObject* parent = nullptr);
    ~Player() override;

    /// The desktop services the first frame does not need: the media controls on the session
    /// bus, the screen saver, and the library's retention clean-up. Later calls do nothing.
    void startDesktopServices();

    Library& library() const { return *m_library; }
    PlaybackEngine& engine() const { return *m_engine; }
    UserCommands& commands() const { return *m_commands; }
    KeyBindingManager& keyBindings() const { return *m_keyBindings; }
    KeyDispatch& keyDispatch() const { return *m_keyDispatch; }
    NowPlayingManager& nowPlaying() const { return *m_nowPlaying; }
    SleepPreventer& sleepPreventer() const { return *m_sleepPreventer; }
    ControlStrip& controlStrip() const { return *m_controlStrip; }

private:
    // Declared in the order they are made; they go in reverse, the library last.
    std::unique_ptr<Library> m_library;
    std::unique_ptr<PlaybackEngine> m_engine;
    std::unique_ptr<UserCommands> m_commands;
    std::unique_ptr<KeyBindingManager> m_keyBindings;
    std::unique_ptr<KeyDispatch> m_keyDispatch;
    std::unique_ptr<NowPlayingManager> m_nowPlaying;
    std::unique_ptr<DesktopMediaControls> m_mediaControls;
    std::unique_ptr<SleepPreventer> m_sleepPreventer;
    std::unique_ptr<ControlStrip> m_controlStrip;
    std::unique_ptr<PlaybackFollowers> m_followers;
    bool m_desktopServicesStarted = false;
};
