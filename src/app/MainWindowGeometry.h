#pragma once

#include <QObject>
#include <QPointer>
#include <QRect>
#include <QTimer>

class QWindow;
class WindowState;

/// Keeps the main window's frame: restores the saved frame when attached, saves it once a move
/// or resize outside full screen has settled, and switches full screen, returning to the frame
/// the window had before (or the saved one, or 200,200 1280x720). Full screen follows the
/// window itself, whoever switched it (the player, the window manager's button or shortcut).
/// Frames are Qt window geometry. GUI thread only.
class MainWindowGeometry : public QObject
{
    Q_OBJECT

public:
    static constexpr QRect fallbackWindowedFrame{200, 200, 1280, 720};

    MainWindowGeometry(QWindow* window, WindowState* state, QObject* parent = nullptr);

    void toggleFullScreen();
    void enterFullScreen();
    void exitFullScreen();

Q_SIGNALS:
    /// A move or resize has settled, and was saved unless the window was in full screen.
    void frameSettled();

private:
    bool isWindowed() const;
    void followVisibility();
    void saveSettledFrame();

    QPointer<QWindow> m_window;
    QPointer<WindowState> m_state;
    // Moves settle before they are saved: a switch to full screen moves the window first and
    // says so only afterwards, and a drag is one change, not hundreds.
    QTimer m_settle;
    QRect m_lastWindowedFrame;
};
