#pragma once

#include "infrastructure/preferences/PreferenceWriter.h"

#include <functional>
#include <memory>
#include <optional>
#include <QObject>
#include <QPointer>
#include <QQmlComponent>
#include <QQuickItem>
#include <QQuickWindow>
#include <QSizeF>
#include <QtQml/qqmlregistration.h>

/// Picture in picture: moves the very video item out of the main window into a floating,
/// frameless, always-on-top window, and back. No frames are copied: the item takes libmpv's
/// picture with it, and its render context moves from one window's render thread to the
/// other's.
///
/// The floating window is made from `windowComponent` (a QML window with an item named
/// "videoHost" to hold the video, below everything else); the application supplies it. Closing
/// that window in any way (its own button, Esc, the window manager) returns the video exactly
/// as `exitPiP` does, and each return runs `doneExiting` once.
///
/// GUI thread only.
class PiPManager : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The engine owns the one picture-in-picture manager")
    Q_PROPERTY(bool isActive READ isActive NOTIFY isActiveChanged)
    Q_PROPERTY(bool isPossible READ isPossible NOTIFY isPossibleChanged)
    Q_PROPERTY(QQuickItem* videoView READ videoView WRITE setVideoView NOTIFY videoViewChanged)
    Q_PROPERTY(QQmlComponent* windowComponent READ windowComponent WRITE setWindowComponent NOTIFY
                   windowComponentChanged)
    Q_PROPERTY(bool playing READ playing NOTIFY playingChanged)

public:
    explicit PiPManager(QObject* parent = nullptr);
    ~PiPManager() override;

    bool isActive() const { return m_isActive; }
    /// The video item is in a window, so it can be moved out of it.
    bool isPossible() const { return m_isPossible; }
    QQuickItem* videoView() const { return m_videoView; }
    void setVideoView(QQuickItem* view);
    QQmlComponent* windowComponent() const { return m_windowComponent; }
    void setWindowComponent(QQmlComponent* component);
    /// Whether playback runs, for the floating window's play/pause control; whoever owns
    /// playback keeps it in step.
    bool playing() const { return m_playing; }
    void setPlaying(bool playing);
    /// The floating window while active.
    QQuickWindow* floatingWindow() const { return m_floatingWindow; }
    /// The aspect ratio the floating window keeps; none for an item that had no size.
    std::optional<QSizeF> lockedAspectRatio() const { return m_lockedAspectRatio; }

    /// Toggles playback; set by whoever acts for the user.
    std::function<void()> onTogglePlayPause;

    /// Asked for before the floating window's component arrives (the interface that declares
    /// it loads after the first frame), entering waits for it; asking again cancels.
    Q_INVOKABLE void enterPiP();
    Q_INVOKABLE void exitPiP();
    Q_INVOKABLE void toggle();

    // The floating window's controls. Play, pause and stop all toggle playback: stop does
    // not end the file or close the window.
    Q_INVOKABLE void actionPlay();
    Q_INVOKABLE void actionPause();
    Q_INVOKABLE void actionStop();

Q_SIGNALS:
    void isActiveChanged();
    void isPossibleChanged();
    void videoViewChanged();
    void windowComponentChanged();
    void playingChanged();
    /// The floating window came or went (null when it went).
    void floatingWindowChanged(QQuickWindow* window);

private:
    void updateIsPossible();
    void doneExiting();
    void restoreVideoView();
    QRect initialGeometry(const QQuickWindow& window) const;
    /// Where the floating window was last left, if that is still on a screen.
    std::optional<QRect> savedFrame() const;

    bool m_isActive = false;
    bool m_isPossible = false;
    bool m_playing = false;
    bool m_enterWhenComponentArrives = false;
    QPointer<QQuickItem> m_videoView;
    QPointer<QQmlComponent> m_windowComponent;
    QPointer<QQuickWindow> m_floatingWindow;
    std::optional<QSizeF> m_lockedAspectRatio;
    QPointer<QQuickItem> m_originalParent;
    QPointer<QQuickItem> m_originalNextSibling; // the video goes back below it
    QPointer<QQuickWindow> m_originalWindow;
    PreferenceWriter m_writer;
};
