#pragma once

#include "model/Bookmark.h"

#include <optional>
#include <QCoroTask>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QtQml/qqmlregistration.h>
#include <QUrl>

class PlaybackEngine;
class OSDMessage;

/// What the user asks of the player, whichever way the request comes: the keyboard, the
/// desktop's media controls, the window's own controls. Each command acts on the engine, then
/// says what it did on the on-screen display, so a request reads the same from every hand.
/// Requests that need media do nothing, and say nothing, without it.
///
/// GUI thread only. Asynchronous commands run on by themselves and re-check the engine after
/// every suspension.
class UserCommands : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The application creates the commands")

public:
    explicit UserCommands(PlaybackEngine& engine, QObject* parent = nullptr);

    /// Plays when paused, pauses when playing, and shows which; nothing in any other state.
    Q_INVOKABLE void togglePlayPause();
    Q_INVOKABLE void seekBy(double seconds);
    Q_INVOKABLE void adjustVolume(float delta);
    Q_INVOKABLE void setVolume(float volume);
    Q_INVOKABLE void toggleMute();
    Q_INVOKABLE void setPlaybackRate(float rate);
    Q_INVOKABLE void cyclePlaybackRate();
    Q_INVOKABLE void stepFrame(bool forward);
    Q_INVOKABLE void setLoopPointA();
    Q_INVOKABLE void setLoopPointB();
    Q_INVOKABLE void clearLoop();
    /// Turns the picture by a quarter: clockwise, or counter-clockwise with `clockwise` false.
    Q_INVOKABLE void rotate(bool clockwise = true);
    Q_INVOKABLE void setRotation(int degrees);
    Q_INVOKABLE void setAudioDelay(double seconds);
    Q_INVOKABLE void adjustAudioDelay(double delta);
    Q_INVOKABLE void resetAudioDelay();

    // Tracks, subtitles, screenshots and bookmarks (UserCommandsMedia.cpp).
    Q_INVOKABLE void cycleSubtitleTrack();
    Q_INVOKABLE void cycleAudioTrack();
    /// 0 turns subtitles off.
    Q_INVOKABLE void selectSubtitleTrack(qint64 id);
    Q_INVOKABLE void selectAudioTrack(qint64 id);
    /// Loads subtitle files into the open video and selects the last; each is announced.
    Q_INVOKABLE void addSubtitles(const QList<QUrl>& urls);
    Q_INVOKABLE void removeSubtitle(qint64 id);
    /// Saves the frame as a PNG in the screenshot folder and shows it in the file manager.
    Q_INVOKABLE void takeScreenshot();
    /// Bookmarks the current position; its picture is captured in the background.
    Q_INVOKABLE void addBookmark();
    Q_INVOKABLE void seekToNextBookmark();
    Q_INVOKABLE void seekToPreviousBookmark();
    Q_INVOKABLE void seekToBookmark(double seconds);

    /// Show the volume and the mute as they stand (the start-up restore of saved ones says so).
    void announceVolume();
    void announceMute();
    /// Shows a message of the application's own (a folder without videos, the library).
    void say(const QString& text) { announceText(text); }

private:
    QCoro::Task<void> seekToBookmark(std::optional<Bookmark> bookmark, QString mark);
    void announce(const OSDMessage& message, double seconds = 1.5);
    void announceText(const QString& text);

    QPointer<PlaybackEngine> m_engine;
};
