#pragma once

#include <QObject>
#include <QPointer>
#include <QRect>

class QWindow;
class WindowState;

/// Keeps the main window's frame: restores the saved frame when attached, saves every move and
/// resize made outside full screen, and switches full screen, returning to the frame the window
/// had before (or the saved one, or 200,200 1280x720). Frames are Qt window geometry. GUI thread.
class MainWindowGeometry : public QObject
{
    Q_OBJECT

public:
    static constexpr QRect fallbackWindowedFrame{200, 200, 1280, 720};

    MainWindowGeometry(QWindow* window, WindowState* state, QObject* parent = nullptr);

    void toggleFullScreen();
    void enterFullScreen();
    void exitFullScreen();

private:
    void saveFrame();

    QPointer<QWindow> m_window;
    QPointer<WindowState> m_state;
};
