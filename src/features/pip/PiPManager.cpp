#include "PiPManager.h"

#include "base/Log.h"
#include "infrastructure/preferences/Preferences.h"

#include <QGuiApplication>
#include <QScreen>

namespace {

constexpr int kScreenMargin = 24;
constexpr int kMinimumWidth = 240;
const QSizeF kFallbackAspect(16, 9);

QSize fitted(int width, const QSizeF& aspect)
{
    return QSize(width, qRound(width * aspect.height() / aspect.width()));
}

} // namespace

std::optional<QRect> PiPManager::savedFrame() const
{
    const QVariantMap map = Preferences().value(PreferenceKeys::pipFrame).toMap();
    const QRect frame(
        map.value(QStringLiteral("x")).toInt(), map.value(QStringLiteral("y")).toInt(),
        map.value(QStringLiteral("w")).toInt(), map.value(QStringLiteral("h")).toInt());
    // A frame on no screen any more (a monitor unplugged since) is not worth restoring.
    for (const QScreen* screen : QGuiApplication::screens()) {
        if (frame.width() >= kMinimumWidth && screen->availableGeometry().intersects(frame))
            return frame;
    }
    return std::nullopt;
}

PiPManager::PiPManager(QObject* parent)
    : QObject(parent)
{}

PiPManager::~PiPManager()
{
    doneExiting();
}

void PiPManager::setVideoView(QQuickItem* view)
{
    if (m_videoView == view)
        return;
    if (m_videoView)
        disconnect(m_videoView, nullptr, this, nullptr);
    m_videoView = view;
    if (m_videoView)
        connect(m_videoView, &QQuickItem::windowChanged, this, &PiPManager::updateIsPossible);
    updateIsPossible();
    Q_EMIT videoViewChanged();
}

void PiPManager::setWindowComponent(QQmlComponent* component)
{
    if (m_windowComponent == component)
        return;
    m_windowComponent = component;
    Q_EMIT windowComponentChanged();
    if (m_windowComponent && std::exchange(m_enterWhenComponentArrives, false))
        enterPiP();
}

void PiPManager::updateIsPossible()
{
    const bool possible = m_videoView && m_videoView->window();
    if (std::exchange(m_isPossible, possible) != possible)
        Q_EMIT isPossibleChanged();
}

void PiPManager::setPlaying(bool playing)
{
    if (std::exchange(m_playing, playing) != playing)
        Q_EMIT playingChanged();
}

void PiPManager::toggle()
{
    if (m_isActive)
        exitPiP();
    else if (std::exchange(m_enterWhenComponentArrives, false))
        return;
    else
        enterPiP();
}

void PiPManager::enterPiP()
{
    if (!m_videoView || !m_videoView->window() || !m_videoView->parentItem() || m_isActive)
        return;
    if (!m_windowComponent) {
        m_enterWhenComponentArrives = true;
        return;
    }
    // In the context the component was declared in, so that its bindings reach what it names.
    QObject* created = m_windowComponent->create(m_windowComponent->creationContext());
    auto* window = qobject_cast<QQuickWindow*>(created);
    if (!window) {
        delete created;
        velmar::logLine(QStringLiteral("[PiPManager] the floating window could not be made: ") +
                        m_windowComponent->errorString());
        return;
    }
    m_floatingWindow = window;
    m_originalParent = m_videoView->parentItem();
    m_originalWindow = m_videoView->window();
    const QList<QQuickItem*> siblings = m_originalParent->childItems();
    const qsizetype index = siblings.indexOf(m_videoView);
    m_originalNextSibling = index + 1 < siblings.size() ? siblings.at(index + 1) : nullptr;

    if (m_videoView->width() > 0 && m_videoView->height() > 0)
        m_lockedAspectRatio = m_videoView->size();
    const QSizeF aspect = m_lockedAspectRatio.value_or(QSizeF());
    window->setProperty("aspectRatio", aspect.isEmpty() ? 0.0 : aspect.width() / aspect.height());
    window->setGeometry(initialGeometry(*window));
    // Above every other window, without the window manager's frame: the picture is the window.
    window->setFlags(Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);

    auto* host = window->findChild<QQuickItem*>(QStringLiteral("videoHost"));
    m_videoView->setParentItem(host ? host : window->contentItem());
    // However the window is closed (and a closed window hides), the video comes back.
    connect(window, &QWindow::visibleChanged, this, [this](bool visible) {
        if (!visible)
            doneExiting();
    });
    window->show();
    window->requestActivate();

    m_isActive = true;
    Q_EMIT isActiveChanged();
    Q_EMIT floatingWindowChanged(window);
}

void PiPManager::exitPiP()
{
    if (m_isActive)
        doneExiting();
}

void PiPManager::doneExiting()
{
    if (!m_isActive)
        return;
    restoreVideoView();
    if (QQuickWindow* window = std::exchange(m_floatingWindow, nullptr)) {
        const QRect frame = window->geometry();
        m_writer.setValue(PreferenceKeys::pipFrame,
                          QVariantMap{{QStringLiteral("x"), frame.x()},
                                      {QStringLiteral("y"), frame.y()},
                                      {QStringLiteral("w"), frame.width()},
                                      {QStringLiteral("h"), frame.height()}});
        disconnect(window, nullptr, this, nullptr);
        window->hide();
        // Not at once: this may run inside the window's own close handling.
        window->deleteLater();
    }
    m_originalParent = nullptr;
    m_originalNextSibling = nullptr;
    m_originalWindow = nullptr;
    m_lockedAspectRatio.reset();
    m_isActive = false;
    Q_EMIT isActiveChanged();
    Q_EMIT floatingWindowChanged(nullptr);
}

void PiPManager::restoreVideoView()
{
    if (!m_videoView || !m_originalParent)
        return;
    QPointer<QQuickWindow> mainWindow = m_originalWindow;
    m_videoView->setParentItem(m_originalParent);
    // The video draws underneath whatever follows it, so it takes its old place in the stack.
    if (m_originalNextSibling && m_originalNextSibling->parentItem() == m_originalParent)
        m_videoView->stackBefore(m_originalNextSibling);
    if (mainWindow)
        mainWindow->requestActivate();
}

QRect PiPManager::initialGeometry(const QQuickWindow& window) const
{
    const QSizeF aspect = m_lockedAspectRatio.value_or(kFallbackAspect);
    if (const std::optional<QRect> saved = savedFrame())
        return QRect(saved->topLeft(), fitted(saved->width(), aspect));
    const QScreen* screen = m_originalWindow ? m_originalWindow->screen() : window.screen();
    const QRect available = screen ? screen->availableGeometry() : QRect(0, 0, 1280, 720);
    const QSize size = fitted(std::max(kMinimumWidth, available.width() / 4), aspect);
    return QRect(available.right() - kScreenMargin - size.width() + 1,
                 available.bottom() - kScreenMargin - size.height() + 1, size.width(),
                 size.height());
}

void PiPManager::actionPlay()
{
    if (onTogglePlayPause)
        onTogglePlayPause();
    setPlaying(true);
}

void PiPManager::actionPause()
{
    if (onTogglePlayPause)
        onTogglePlayPause();
    setPlaying(false);
}

void PiPManager::actionStop()
{
    if (onTogglePlayPause)
        onTogglePlayPause();
}
