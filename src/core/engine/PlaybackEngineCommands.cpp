// The engine's secondary commands: track and subtitle selection, screenshots and bookmarks.
#include "core/renderer/ScreenshotCapture.h"
#include "features/bookmark/BookmarkManager.h"
#include "features/osd/OSDManager.h"
#include "features/track/TrackManager.h"
#include "infrastructure/system/FileRevealer.h"
#include "MPVDecoder.h"
#include "PlaybackEngine.h"

#include <QCoroFuture>
#include <QDir>
#include <QFileInfo>
#include <QPointer>
#include <QtConcurrent>

namespace {

constexpr double kMessageSeconds = 1.5;
// Far enough past a bookmark that repeating the command moves on instead of landing on it again.
constexpr double kBookmarkMargin = 0.5;

QString trackPosition(int index, qsizetype count)
{
    return QStringLiteral(" (%1/%2)").arg(index + 1).arg(count);
}

/// Removes a temporary file when the work that needed it ends, however it ends.
class TemporaryFileGuard
{
public:
    explicit TemporaryFileGuard(QString path)
        : m_path(std::move(path))
    {}
    ~TemporaryFileGuard() { QFile::remove(m_path); }
    TemporaryFileGuard(const TemporaryFileGuard&) = delete;
    TemporaryFileGuard& operator=(const TemporaryFileGuard&) = delete;

private:
    QString m_path;
};

} // namespace

void PlaybackEngine::cycleAudioTrack()
{
    const QList<MediaTrack> tracks = m_tracks->audioTracks();
    if (tracks.size() < 2) {
        m_osd->show(OSDMessage::text(QStringLiteral("No other audio tracks")), kMessageSeconds);
        return;
    }
    QList<qint64> ids;
    for (const MediaTrack& track : tracks)
        ids << track.id;
    const int current = std::max(0, int(ids.indexOf(m_tracks->currentAudioID())));
    const int next = (current + 1) % int(ids.size());
    // The track manager follows libmpv's own report of the new selection.
    m_decoder->setMPVInt64("aid", ids.at(next));
    m_osd->show(OSDMessage::text(QStringLiteral("Audio: ") + tracks.at(next).displayLabel() +
                                 trackPosition(next, ids.size())),
                kMessageSeconds);
}

void PlaybackEngine::cycleSubtitleTrack()
{
    const QList<MediaTrack> tracks = m_tracks->subtitleTracks();
    if (tracks.isEmpty()) {
        m_osd->show(OSDMessage::text(QStringLiteral("No subtitle tracks")), kMessageSeconds);
        return;
    }
    // The cycle runs through every track and then "off" (0).
    QList<qint64> cycle;
    for (const MediaTrack& track : tracks)
        cycle << track.id;
    cycle << 0;
    int current = int(cycle.indexOf(m_tracks->currentSubtitleID()));
    if (current < 0)
        current = int(cycle.size()) - 1;
    const int next = (current + 1) % int(cycle.size());
    if (cycle.at(next) == 0) {
        m_decoder->setMPVString("sid", QStringLiteral("no"));
        m_tracks->setCurrentSubtitleID(0);
        m_osd->show(OSDMessage::text(QStringLiteral("Subtitle: Off")), kMessageSeconds);
        return;
    }
    m_decoder->setMPVInt64("sid", cycle.at(next));
    m_osd->show(OSDMessage::text(QStringLiteral("Subtitle: ") + tracks.at(next).displayLabel() +
                                 trackPosition(next, tracks.size())),
                kMessageSeconds);
}

void PlaybackEngine::setSubtitleTrack(qint64 id)
{
    if (id == 0)
        m_decoder->setMPVString("sid", QStringLiteral("no"));
    else
        m_decoder->setMPVInt64("sid", id);
}

