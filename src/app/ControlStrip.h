#pragma once

#include <QObject>
#include <QPointer>
#include <QTimer>
#include <QtQml/qqmlregistration.h>

class PlaybackEngine;

/// The small set of controls of the floating video window: a play/pause button, a seek slider
/// and the time. It follows the position by looking every half second while it runs, which is
/// cheap and keeps a strip that is mostly hidden from reacting to every position tick; a change
/// of state (a tap on its button) shows at once.
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
    explicit ControlStrip(PlaybackEngine& engine, QObject* parent = nullptr);

    bool isPlaying() const { return m_isPlaying; }
    double sliderValue() const { return m_sliderValue; }
    QString timeText() const { return m_timeText; }
    bool running() const { return m_sync.isActive(); }
    void setRunning(bool running);

    /// Seeks to the fraction of the duration; every slider move seeks.
    Q_INVOKABLE void seekSliderChanged(double value);
    void syncState();

Q_SIGNALS:
    void synced();
    void runningChanged();

private:
    QPointer<PlaybackEngine> m_engine;
    QTimer m_sync;
    bool m_isPlaying = false;
    double m_sliderValue = 0;
    QString m_timeText;
};
