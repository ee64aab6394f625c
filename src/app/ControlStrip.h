#pragma once

#include <QObject>
#include <QPointer>
#include <QTimer>
#include <QtQml/qqmlregistration.h>

class PlaybackEngine;
class UserCommands;

/// The small set of controls of the floating video window: a play/pause button, a seek slider
/// and the time. It follows the engine by looking every half second while it runs, which is
/// cheap and keeps a strip that is mostly hidden from reacting to every position tick.
///
/// GUI thread only.
class ControlStrip : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The application creates the control strip")
    Q_PROPERTY(bool isPlaying READ isPlaying NOTIFY synced)
    /// 0…1; kept as it was while there is no duration.
    Q_PROPERTY(double sliderValue READ sliderValue NOTIFY synced)
    /// formatTime(current) + " / " + formatTime(duration).
    Q_PROPERTY(QString timeText READ timeText NOTIFY synced)
    /// Whether it follows the engine (while its window is up).
    Q_PROPERTY(bool running READ running WRITE setRunning NOTIFY runningChanged)

public:
    ControlStrip(PlaybackEngine& engine, UserCommands& commands, QObject* parent = nullptr);

    bool isPlaying() const { return m_isPlaying; }
    double sliderValue() const { return m_sliderValue; }
    QString timeText() const { return m_timeText; }
    bool running() const { return m_sync.isActive(); }
    void setRunning(bool running);

    /// Plays from paused and pauses from playing, saying so; nothing in any other state.
    Q_INVOKABLE void playPauseTapped();
    /// Seeks to the fraction of the duration; every slider move seeks.
    Q_INVOKABLE void seekSliderChanged(double value);
    void syncState();

Q_SIGNALS:
    void synced();
    void runningChanged();

private:
    QPointer<PlaybackEngine> m_engine;
    QPointer<UserCommands> m_commands;
    QTimer m_sync;
    bool m_isPlaying = false;
    double m_sliderValue = 0;
    QString m_timeText;
};