void PlaybackEngine::addExternalSubtitle(const QUrl& url)
{
    const QString name = QFileInfo(url.path()).fileName();
    const int status = m_decoder->command(
        {QStringLiteral("sub-add"), url.toLocalFile(), QStringLiteral("select")});
    m_osd->show(OSDMessage::text(status < 0 ? QStringLiteral("Could not load subtitle: ") + name
                                            : QStringLiteral("Subtitle loaded: ") + name),
                kMessageSeconds);
}

void PlaybackEngine::takeScreenshot()
{
    const QString folder = ScreenshotCapture::screenshotFolder();
    QDir().mkpath(folder); // a folder that cannot be made shows up as a failed capture below
    const QString path = folder + QLatin1Char('/') +
                         ScreenshotCapture::screenshotFileName(QDateTime::currentDateTime());
    const int status =
        m_decoder->command({QStringLiteral("screenshot-to-file"), path, QStringLiteral("video")});
    if (status < 0) {
        m_osd->show(OSDMessage::text(QStringLiteral("Screenshot failed")), kMessageSeconds);
        return;
    }
    m_osd->show(OSDMessage::text(QStringLiteral("Screenshot saved")), kMessageSeconds);
    FileRevealer::reveal(path);
}

void PlaybackEngine::addBookmark(const std::optional<QString>& name)
{
    if (m_currentURL.isEmpty())
        return;
    const std::optional<QUuid> id =
        m_bookmarks->add(m_currentURL, m_currentTime, name.value_or(QString()));
    if (!id) {
        m_osd->show(OSDMessage::text(QStringLiteral("Bookmark already exists")), kMessageSeconds);
        return;
    }
    m_osd->show(OSDMessage::text(QStringLiteral("Bookmark added")), kMessageSeconds);
    captureBookmarkThumbnail(*id);
}

QCoro::Task<void> PlaybackEngine::captureBookmarkThumbnail(QUuid bookmark)
{
    QPointer<PlaybackEngine> self(this);
    const QString framePath = QDir::tempPath() + QStringLiteral("/velmar_bm_") +
                              QUuid::createUuid().toString(QUuid::WithoutBraces) +
                              QStringLiteral(".jpg");
    TemporaryFileGuard removeFrame(framePath);
    if (m_decoder->command(
            {QStringLiteral("screenshot-to-file"), framePath, QStringLiteral("video")}) < 0)
        co_return;
    // A named future, not a temporary: GCC 12 destroys temporaries of a co_await operand twice.
    QFuture<std::optional<QByteArray>> encoding =
        QtConcurrent::run([framePath] { return ScreenshotCapture::thumbnailJpeg(framePath); });
    const std::optional<QByteArray> jpeg = co_await encoding;
    if (self && jpeg)
        m_bookmarks->updateThumbnail(bookmark, *jpeg);
}

QCoro::Task<void> PlaybackEngine::seekToNextBookmark()
{
    if (m_currentURL.isEmpty())
        co_return;
    for (const Bookmark& bookmark : m_bookmarks->bookmarks(m_currentURL)) {
        if (bookmark.time > m_currentTime + kBookmarkMargin) {
            QPointer<PlaybackEngine> self(this);
            co_await seek(bookmark.time);
            if (self)
                m_osd->show(OSDMessage::text(QStringLiteral("\u25b8 ") + bookmark.name),
                            kMessageSeconds);
            co_return;
        }
    }
}

QCoro::Task<void> PlaybackEngine::seekToPreviousBookmark()
{
    if (m_currentURL.isEmpty())
        co_return;
    const QList<Bookmark> bookmarks = m_bookmarks->bookmarks(m_currentURL);
    for (auto it = bookmarks.crbegin(); it != bookmarks.crend(); ++it) {
        if (it->time < m_currentTime - kBookmarkMargin) {
            const Bookmark bookmark = *it;
            QPointer<PlaybackEngine> self(this);
            co_await seek(bookmark.time);
            if (self)
                m_osd->show(OSDMessage::text(QStringLiteral("\u25c2 ") + bookmark.name),
                            kMessageSeconds);
            co_return;
        }
    }
}
