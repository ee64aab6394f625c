// How the decoder takes the reports its event thread queues to the GUI thread.
#include "base/Completion.h"
#include "base/Log.h"
#include "MPVDecoder.h"

namespace {

QString mpvErrorText(int status)
{
    return QString::fromUtf8(mpv_error_string(status));
}

} // namespace

void MPVDecoder::applyCommandReply(quint64 request, int error, qint64 entryId)
{
    if (const auto pending = m_pendingResults.take(request)) {
        pending->complete(error);
        return;
    }
    if (request != m_loadRequest || !m_pendingLoad)
        return;
    if (error < 0)
        finishLoad(LoadOutcome::Kind::Failed, mpvErrorText(error));
    else
        m_entryId = entryId;
}

void MPVDecoder::applyFileLoaded(qint64 entryId, std::optional<double> duration)
{
    // Only the file of the latest load settles it: an earlier file that finished opening just
    // before it was replaced must not release the new load early.
    if (!m_pendingLoad || !isCurrentEntry(entryId))
        return;
    if (duration)
        m_duration = *duration;
    m_currentTime = 0;
    finishLoad(LoadOutcome::Kind::Opened);
}

void MPVDecoder::applyEndFile(qint64 entryId, int reason, int error)
{
    if (!isCurrentEntry(entryId))
        return;
    m_isPlaying = false;
    finishSeek();
    if (m_pendingLoad) {
        if (reason == MPV_END_FILE_REASON_ERROR)
            finishLoad(LoadOutcome::Kind::Failed, mpvErrorText(error));
        else
            finishLoad(LoadOutcome::Kind::Superseded);
        return;
    }
    const EndReason why = reason == MPV_END_FILE_REASON_EOF     ? EndReason::Finished
                          : reason == MPV_END_FILE_REASON_ERROR ? EndReason::Failed
                                                                : EndReason::Stopped;
    Q_EMIT fileEnded(why, why == EndReason::Failed ? mpvErrorText(error) : QString());
}

void MPVDecoder::applyPlaybackRestart()
{
    finishSeek();
}

void MPVDecoder::applyPlaying(bool playing)
{
    m_isPlaying = playing;
}

void MPVDecoder::applyTimePosition(double seconds)
{
    // Until an absolute seek has landed, and while a file opens, reports describe a place
    // the player has already left.
    if (!m_pendingSeek && !m_pendingLoad)
        m_currentTime = seconds;
}

void MPVDecoder::applyDuration(double seconds)
{
    if (!m_pendingLoad)
        m_duration = seconds;
}

void MPVDecoder::applyEndReached(qint64 entryId)
{
    if (isCurrentEntry(entryId) && !m_pendingLoad)
        Q_EMIT endReached();
}

void MPVDecoder::applyTransferFunction(qint64 entryId, const QString& name)
{
    if (isCurrentEntry(entryId))
        Q_EMIT transferFunctionChanged(name);
}

void MPVDecoder::applyPrimaries(qint64 entryId, const QString& name)
{
    if (isCurrentEntry(entryId))
        Q_EMIT primariesChanged(name);
}

void MPVDecoder::applyTracks(qint64 entryId, const QList<MediaTrack>& tracks)
{
    if (!isCurrentEntry(entryId) || tracks == m_tracks)
        return;
    m_tracks = tracks;
    Q_EMIT tracksChanged(m_tracks);
}

void MPVDecoder::applyChapters(qint64 entryId, const QList<Chapter>& chapters)
{
    if (!isCurrentEntry(entryId) || chapters == m_chapters)
        return;
    m_chapters = chapters;
    Q_EMIT chaptersChanged(m_chapters);
}

void MPVDecoder::clearChapters()
{
    if (m_chapters.isEmpty())
        return;
    m_chapters.clear();
    Q_EMIT chaptersChanged(m_chapters);
}

void MPVDecoder::applySelectedTrack(qint64 entryId, TrackType type, qint64 id)
{
    if (!isCurrentEntry(entryId))
        return;
    if (type == TrackType::Audio)
        Q_EMIT audioTrackChanged(id);
    else
        Q_EMIT subtitleTrackChanged(id);
}

void MPVDecoder::applyMediaInfo(qint64 entryId, const MediaInfo& info)
{
    if (!isCurrentEntry(entryId) || info == m_mediaInfo)
        return;
    m_mediaInfo = info;
    Q_EMIT mediaInfoChanged();
}

void MPVDecoder::applyErrorLog(const QString& text)
{
    velmar::logLine(QStringLiteral("[MPVDecoder] libmpv: ") + text);
    Q_EMIT errorLogged(text);
}
