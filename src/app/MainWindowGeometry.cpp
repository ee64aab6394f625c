#include "MainWindowGeometry.h"

#include "features/window/WindowState.h"

#include <QWindow>

namespace {
constexpr int kSettleMs = 300;
} // namespace

MainWindowGeometry::MainWindowGeometry(QWindow* window, WindowState* state, QObject* parent)
    : QObject(parent)
    , m_window(window)
    , m_state(state)
{
    if (const std::optional<QRectF> saved = m_state->loadSavedFrame())
        m_window->setGeometry(saved->toRect());
    m_lastWindowedFrame = m_window->geometry();

    m_settle.setSingleShot(true);
    m_settle.setInterval(kSettleMs);
    connect(&m_settle, &QTimer::timeout, this, [this] {
        saveSettledFrame();
        Q_EMIT frameSettled();
    });
    for (auto changed :
         {&QWindow::xChanged, &QWindow::yChanged, &QWindow::widthChanged, &QWindow::heightChanged})
        connect(m_window, changed, &m_settle, qOverload<>(&QTimer::start));
    connect(m_window, &QWindow::visibilityChanged, this, &MainWindowGeometry::followVisibility);
}

bool MainWindowGeometry::isWindowed() const
{
    const QWindow::Visibility visibility = m_window->visibility();
    return visibility != QWindow::FullScreen && visibility != QWindow::Hidden;
}

void MainWindowGeometry::followVisibility()
{
    if (!m_window || !m_state)
        return;
    const bool fullScreen = m_window->visibility() == QWindow::FullScreen;
    if (fullScreen && !m_state->isFullscreen()) {
        // The frame to return to is the last one that settled before the switch.
        m_settle.stop();
        m_state->setPriorWindowedFrame(QRectF(m_lastWindowedFrame));
    }
    m_state->setIsFullscreen(fullScreen);
}

void MainWindowGeometry::saveSettledFrame()
{
    if (!m_window || !m_state || m_state->isFullscreen() || !isWindowed())
        return;
    m_lastWindowedFrame = m_window->geometry();
    m_state->saveFrame(QRectF(m_lastWindowedFrame));
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
    if (m_settle.isActive()) // a move still settling is the frame to come back to
        saveSettledFrame();
    m_state->setPriorWindowedFrame(QRectF(m_lastWindowedFrame));
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
}
