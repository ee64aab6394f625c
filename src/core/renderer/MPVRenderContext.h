#pragma once

#include <memory>
#include <mpv/render.h>
#include <QSize>

class MPVRenderClient;
class QThread;

/// libmpv's OpenGL render context for one window. Created, used and destroyed on that window's
/// render thread with its OpenGL context current, and only there: libmpv ties the context to
/// that OpenGL context. It holds the render client, so the core outlives it.
class MPVRenderContext
{
public:
    /// Null while another window still holds the core's render context, or when libmpv
    /// refuses one.
    static std::unique_ptr<MPVRenderContext> create(std::shared_ptr<MPVRenderClient> client);
    ~MPVRenderContext();

    MPVRenderContext(const MPVRenderContext&) = delete;
    MPVRenderContext& operator=(const MPVRenderContext&) = delete;

    /// Answers libmpv's update callback; true when a new frame waits to be drawn.
    bool hasNewFrame();
    /// Draws the current frame (a new one if libmpv has it) into the framebuffer `fbo`, whose
    /// origin is bottom-left as a window's is, and tells libmpv it is about to be shown.
    void render(int fbo, QSize pixelSize);

private:
    MPVRenderContext(std::shared_ptr<MPVRenderClient> client, mpv_render_context* context);
    /// True on the thread that created the context, the only one that may use it.
    bool isOwnThread() const;

    const std::shared_ptr<MPVRenderClient> m_client;
    mpv_render_context* const m_context;
    QThread* const m_thread;
    bool m_hasHadFrame = false;   // libmpv has announced a frame
    bool m_hasDrawnFrame = false; // and one has been drawn
};
