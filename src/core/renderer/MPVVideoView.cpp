#include "MPVVideoView.h"

#include "engine/MPVDecoder.h"
#include "MPVRenderClient.h"
#include "MPVRenderContext.h"
#include "MPVVideoLayer.h"

#include <QQuickWindow>
#include <QRunnable>
#include <QTimer>

namespace {

constexpr int kContextRetryMs = 50;

/// Asks libmpv, on the window's render thread, whether an update brought a new frame, and only
/// then has the window draw one. The scene itself is unchanged, so the render thread repaints
/// without synchronizing with the GUI thread.
class FrameCheck : public QRunnable
{
public:
    FrameCheck(std::weak_ptr<MPVRenderContext> context, QQuickWindow* window)
        : m_context(std::move(context))
        , m_window(window)
    {}

    void run() override
    {
        // The render loop runs jobs only while the window exists and is exposed.
        const std::shared_ptr<MPVRenderContext> context = m_context.lock();
        if (context && context->hasNewFrame())
            m_window->update();
    }

private:
    const std::weak_ptr<MPVRenderContext> m_context;
    QQuickWindow* const m_window;
};

} // namespace

MPVVideoView::MPVVideoView(QQuickItem* parent)
    : QQuickItem(parent)
{
    setFlag(ItemHasContents);
    // Clicks and gestures belong to the player view around the video.
    setAcceptedMouseButtons(Qt::NoButton);
}

MPVVideoView::~MPVVideoView() = default;

MPVDecoder* MPVVideoView::decoder() const
{
    return m_decoder;
}

void MPVVideoView::setDecoder(MPVDecoder* decoder)
{
    if (m_decoder == decoder)
        return;
    if (m_decoder)
        disconnect(m_decoder, nullptr, this, nullptr);
    m_decoder = decoder;
    setClient(m_decoder ? MPVRenderClient::create(m_decoder->handle()) : nullptr);
    if (m_decoder) {
        // Without its decoder the core is of no use; let go of it.
        connect(m_decoder, &QObject::destroyed, this, [this] {
            setClient(nullptr);
            Q_EMIT decoderChanged();
        });
    }
    Q_EMIT decoderChanged();
}

void MPVVideoView::setClient(std::shared_ptr<MPVRenderClient> client)
{
    if (m_client)
        disconnect(m_client.get(), nullptr, this, nullptr);
    m_client = std::move(client);
    if (m_client) {
        // Emitted on a libmpv thread and on render threads: both hop to this thread.
        connect(m_client.get(), &MPVRenderClient::updateRequested, this,
                &MPVVideoView::scheduleFrameCheck, Qt::QueuedConnection);
        // Another window let go of the render context: this one may take it now.
        connect(m_client.get(), &MPVRenderClient::renderContextReleased, this, &QQuickItem::update,
                Qt::QueuedConnection);
        connect(m_client.get(), &MPVRenderClient::firstFrameDrawn, this,
                &MPVVideoView::firstFrameShown, Qt::QueuedConnection);
    }
    update();
}

void MPVVideoView::refresh()
{
    update();
}

QSGNode* MPVVideoView::updatePaintNode(QSGNode* node, UpdatePaintNodeData* /*data*/)
{
    auto* layer = static_cast<MPVVideoLayer*>(node);
    if (m_client) {
        if (!layer)
            layer = new MPVVideoLayer;
        layer->synchronize(m_client, window()->size() * window()->effectiveDevicePixelRatio());
        m_renderContext = layer->renderContext();
        // Another window still holds libmpv's one render context (the item has just moved):
        // ask again shortly. Its release also asks, but a release that lands between this
        // attempt and the next frame would otherwise leave the picture black.
        if (m_renderContext.expired())
            QMetaObject::invokeMethod(
                this, [this] { QTimer::singleShot(kContextRetryMs, this, &QQuickItem::update); },
                Qt::QueuedConnection);
    } else {
        delete layer; // frees the render context, here on the render thread
        layer = nullptr;
        m_renderContext.reset();
    }
    // Whether the window now holds the render context is news for the GUI thread, after the sync.
    if (m_renderContext.expired() == m_hasRenderContext)
        QMetaObject::invokeMethod(this, &MPVVideoView::updateHasRenderContext,
                                  Qt::QueuedConnection);
    return layer;
}

void MPVVideoView::itemChange(ItemChange change, const ItemChangeData& value)
{
    QQuickItem::itemChange(change, value);
    // The old window frees its render context with its node; the new one makes its own.
    if (change == ItemSceneChange) {
        m_renderContext.reset();
        updateHasRenderContext();
        // The old window frees the context in its next frame, and only then may the new one
        // make its own: a paused window would otherwise draw no next frame.
        if (m_window)
            m_window->update();
        m_window = value.window;
    }
}

void MPVVideoView::scheduleFrameCheck()
{
    QQuickWindow* window = this->window();
    if (!window || !isVisible() || m_renderContext.expired())
        return;
    window->scheduleRenderJob(new FrameCheck(m_renderContext, window), QQuickWindow::NoStage);
}

void MPVVideoView::updateHasRenderContext()
{
    const bool hasRenderContext = !m_renderContext.expired();
    if (hasRenderContext == m_hasRenderContext)
        return;
    m_hasRenderContext = hasRenderContext;
    Q_EMIT hasRenderContextChanged();
}
