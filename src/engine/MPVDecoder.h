#pragma once

#include "infrastructure/mpv/MPVError.h"
#include "model/Chapter.h"
#include "model/MediaInfo.h"
#include "model/MediaTrack.h"
#include "model/PictureSettings.h"

#include <chrono>
#include <memory>
#include <mpv/client.h>
#include <optional>
#include <QCoroTask>
#include <QHash>
#include <QList>
#include <QObject>
#include <QThread>
#include <QTimer>
#include <QUrl>

namespace velmar {
template <typename T> class Completion;
}
class MPVEventPump;

/// Owns the libmpv client handle: configures the player core, drains its events on a thread of
/// its own, mirrors a few observed values, and offers the commands the engine needs.
///
/// Threads: constructed, used and destroyed on the GUI thread, and never waits there: commands
/// and property writes are asynchronous, and what the player needs to know arrives as observed
/// property reports, drained on the event thread and queued back here. Results that a caller
/// waits for (a load, an added subtitle, a screenshot) come back as coroutines that resume on
/// the GUI thread. The video renderer draws through a client handle of its own.
///
/// Reports about a file (tracks, colours, technical summary, end of file) carry libmpv's
/// playlist entry and are passed on only for the entry of the latest `load`, so nothing a
/// replaced file says can reach the file that replaced it.
class MPVDecoder : public QObject
{
    Q_OBJECT

public:
    /// How a `load` ended.
    struct LoadOutcome
    {
        enum class Kind {
            Opened,     // libmpv opened the file
            Failed,     // libmpv gave up on it; `reason` says why
            TimedOut,   // it did not open in time (a stalled stream, a pipe nobody writes)
            Superseded, // a later load (or the decoder going away) replaced it
        };
        Kind kind = Kind::Superseded;
        QString reason;
    };

    /// Why libmpv stopped playing a file.
    enum class EndReason { Finished, Stopped, Failed };
    Q_ENUM(EndReason)

    explicit MPVDecoder(QObject* parent = nullptr);
    ~MPVDecoder() override;

    /// The client handle, or null when mpv_create failed.
    mpv_handle* handle() const { return m_mpv; }

    /// Opens a file and waits until libmpv has opened it, given up on it, or been asked for
    /// another file: only the events of this very "loadfile" end the wait. The duration is
    /// known when it resumes. Throws MPVError when there is no handle.
    QCoro::Task<LoadOutcome> load(const QUrl& url);
    /// How long a load may take to open its file before it ends as timed out (20 s unless
    /// set; a pipe nobody writes to would otherwise keep it opening forever).
    void setLoadTimeout(std::chrono::milliseconds timeout) { m_loadTimeout.setInterval(timeout); }
    /// Stops playback and closes the file.
    void stop();

    /// Exact absolute seek; the position estimate moves at once. Resumes once libmpv has
    /// landed there (or the seek was overtaken by another, or the file went).
    QCoro::Task<void> seek(double seconds);
    /// The same without waiting, for dragging on the seek bar.
    void scrub(double seconds);
    /// Key-frame relative seek; the estimate moves at once, kept within 0…duration.
    void seekRelativeFast(double offset);
    void frameStep(bool forward);

    void setPaused(bool paused);
    /// 0…1, sent to libmpv as 0…100.
    void setVolume(float volume);
    void setMuted(bool muted);
    void setSpeed(float rate);
    void setAudioDelay(double seconds);
    void setRotation(int degrees);
    void setPicture(const PictureSettings& picture);
    void selectAudioTrack(qint64 id);
    /// 0 turns subtitles off.
    void selectSubtitleTrack(qint64 id);
    /// Loads a subtitle file (named by its bytes) and selects it; true when libmpv took it.
    QCoro::Task<bool> addSubtitle(const QByteArray& path);
    void removeSubtitle(qint64 id);
    /// Writes the current video frame (without subtitles or OSD) to `path`; libmpv encodes it
    /// on its own threads. True when the file was written.
    QCoro::Task<bool> screenshot(const QString& path);
    /// Any other property, as text (options such as "ao" for tests, say).
    void setMPVString(const char* name, const QString& value);

