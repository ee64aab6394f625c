#include "MPVRenderClient.h"

#include "base/Log.h"
#include "infrastructure/mpv/MPVProperties.h"

#include <QCoreApplication>
#include <QThread>

namespace {

// The decoder reads the core's events; this handle never does, so it opts out of every
// notification libmpv would otherwise queue for it.
constexpr mpv_event_id kUnwantedEvents[] = {
    MPV_EVENT_START_FILE,     MPV_EVENT_END_FILE,
    MPV_EVENT_FILE_LOADED,    MPV_EVENT_IDLE,
    MPV_EVENT_TICK,           MPV_EVENT_CLIENT_MESSAGE,
    MPV_EVENT_VIDEO_RECONFIG, MPV_EVENT_AUDIO_RECONFIG,
    MPV_EVENT_SEEK,           MPV_EVENT_PLAYBACK_RESTART,
};

} // namespace

std::shared_ptr<MPVRenderClient> MPVRenderClient::create(mpv_handle* core)
{
    // Render threads drop references too; the handle must still be destroyed on this thread,
    // because destroying a client handle may wait for the core, which a render thread must not.
    return std::shared_ptr<MPVRenderClient>(new MPVRenderClient(core), [](MPVRenderClient* client) {
        if (QThread::currentThread() == client->thread()) {
            delete client;
            return;
        }
        // Undelivered at shutdown, the event is destroyed with the application object, on the
        // GUI thread, and the client with it.
        QMetaObject::invokeMethod(
            QCoreApplication::instance(), [owned = std::unique_ptr<MPVRenderClient>(client)] {},
            Qt::QueuedConnection);
    });
}

MPVRenderClient::MPVRenderClient(mpv_handle* core)
    : m_handle(core ? mpv_create_client(core, "video") : nullptr)
{
    if (core && !m_handle)
        velmar::logLine(QStringLiteral("[MPVRenderClient] mpv_create_client failed"));
    if (m_handle) {
        for (mpv_event_id event : kUnwantedEvents)
            mpv_request_event(m_handle, event, 0);
    }
}

MPVRenderClient::~MPVRenderClient()
{
    Q_ASSERT(!m_renderContextClaimed);
    if (m_handle)
        mpv_destroy(m_handle);
}

bool MPVRenderClient::claimRenderContext()
{
    bool expected = false;
    return m_handle && m_renderContextClaimed.compare_exchange_strong(expected, true);
}

void MPVRenderClient::releaseRenderContext()
{
    m_hasFreedRenderContext = true;
    m_renderContextClaimed = false;
    Q_EMIT renderContextReleased();
}

void MPVRenderClient::renderContextCreated()
{
    // Here, on the render thread that now holds the context, rather than later elsewhere: the
    // picture must not return to a context that the next move has already freed. Waiting for
    // the core is safe here, as in freeing: with advanced control off, the core never waits for
    // a render thread.
    if (m_hasFreedRenderContext)
        mpv_set_property_string(m_handle, MPVName::vo, "libmpv");
}

void MPVRenderClient::withdrawClaim()
{
    m_renderContextClaimed = false;
}

void MPVRenderClient::parkVideoOutput()
{
    mpv_set_property_string(m_handle, MPVName::vo, "null");
}
