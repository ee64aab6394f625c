#pragma once

#include "infrastructure/keybinding/PlayerAction.h"

#include <QObject>
#include <QPointer>

class PlaybackEngine;
class UserCommands;

/// What each keyboard action does: the bound key's action becomes a user command. Seek steps
/// are read from the preferences at every press, so a change in the settings applies at once.
/// GUI thread only.
class KeyDispatch : public QObject
{
    Q_OBJECT

public:
    KeyDispatch(UserCommands& commands, PlaybackEngine& engine, QObject* parent = nullptr);

    void execute(PlayerAction action);

Q_SIGNALS:
    /// The full-screen key; the main window's owner switches.
    void fullScreenToggleRequested();
    /// The picture-in-picture key.
    void pictureInPictureToggleRequested();

private:
    QPointer<UserCommands> m_commands;
    QPointer<PlaybackEngine> m_engine;
};
