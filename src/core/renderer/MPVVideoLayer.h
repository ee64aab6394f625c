#pragma once

#include <QQuickFramebufferObject>

class MPVDecoder;

/// Renders libmpv's picture into the item's framebuffer object. Created, used and destroyed on
/// the Qt Quick render thread with the window's GL context current; it creates libmpv's render
/// context on first use and frees it when it goes away.
class MPVVideoLayer : public QQuickFramebufferObject::Renderer
{
public:
    explicit MPVVideoLayer(MPVDecoder* decoder);
    ~MPVVideoLayer() override;

    void render() override;

    /// The framebuffer handed to libmpv: 1 until a non-zero binding has been seen.
    int fbo() const { return m_fbo; }

private:
    MPVDecoder* const m_decoder; // outlives this renderer (see MPVVideoView)
    int m_fbo = 1;
};
