#include "MPVVideoLayer.h"

#include "MPVRenderClient.h"
#include "MPVRenderContext.h"

#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <QQuickOpenGLUtils>

MPVVideoLayer::MPVVideoLayer() = default;

MPVVideoLayer::~MPVVideoLayer() = default;

void MPVVideoLayer::synchronize(std::shared_ptr<MPVRenderClient> client, QSize pixelSize)
{
    m_pixelSize = pixelSize;
    if (client != m_client) {
        m_renderContext.reset();
        m_client = std::move(client);
    }
    if (m_client && !m_renderContext)
        m_renderContext = MPVRenderContext::create(m_client);
}

void MPVVideoLayer::render(const RenderState* /*state*/)
{
    if (!m_renderContext || m_pixelSize.isEmpty())
        return;
    // The window's own framebuffer: libmpv fills all of it, so nothing may lie below this node.
    GLint framebuffer = 0;
    QOpenGLContext::currentContext()->functions()->glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING,
                                                                 &framebuffer);
    m_renderContext->render(framebuffer, m_pixelSize);
    // libmpv leaves its own OpenGL state behind; the scene graph expects the defaults.
    QQuickOpenGLUtils::resetOpenGLState();
}

void MPVVideoLayer::releaseResources()
{
    m_renderContext.reset();
}

QSGRenderNode::StateFlags MPVVideoLayer::changedStates() const
{
    return DepthState | StencilState | ScissorState | ColorState | BlendState | CullState |
           ViewportState | RenderTargetState;
}

QSGRenderNode::RenderingFlags MPVVideoLayer::flags() const
{
    return {};
}
