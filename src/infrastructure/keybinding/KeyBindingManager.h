#pragma once

#include "infrastructure/preferences/PreferenceWriter.h"
#include "KeyBinding.h"

#include <QElapsedTimer>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QtQml/qqmlregistration.h>

class QKeyEvent;
class QQuickWindow;

/// The live key-binding table: loaded from and saved to the preferences, and matched against
/// key presses in the main window. A bound key announces its action with `actionTriggered`;
/// whoever drives the player acts on it. Held seek keys repeat at most ten times a second;
/// other keys repeat freely. GUI thread only.
class KeyBindingManager : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Owned by the application")

public:
    /// Loads the stored table; actions it lacks get their default keys after the stored ones.
    /// A table that cannot be read is ignored in favour of the defaults (and left stored).
    explicit KeyBindingManager(QObject* parent = nullptr);

    const QList<KeyBinding>& bindings() const { return m_bindings; }

    /// Starts (or stops) taking key presses from the main window.
    void start(QQuickWindow* mainWindow);
    void stop();
    /// Also takes key presses from this window (the floating video window), or from no other
    /// window with null.
    void setFloatingWindow(QQuickWindow* window);

    /// Rebinds the action in place and saves; an earlier binding of the same key still wins.
    void updateBinding(PlayerAction action, quint16 keyCode, quint64 modifiers);
    void resetToDefaults();

    /// Whether the key press was taken (and announced, unless it was a throttled repeat).
    bool handleKeyEvent(const QKeyEvent& event);

Q_SIGNALS:
    void bindingsChanged();
    /// A bound key was pressed (and not swallowed as a too-fast repeat).
    void actionTriggered(PlayerAction action);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool keysBelongToPlayer() const;
    void save();

    QPointer<QQuickWindow> m_mainWindow;
    QPointer<QQuickWindow> m_floatingWindow;
    QElapsedTimer m_clock;
    qint64 m_lastSeekMs = -1;
    QList<KeyBinding> m_bindings;
    PreferenceWriter m_writer; // saves a moment after the last change, and when it goes
};
