// The user's commands on the open file's tracks, subtitles, frames and bookmarks.
#include "engine/FrameCapture.h"
#include "engine/PlaybackEngine.h"
#include "features/bookmark/BookmarkManager.h"
#include "features/osd/OSDManager.h"
#include "features/track/TrackManager.h"
#include "infrastructure/system/FileRevealer.h"
#include "model/MediaFiles.h"
#include "UserCommands.h"

#include <QFileInfo>

namespace {

// Far enough past a bookmark that repeating the command moves on instead of landing on it again.
constexpr double kBookmarkMargin = 0.5;

QString trackText(const QString& kind, const TrackCycle& cycle)
{
    return kind + cycle.track.displayLabel() +
           QStringLiteral(" (%1/%2)").arg(cycle.position).arg(cycle.count);
}

} // namespace

void UserCommands::cycleSubtitleTrack()
{
    if (!m_engine)
        return;
    const TrackCycle next = m_engine->tracks()->nextSubtitleTrack();
    switch (next.result) {
    case TrackCycle::Result::NoTracks:
        return announceText(QStringLiteral("No subtitle tracks"));
    case TrackCycle::Result::Off:
        selectSubtitleTrack(0);
        return announceText(QStringLiteral("Subtitle: Off"));
    case TrackCycle::Result::Track:
        selectSubtitleTrack(next.track.id);
        return announceText(trackText(QStringLiteral("Subtitle: "), next));
    }
}

void UserCommands::cycleAudioTrack()
{
    if (!m_engine)
        return;
    const TrackCycle next = m_engine->tracks()->nextAudioTrack();
    if (next.result != TrackCycle::Result::Track)
        return announceText(QStringLiteral("No other audio tracks"));
    // The track list follows libmpv's own report of the new selection.
    selectAudioTrack(next.track.id);
    announceText(trackText(QStringLiteral("Audio: "), next));
}

void UserCommands::selectSubtitleTrack(qint64 id)
{
    if (!m_engine)
        return;
    m_engine->decoder()->selectSubtitleTrack(id);
    // libmpv reports no number for "no subtitles"; the selection is known here already.
    if (id == 0)
        m_engine->tracks()->setCurrentSubtitleID(0);
}

void UserCommands::selectAudioTrack(qint64 id)
{
    if (m_engine)
        m_engine->decoder()->selectAudioTrack(id);
}

void UserCommands::removeSubtitle(qint64 id)
{
    if (m_engine)
        m_engine->decoder()->removeSubtitle(id);
}

void UserCommands::addSubtitles(const QList<QUrl>& urls)
{
    [](QPointer<UserCommands> self, QList<QUrl> urls) -> QCoro::Task<> {
        for (const QUrl& url : urls) {
            if (!self || !self->m_engine)
                co_return;
            const QString name = QFileInfo(url.path()).fileName();
            QCoro::Task<bool> adding =
                self->m_engine->decoder()->addSubtitle(MediaFiles::localPath(url));
            const bool added = co_await adding;
            if (self)
                self->announceText(added ? QStringLiteral("Subtitle loaded: ") + name
                                         : QStringLiteral("Could not load subtitle: ") + name);
        }
    }(this, urls);
}

void UserCommands::takeScreenshot()
{
    if (!m_engine || !m_engine->state().isActive())
        return;
    [](QPointer<UserCommands> self, QPointer<MPVDecoder> decoder) -> QCoro::Task<> {
        QCoro::Task<std::optional<QString>> capturing = FrameCapture::screenshot(decoder);
        const std::optional<QString> path = co_await capturing;
        if (!self)
            co_return;
        self->announceText(path ? QStringLiteral("Screenshot saved")
                                : QStringLiteral("Screenshot failed"));
        if (path)
            FileRevealer::reveal(QUrl::fromLocalFile(*path));
    }(this, m_engine->decoder());
}

void UserCommands::addBookmark()
{
    if (!m_engine || m_engine->currentURL().isEmpty())
        return;
    BookmarkManager* bookmarks = m_engine->bookmarks();
    const std::optional<QUuid> id =
        bookmarks->add(m_engine->currentURL(), m_engine->currentTime(), QString());
    if (!id)
        return announceText(QStringLiteral("Bookmark already exists"));
    announceText(QStringLiteral("Bookmark added"));
    [](QPointer<BookmarkManager> bookmarks, QPointer<MPVDecoder> decoder,
       QUuid id) -> QCoro::Task<> {
        QCoro::Task<std::optional<QByteArray>> capturing = FrameCapture::bookmarkPicture(decoder);
        const std::optional<QByteArray> picture = co_await capturing;
        if (bookmarks && picture)
            bookmarks->updateThumbnail(id, *picture);
    }(bookmarks, m_engine->decoder(), *id);
}

void UserCommands::seekToNextBookmark()
{
    if (m_engine)
        seekToBookmark(m_engine->bookmarks()->next(m_engine->currentURL(), m_engine->currentTime(),
                                                   kBookmarkMargin),
                       QStringLiteral("\u25b8 "));
}

void UserCommands::seekToPreviousBookmark()
{
    if (m_engine)
        seekToBookmark(m_engine->bookmarks()->previous(m_engine->currentURL(),
                                                       m_engine->currentTime(), kBookmarkMargin),
                       QStringLiteral("\u25c2 "));
}

void UserCommands::seekToBookmark(double seconds)
{
    if (m_engine)
        m_engine->seek(seconds);
}

QCoro::Task<void> UserCommands::seekToBookmark(std::optional<Bookmark> bookmark, QString mark)
{
    if (!bookmark || !m_engine || m_engine->currentURL().isEmpty())
        co_return;
    QPointer<UserCommands> self(this);
    QCoro::Task<> seeking = m_engine->seek(bookmark->time);
    co_await seeking;
    if (self)
        announceText(mark + bookmark->name);
}
