#pragma once

#include <memory>
#include <QPointer>
#include <QQuickItem>
#include <QtQml/qqmlregistration.h>

class MPVDecoder;
class MPVRenderClient;
class MPVRenderContext;
Q_MOC_INCLUDE("engine/MPVDecoder.h")

/// The QML element that shows the decoder's video. It draws the video as the backdrop of the
/// whole window it is in, so it belongs first (lowest) in a window it fills; items stacked
/// above it are drawn over the picture.
///
/// The window draws a frame only when the video has a new picture, when something in the scene
/// changed, or on `refresh()`.
///
/// The item may move to another window: the old window frees libmpv's render context and the new
/// one creates its own. libmpv closes its video output in between and the picture comes back by
/// itself, but a file without sound ends there: libmpv stops a file left with nothing to play.
///
/// Threads: GUI thread, except `updatePaintNode` (render thread, GUI thread blocked).
class MPVVideoView : public QQuickItem
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(MPVDecoder* decoder READ decoder WRITE setDecoder NOTIFY decoderChanged)
    Q_PROPERTY(bool hasRenderContext READ hasRenderContext NOTIFY hasRenderContextChanged)

public:
    explicit MPVVideoView(QQuickItem* parent = nullptr);
    ~MPVVideoView() override;

    MPVDecoder* decoder() const;
    void setDecoder(MPVDecoder* decoder);

    /// True once this item's window holds libmpv's render context; a file opened before that
    /// plays without video.
    bool hasRenderContext() const { return m_hasRenderContext; }

    /// Draws the current frame again, for changes libmpv does not announce itself.
    Q_INVOKABLE void refresh();

Q_SIGNALS:
    void decoderChanged();
    void hasRenderContextChanged();
    /// The window has drawn the first video frame of its render context.
    void firstFrameShown();

protected:
    QSGNode* updatePaintNode(QSGNode* node, UpdatePaintNodeData* data) override;
    void itemChange(ItemChange change, const ItemChangeData& value) override;

private:
    void setClient(std::shared_ptr<MPVRenderClient> client);
    void scheduleFrameCheck();
    void updateHasRenderContext();

    QPointer<MPVDecoder> m_decoder;
    std::shared_ptr<MPVRenderClient> m_client;
    // The render context of this item's window, set during the sync. Only its render thread may
    // lock it: a reference taken here could end up freeing the context on the wrong thread.
    std::weak_ptr<MPVRenderContext> m_renderContext;
    bool m_hasRenderContext = false;
    QPointer<QQuickWindow> m_window; // the window the item is in
};
