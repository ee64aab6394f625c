#include "MPVVideoView.h"

#include "core/engine/MPVDecoder.h"
#include "core/engine/PlaybackEngine.h"
#include "MPVVideoLayer.h"

MPVVideoView::MPVVideoView(QQuickItem* parent)
    : QQuickFramebufferObject(parent)
{
    // Clicks and gestures belong to the player view around the video.
    setAcceptedMouseButtons(Qt::NoButton);
}

void MPVVideoView::setEngine(PlaybackEngine* engine)
{
    if (m_engine == engine)
        return;
    if (m_engine) {
        disconnect(m_engine, nullptr, this, nullptr);
        disconnect(m_engine->decoder(), nullptr, this, nullptr);
    }
    m_engine = engine;
    if (m_engine) {
        // Emitted on a libmpv thread: hop to the GUI thread to schedule the frame.
        connect(m_engine->decoder(), &MPVDecoder::renderUpdate, this, &QQuickItem::update,
                Qt::QueuedConnection);
        connect(m_engine, &PlaybackEngine::needsFrameRefreshChanged, this,
                &MPVVideoView::refreshFrame);
    }
    Q_EMIT engineChanged();
    update();
}

MPVDecoder* MPVVideoView::decoder() const
{
    return m_engine ? m_engine->decoder() : nullptr;
}

QQuickFramebufferObject::Renderer* MPVVideoView::createRenderer() const
{
    return new MPVVideoLayer(decoder());
}

void MPVVideoView::geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry)
{
    QQuickFramebufferObject::geometryChange(newGeometry, oldGeometry);
    // A new size means a new framebuffer: redraw the current frame even while paused.
    if (newGeometry.size() != oldGeometry.size())
        update();
}

void MPVVideoView::refreshFrame()
{
    if (!m_engine || !m_engine->needsFrameRefresh())
        return;
    update();
    m_engine->acknowledgeFrameRefresh();
}
