#pragma once

#include <memory>
#include <QSGRenderNode>

class MPVRenderClient;
class MPVRenderContext;

/// Draws libmpv's picture straight into the window, under everything stacked above the video
/// item, with no intermediate texture. It covers the whole window: libmpv always fills the
/// framebuffer it draws into.
///
/// A scene-graph node of one window: created, used and destroyed on that window's render thread
/// (destruction included, with the OpenGL context current), which is where it keeps the
/// window's libmpv render context.
class MPVVideoLayer : public QSGRenderNode
{
public:
    MPVVideoLayer();
    ~MPVVideoLayer() override;

    /// During the scene-graph sync: the client whose video to draw (null: none) and the
    /// window's size in pixels. Frees the render context of another client and creates this
    /// one's if the window may have it yet.
    void synchronize(std::shared_ptr<MPVRenderClient> client, QSize pixelSize);
    /// The render context, for jobs queued on this window's render thread.
    std::weak_ptr<MPVRenderContext> renderContext() const { return m_renderContext; }

    void render(const RenderState* state) override;
    void releaseResources() override;
    StateFlags changedStates() const override;
    RenderingFlags flags() const override;

private:
    std::shared_ptr<MPVRenderClient> m_client;
    std::shared_ptr<MPVRenderContext> m_renderContext; // shared only with weak pointers
    QSize m_pixelSize;
};