    // Mirrors, on the GUI thread.
    bool isPlaying() const { return m_isPlaying; }
    double currentTime() const { return m_currentTime; }
    double duration() const { return m_duration; }
    double audioDelay() const { return m_audioDelay; }
    float volume() const { return m_volume; }
    float rate() const { return m_rate; }
    bool isMuted() const { return m_isMuted; }
    /// The latest file's tracks and technical summary as libmpv last reported them; no
    /// summary without a handle.
    QList<MediaTrack> getTrackList() const { return m_tracks; }
    /// The latest file's chapters, by time; empty for a file without any.
    QList<Chapter> chapters() const { return m_chapters; }
    std::optional<MediaInfo> getMediaInfo() const;

Q_SIGNALS:
    // GUI thread, each for the file of the latest load only.
    void tracksChanged(const QList<MediaTrack>& tracks);
    void chaptersChanged(const QList<Chapter>& chapters);
    void audioTrackChanged(qint64 id);
    void subtitleTrackChanged(qint64 id);
    /// libmpv's name of the video's transfer function ("pq", "bt.1886", ...); a null text
    /// while the video's parameters are not known.
    void transferFunctionChanged(const QString& name);
    /// The same for the video's colour primaries ("bt.2020", ...).
    void primariesChanged(const QString& name);
    void mediaInfoChanged();
    /// libmpv reached the end of the file ("eof-reached" turned true).
    void endReached();
    /// The opened file stopped: it was played out, stopped, or failed (`error` says why).
    void fileEnded(MPVDecoder::EndReason reason, const QString& error);
    /// libmpv logged an error (its own message text).
    void errorLogged(const QString& text);

private:
    friend class MPVEventPump;
    using PendingResult = velmar::Completion<int>;

    void setupMPV();
    void checkError(int status);
    void setProperty(const char* name, mpv_format format, void* data);
    QCoro::Task<int> commandResult(QList<QByteArray> args);
    void finishLoad(LoadOutcome::Kind kind, const QString& reason = {});
    velmar::Completion<bool>& startSeek(double target);
    void finishSeek();
    bool isCurrentEntry(qint64 entryId) const { return entryId >= 0 && entryId == m_entryId; }

    // Reactions to the event thread's reports.
    void applyCommandReply(quint64 request, int error, qint64 entryId);
    void applyFileLoaded(qint64 entryId, std::optional<double> duration);
    void applyEndFile(qint64 entryId, int reason, int error);
    void applyPlaybackRestart();
    void applyPlaying(bool playing);
    void applyTimePosition(double seconds);
    void applyDuration(double seconds);
    void applyEndReached(qint64 entryId);
    void applyTransferFunction(qint64 entryId, const QString& name);
    void applyPrimaries(qint64 entryId, const QString& name);
    void applyTracks(qint64 entryId, const QList<MediaTrack>& tracks);
    void applyChapters(qint64 entryId, const QList<Chapter>& chapters);
    void clearChapters();
    void applySelectedTrack(qint64 entryId, TrackType type, qint64 id);
    void applyMediaInfo(qint64 entryId, const MediaInfo& info);
    void applyErrorLog(const QString& text);

    mpv_handle* m_mpv = nullptr; // set once in the constructor, cleared in the destructor
    bool m_isPlaying = false;
    double m_currentTime = 0;
    double m_duration = 0;
    double m_audioDelay = 0;
    float m_volume = 1.0f;
    float m_rate = 1.0f;
    bool m_isMuted = false;
    QList<MediaTrack> m_tracks;
    QList<Chapter> m_chapters;
    PictureSettings m_picture; // what the core was last given; it keeps it from file to file
    MediaInfo m_mediaInfo;

    // Asynchronous commands whose result someone waits for, by reply id.
    quint64 m_lastRequest = 0;
    QHash<quint64, std::shared_ptr<PendingResult>> m_pendingResults;
    // The latest load: its reply id, libmpv's playlist entry for it once known, and the
    // outcome its coroutine waits for while it opens.
    quint64 m_loadRequest = 0;
    qint64 m_entryId = -1;
    std::unique_ptr<velmar::Completion<LoadOutcome>> m_pendingLoad;
    // The latest absolute seek until libmpv has landed; time reports meanwhile are stale.
    std::unique_ptr<velmar::Completion<bool>> m_pendingSeek;
    QTimer m_loadTimeout;

    QThread m_eventThread;
    MPVEventPump* m_eventPump = nullptr; // lives on m_eventThread
};
