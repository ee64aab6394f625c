#include "Player.h"

#include "ControlStrip.h"
#include "DesktopMediaControls.h"
#include "engine/PlaybackEngine.h"
#include "features/pip/PiPManager.h"
#include "infrastructure/keybinding/KeyBindingManager.h"
#include "infrastructure/persistence/Library.h"
#include "infrastructure/preferences/Preferences.h"
#include "infrastructure/system/NowPlayingManager.h"
#include "infrastructure/system/SleepPreventer.h"
#include "KeyDispatch.h"
#include "PlaybackFollowers.h"
#include "UserCommands.h"

#include <QFileInfo>

Player::Player(const QString& libraryPath, QObject* parent)
    : QObject(parent)
    , m_library(std::make_unique<Library>(libraryPath))
    , m_engine(std::make_unique<PlaybackEngine>(*m_library))
    , m_commands(std::make_unique<UserCommands>(*m_engine))
    , m_keyBindings(std::make_unique<KeyBindingManager>())
    , m_keyDispatch(std::make_unique<KeyDispatch>(*m_commands, *m_engine))
    , m_nowPlaying(std::make_unique<NowPlayingManager>())
    , m_mediaControls(std::make_unique<DesktopMediaControls>(*m_nowPlaying, *m_engine, *m_commands))
    , m_sleepPreventer(std::make_unique<SleepPreventer>())
    , m_controlStrip(std::make_unique<ControlStrip>(*m_engine))
{
    connect(m_keyBindings.get(), &KeyBindingManager::actionTriggered, m_keyDispatch.get(),
            &KeyDispatch::execute);

    // Picture in picture: its key, its play/pause (the same rule as every other toggle), and
    // the keys of its floating window, which belong to the player as the main window's do.
    PiPManager* pip = m_engine->pip();
    connect(m_keyDispatch.get(), &KeyDispatch::pictureInPictureToggleRequested, pip,
            &PiPManager::toggle);
    pip->onTogglePlayPause = [commands = QPointer(m_commands.get())] {
        if (commands)
            commands->togglePlayPause();
    };
    connect(pip, &PiPManager::floatingWindowChanged, m_keyBindings.get(),
            &KeyBindingManager::setFloatingWindow);
    connect(pip, &PiPManager::isActiveChanged, m_controlStrip.get(),
            [this, pip] { m_controlStrip->setRunning(pip->isActive()); });

    // Trouble with the library is said once, so that nobody believes a bookmark is kept when
    // it is not, or wonders where the history went.
    connect(m_library.get(), &Library::damagedFileSetAside, m_commands.get(),
            [this](const QString& keptAs) {
                m_commands->say(
                    QStringLiteral("The library was damaged: it was kept as \u201c%1\u201d "
                                   "and a new one started")
                        .arg(QFileInfo(keptAs).fileName()));
            });
    connect(m_library.get(), &Library::cannotWrite, m_commands.get(), [this] {
        m_commands->say(QStringLiteral("History and bookmarks cannot be saved: the library "
                                       "is not writable"));
    });

    // The saved volume and mute come back before anything follows them, and say so when they
    // differ from the built-in full, unmuted sound.
    const Preferences preferences;
    if (const std::optional<float> volume = preferences.storedVolume();
        volume && *volume != m_engine->volume()) {
        m_engine->setVolume(*volume);
        m_commands->announceVolume();
    }
    if (preferences.storedIsMuted()) {
        m_engine->setIsMuted(true);
        m_commands->announceMute();
    }
    m_sleepPreventer->setHeld(true); // until the desktop services start
    m_followers = std::make_unique<PlaybackFollowers>(*m_engine, *m_sleepPreventer);
}

Player::~Player()
{
    m_engine->savePlace();
}

void Player::startDesktopServices()
{
    if (std::exchange(m_desktopServicesStarted, true))
        return;
    m_nowPlaying->setupRemoteCommands();
    m_sleepPreventer->setHeld(false);
    m_library->cleanupExpiredData();
}
