#include "MPVRenderContext.h"

#include "base/Log.h"
#include "base/StartupTrace.h"
#include "MPVRenderClient.h"

#include <malloc.h>
#include <mpv/render_gl.h>
#include <QOpenGLContext>
#include <QThread>

namespace {

const char* const kApiTypeOpenGL = MPV_RENDER_API_TYPE_OPENGL;

void* resolveGLSymbol(void* /*context*/, const char* name)
{
    QOpenGLContext* context = QOpenGLContext::currentContext();
    if (!name || !context)
        return nullptr;
    return reinterpret_cast<void*>(context->getProcAddress(name));
}

} // namespace

std::unique_ptr<MPVRenderContext> MPVRenderContext::create(std::shared_ptr<MPVRenderClient> client)
{
    if (!client || !client->claimRenderContext())
        return nullptr;

    mpv_opengl_init_params glInit{&resolveGLSymbol, nullptr};
    // Advanced control stays off. With it the core waits for this thread to answer each update,
    // but the render thread only runs when the GUI thread schedules it and not at all while the
    // window is hidden, so a GUI-thread wait for libmpv or a minimised window would stall or
    // deadlock playback. Its gain, decoding straight into textures, did not show when measured.
    int advancedControl = 0;
    mpv_render_param params[] = {
        {MPV_RENDER_PARAM_API_TYPE, const_cast<char*>(kApiTypeOpenGL)},
        {MPV_RENDER_PARAM_OPENGL_INIT_PARAMS, &glInit},
        {MPV_RENDER_PARAM_ADVANCED_CONTROL, &advancedControl},
        {MPV_RENDER_PARAM_INVALID, nullptr},
    };
    mpv_render_context* context = nullptr;
    const int status = mpv_render_context_create(&context, client->handle(), params);
    if (status < 0) {
        velmar::logLine(QStringLiteral("[MPVRenderContext] mpv_render_context_create failed: ") +
                        QString::fromUtf8(mpv_error_string(status)));
        client->withdrawClaim();
        return nullptr;
    }
    velmar::logLine(QStringLiteral("[MPVRenderContext] Render context created"));
    velmar::traceStartup("render context created");
    return std::unique_ptr<MPVRenderContext>(new MPVRenderContext(std::move(client), context));
}

MPVRenderContext::MPVRenderContext(std::shared_ptr<MPVRenderClient> client,
                                   mpv_render_context* context)
    : m_client(std::move(client))
    , m_context(context)
    , m_thread(QThread::currentThread())
{
    mpv_render_context_set_update_callback(
        m_context,
        [](void* client) {
            // libmpv thread: never call libmpv here, only pass the news on.
            Q_EMIT static_cast<MPVRenderClient*>(client)->updateRequested();
        },
        m_client.get());
    m_client->renderContextCreated();
}

MPVRenderContext::~MPVRenderContext()
{
    Q_ASSERT(isOwnThread());
    mpv_render_context_set_update_callback(m_context, nullptr, nullptr);
    // Freeing the context closes libmpv's video output, and a file left with nothing to play (a
    // silent one) would end there: the picture first moves to a video output that needs no
    // context, until the next window has one.
    m_client->parkVideoOutput();
    // Waits until the core has closed the video output that used this context.
    mpv_render_context_free(m_context);
    // Its textures and framebuffers (tens of megabytes in a software renderer) were allocated
    // on this thread; the allocator keeps such freed memory for this thread's next requests,
    // which the next window's render thread never makes. They go back to the system before
    // that window makes its own.
    malloc_trim(0);
    m_client->releaseRenderContext();
}

bool MPVRenderContext::isOwnThread() const
{
    return QThread::currentThread() == m_thread;
}

bool MPVRenderContext::hasNewFrame()
{
    Q_ASSERT(isOwnThread());
    const bool hasNewFrame = mpv_render_context_update(m_context) & MPV_RENDER_UPDATE_FRAME;
    m_hasHadFrame = m_hasHadFrame || hasNewFrame;
    return hasNewFrame;
}

void MPVRenderContext::render(int fbo, QSize pixelSize)
{
    Q_ASSERT(isOwnThread());
    mpv_opengl_fbo target{fbo, pixelSize.width(), pixelSize.height(), 0};
    int flipY = 1;
    mpv_render_param params[] = {
        {MPV_RENDER_PARAM_OPENGL_FBO, &target},
        {MPV_RENDER_PARAM_FLIP_Y, &flipY},
        {MPV_RENDER_PARAM_INVALID, nullptr},
    };
    mpv_render_context_render(m_context, params);
    mpv_render_context_report_swap(m_context);
    if (m_hasHadFrame && !std::exchange(m_hasDrawnFrame, true)) {
        velmar::traceStartup("first video frame drawn");
        Q_EMIT m_client->firstFrameDrawn();
    }
}
