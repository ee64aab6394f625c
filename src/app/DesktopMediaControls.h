#pragma once

#include <QObject>
#include <QPointer>
#include <QTimer>
#include <QUrl>

class NowPlayingManager;
class PlaybackEngine;
class UserCommands;

/// Joins the desktop's media controls to the player, both ways: what plays is published as the
/// engine's state changes, so no path (an image, an error, the end of a file) can leave it
/// stale, and the desktop's requests become the player's own commands. GUI thread only.
class DesktopMediaControls : public QObject
{
    Q_OBJECT

public:
    DesktopMediaControls(NowPlayingManager& mpris, PlaybackEngine& engine, UserCommands& commands,
                         QObject* parent = nullptr);

private:
    void publishState();
    void publishTrack();

    // The track is published once its file has opened, and once per turn of the event loop:
    // a new file's title and duration reach the desktop as one change.
    QTimer m_trackChanged;
    QUrl m_publishedURL;

    QPointer<NowPlayingManager> m_mpris;
    QPointer<PlaybackEngine> m_engine;
};
