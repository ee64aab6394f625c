#pragma once

#include "KeyBinding.h"

#include <QElapsedTimer>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QtQml/qqmlregistration.h>

class PlaybackEngine;
class QKeyEvent;
class QQuickWindow;

/// The live key-binding table: loaded from and saved to the preferences, matched against key
/// presses in the main window, and turned into engine calls. Held seek keys repeat at most ten
/// times a second; other keys repeat freely. GUI thread only.
class KeyBindingManager : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Owned by the playback engine")

public:
    static inline const QString storageKey = QStringLiteral("VelmarPlayer.KeyBindings");

    /// Loads the stored table; actions it lacks get their default keys after the stored ones.
    /// A table that cannot be read is ignored in favour of the defaults (and left stored).
    explicit KeyBindingManager(QObject* parent = nullptr);

    const QList<KeyBinding>& bindings() const { return m_bindings; }
    void setEngine(PlaybackEngine* engine);

    /// Starts (or stops) taking key presses from the main window.
    void start(QQuickWindow* mainWindow);
    void stop();

    /// Rebinds the action in place and saves; an earlier binding of the same key still wins.
    void updateBinding(PlayerAction action, quint16 keyCode, quint64 modifiers);
    void resetToDefaults();

    /// Whether the key press was taken (and acted on, unless it was a throttled repeat).
    bool handleKeyEvent(const QKeyEvent& event);
    /// Runs one action against the engine.
    void executeAction(PlayerAction action);

Q_SIGNALS:
    void bindingsChanged();
    /// A bound key was pressed (and not swallowed as a too-fast repeat).
    void actionTriggered(PlayerAction action);
    /// The full-screen key; the main window's owner switches, as it knows the frames involved.
    void toggleFullScreenRequested();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void save();

    QPointer<PlaybackEngine> m_engine;
    QPointer<QQuickWindow> m_mainWindow;
    QElapsedTimer m_clock;
    qint64 m_lastSeekMs = -1;
    QList<KeyBinding> m_bindings;
};
