#pragma once

#include "core/model/MediaInfo.h"
#include "core/model/MediaTrack.h"
#include "MPVError.h"

#include <atomic>
#include <functional>
#include <mpv/client.h>
#include <mpv/render.h>
#include <optional>
#include <QCoroTask>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QThread>
#include <QUrl>

class HDRManager;
class TrackManager;
class MPVEventPump;
struct MPVPropertyChange;

/// Owns the libmpv client handle: configures the core, drains its events on a private thread,
/// mirrors a few observed properties on the GUI thread and offers the commands the engine needs.
///
/// Threads: constructed, used and destroyed on the GUI thread, except `initRenderContext` and
/// `freeRenderContext`, which run on the render thread with its GL context current. Events are
/// drained on the decoder's own thread and every reaction is queued back to the GUI thread.
class MPVDecoder : public QObject
{
    Q_OBJECT

public:
    using GetProcAddress = void* (*)(void* context, const char* name);

    explicit MPVDecoder(QObject* parent = nullptr);
    ~MPVDecoder() override;

    /// The client handle, or null when mpv_create failed.
    mpv_handle* handle() const { return m_mpv; }

    /// Opens a file: "loadfile" with its path, a wait until libmpv has opened it (or given up;
    /// at most a few seconds) and 100 ms more, then a duration read.
    /// Throws MPVError when there is no handle or the command fails. libmpv opens files
    /// asynchronously, so a file it cannot play is reported later through `fileFailed`.
    QCoro::Task<void> load(const QUrl& url);

    /// Exact absolute seek (synchronous command).
    void seek(double seconds);
    /// Key-frame relative seek (asynchronous command); the position estimate moves at once.
    void seekRelativeFast(double offset);
    /// Exact absolute seek (asynchronous command), for dragging on the seek bar.
    void scrub(double seconds);

    void setMPVString(const char* name, const QString& value);
    void setMPVDouble(const char* name, double value);
    void setMPVFlag(const char* name, bool value);
    void setMPVInt64(const char* name, qint64 value);

    /// Runs a command synchronously; returns libmpv's status (negative on failure).
    int command(const QStringList& args);
    /// Queues a command; its outcome is not reported.
    void commandAsync(const QStringList& args);

    QList<MediaTrack> getTrackList() const;
    /// Absent without a handle; file dates are left for the caller to fill.
    std::optional<MediaInfo> getMediaInfo() const;

    /// Render thread: creates the OpenGL render context once.
    void initRenderContext(GetProcAddress getProcAddress);
    /// Render thread: frees the render context (before its GL context goes away).
    void freeRenderContext();
    /// Any thread; the context itself may only be used on the render thread.
    mpv_render_context* renderContext() const { return m_renderContext.load(); }

    // Mirrors of observed properties, written on the GUI thread.
    bool isPlaying() const { return m_isPlaying; }
    double currentTime() const { return m_currentTime; }
    double duration() const { return m_duration; }

    // Values the engine keeps here alongside the handle.
    double audioDelay() const { return m_audioDelay; }
    void setAudioDelay(double delay) { m_audioDelay = delay; }
    float volume() const { return m_volume; }
    void setVolume(float volume) { m_volume = volume; }
    float rate() const { return m_rate; }
    void setRate(float rate) { m_rate = rate; }
    bool isMuted() const { return m_isMuted; }
    void setIsMuted(bool muted) { m_isMuted = muted; }

    void setHDRManager(HDRManager* manager);
    void setTrackManager(TrackManager* manager);

    /// Called on the GUI thread when "eof-reached" turns true.
    std::function<void()> onPlaybackDidEnd;

Q_SIGNALS:
    /// Emitted on a libmpv thread whenever the render context wants attention (a new frame, or a
    /// request that must run on the render thread). Receivers must connect with a queued
    /// connection.
    void renderUpdate();
    /// GUI thread: libmpv gave up on the file of the latest `load`; `reason` is libmpv's text.
    void fileFailed(const QString& reason);
    /// GUI thread: libmpv finished opening a file, or gave up on the latest one.
    void fileSettled();

private:
    friend class MPVEventPump;

    void setupMPV();
    void checkError(int status);
    void applyPropertyChange(const MPVPropertyChange& change);
    void applyFileLoaded();
    void applyEndFile(int reason, int error, qint64 entryId);

    mpv_handle* m_mpv = nullptr; // set once in the constructor, cleared in the destructor
    // Created and freed on the render thread; the GUI thread only reads it.
    std::atomic<mpv_render_context*> m_renderContext = nullptr;
    bool m_isPlaying = false;
    double m_currentTime = 0;
    double m_duration = 0;
    double m_audioDelay = 0;
    QPointer<HDRManager> m_hdrManager;
    QPointer<TrackManager> m_trackManager;
    float m_volume = 1.0f;
    float m_rate = 1.0f;
    bool m_isMuted = false;
    qint64 m_currentEntryId = -1; // playlist entry of the latest "loadfile"
    QThread m_eventThread;
    MPVEventPump* m_eventPump = nullptr; // lives on m_eventThread
    bool m_isShuttingDown = false;
};
