#include "MPVVideoLayer.h"

#include "core/engine/MPVDecoder.h"

#include <mpv/render_gl.h>
#include <QOpenGLContext>
#include <QOpenGLFramebufferObject>
#include <QOpenGLFunctions>
#include <QQuickOpenGLUtils>

namespace {

void* resolveGLSymbol(void* /*context*/, const char* name)
{
    QOpenGLContext* context = QOpenGLContext::currentContext();
    if (!name || !context)
        return nullptr;
    return reinterpret_cast<void*>(context->getProcAddress(name));
}

} // namespace

MPVVideoLayer::MPVVideoLayer(MPVDecoder* decoder)
    : m_decoder(decoder)
{
    if (m_decoder)
        m_decoder->initRenderContext(&resolveGLSymbol);
}

MPVVideoLayer::~MPVVideoLayer()
{
    if (m_decoder)
        m_decoder->freeRenderContext();
}

void MPVVideoLayer::render()
{
    QOpenGLFunctions* gl = QOpenGLContext::currentContext()->functions();
    gl->glClearColor(0, 0, 0, 1);
    gl->glClear(GL_COLOR_BUFFER_BIT);

    mpv_render_context* renderContext = m_decoder ? m_decoder->renderContext() : nullptr;
    if (!renderContext)
        return;

    GLint binding = 0;
    gl->glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &binding);
    if (binding != 0)
        m_fbo = binding;
    const QSize size = framebufferObject()->size();
    if (size.width() < 1 || size.height() < 1)
        return;

    // Answers the update callback that scheduled this frame.
    mpv_render_context_update(renderContext);
    mpv_opengl_fbo target{m_fbo, size.width(), size.height(), 0};
    // Qt Quick already turns its framebuffer objects the right way up when it composes them,
    // so libmpv must not flip as it would for a window's default framebuffer.
    int flipY = 0;
    mpv_render_param params[] = {
        {MPV_RENDER_PARAM_OPENGL_FBO, &target},
        {MPV_RENDER_PARAM_FLIP_Y, &flipY},
        {MPV_RENDER_PARAM_INVALID, nullptr},
    };
    mpv_render_context_render(renderContext, params);
    gl->glFlush();
    mpv_render_context_report_swap(renderContext);
    // libmpv leaves its own GL state behind; Qt Quick expects its defaults.
    QQuickOpenGLUtils::resetOpenGLState();
}
