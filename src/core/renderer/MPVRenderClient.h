#pragma once

#include <atomic>
#include <memory>
#include <mpv/client.h>
#include <QObject>

/// The video renderer's own client handle of a libmpv core. libmpv keeps a core alive while any
/// of its client handles exists, so whatever holds this (every render context does) can never
/// outlive the core, whoever destroys the decoder first.
///
/// It also enforces libmpv's limit of one render context per core across windows: the window
/// that shows the video next can only create its context once the previous one has been freed.
///
/// Threads: created and destroyed on the GUI thread (the shared pointer from `create` hands the
/// last reference there, whichever thread drops it). `claimRenderContext`,
/// `releaseRenderContext` and the signals work from any thread.
class MPVRenderClient : public QObject, public std::enable_shared_from_this<MPVRenderClient>
{
    Q_OBJECT

public:
    /// GUI thread. The client has no handle when `core` is null or libmpv refuses a new client.
    static std::shared_ptr<MPVRenderClient> create(mpv_handle* core);
    ~MPVRenderClient() override;

    mpv_handle* handle() const { return m_handle; }

    /// Render thread: takes the core's one render context; false while another window has it.
    bool claimRenderContext();
    /// Render thread, after freeing the context a claim allowed.
    void releaseRenderContext();
    /// Render thread, once the context a claim allowed exists.
    void renderContextCreated();
    /// Render thread, when libmpv refused the context a claim allowed.
    void withdrawClaim();
    /// Render thread, before freeing the render context: moves libmpv's picture to a video
    /// output without a context, which keeps the file playing. Waits for the core.
    void parkVideoOutput();

Q_SIGNALS:
    /// Emitted on a libmpv thread when the render context has a new frame or a request.
    void updateRequested();
    /// Emitted on a render thread once a window has freed the render context.
    void renderContextReleased();
    /// Emitted on a render thread when a render context has drawn its first video frame.
    void firstFrameDrawn();

private:
    explicit MPVRenderClient(mpv_handle* core);

    mpv_handle* const m_handle;
    std::atomic<bool> m_renderContextClaimed = false;  // render threads of every window
    std::atomic<bool> m_hasFreedRenderContext = false; // render threads of every window
};
