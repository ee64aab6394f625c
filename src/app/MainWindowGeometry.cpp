#include "MainWindowGeometry.h"

#include "core/model/WindowState.h"

#include <QWindow>

MainWindowGeometry::MainWindowGeometry(QWindow* window, WindowState* state, QObject* parent)
    : QObject(parent)
    , m_window(window)
    , m_state(state)
{
    if (const std::optional<QRectF> saved = m_state->loadSavedFrame())
        m_window->setGeometry(saved->toRect());

    for (auto changed :
         {&QWindow::xChanged, &QWindow::yChanged, &QWindow::widthChanged, &QWindow::heightChanged})
        connect(m_window, changed, this, &MainWindowGeometry::saveFrame);
}

void MainWindowGeometry::toggleFullScreen()
{
    if (m_state->isFullscreen())
        exitFullScreen();
    else
        enterFullScreen();
}

void MainWindowGeometry::enterFullScreen()
{
    if (!m_window || m_state->isFullscreen())
        return;
    m_state->setPriorWindowedFrame(QRectF(m_window->geometry()));
    // Set first: the geometry changes of the switch itself must not become the saved frame.
    m_state->setIsFullscreen(true);
    m_window->showFullScreen();
}

void MainWindowGeometry::exitFullScreen()
{
    if (!m_window || !m_state->isFullscreen())
        return;
    QRect target = fallbackWindowedFrame;
    if (const std::optional<QRectF> prior = m_state->priorWindowedFrame())
        target = prior->toRect();
    else if (const std::optional<QRectF> saved = m_state->loadSavedFrame())
        target = saved->toRect();
    m_window->showNormal();
    m_window->setGeometry(target);
    m_state->setIsFullscreen(false);
}

void MainWindowGeometry::saveFrame()
{
    if (!m_window || !m_state || m_state->isFullscreen())
        return;
    if (m_window->visibility() == QWindow::FullScreen || m_window->visibility() == QWindow::Hidden)
        return;
    m_state->saveFrame(QRectF(m_window->geometry()));
}
