#include "ThumbnailGenerator.h"

#include "FrameGrabberSession.h"
#include "model/MediaFiles.h"
#include "ThumbnailTimeline.h"

#include <array>
#include <chrono>
#include <cmath>
#include <QCoroFuture>
#include <QCoroTimer>
#include <QPointer>
#include <QtConcurrent/QtConcurrentRun>
#include <utility>

using namespace velmar;

namespace {

// The pause between two pictures of the walk, which leaves the processor to playback.
constexpr std::chrono::milliseconds kWalkPause(100);
// The walk starts this long after a file opens: its first picture must not compete with the
// player's own for the processor.
constexpr std::chrono::milliseconds kWalkStartDelay(1000);

// Where `thumbnail` looks when its own bucket is missing, nearest first.
constexpr std::array<qint64, 4> kNeighbourOffsets = {1, -1, 2, -2};

struct GrabResult
{
    QImage image;
    // The session the grab went through, to be used again for the next one; null when the file
    // could not be opened.
    std::shared_ptr<FrameGrabberSession> session;
};

// Grabs on the thread pool, opening a session first when there is none: opening a long file
// (reading its index) costs several grabs, so each file is opened once per lane.
QFuture<GrabResult> grabInBackground(const QByteArray& path,
                                     std::shared_ptr<FrameGrabberSession> session, double seconds)
{
    return QtConcurrent::run([path, session = std::move(session), seconds] {
        GrabResult result{QImage(), session};
        if (!result.session)
            result.session = FrameGrabberSession::open(path);
        if (result.session)
            result.image = result.session->grab(seconds, ThumbnailGenerator::kThumbnailWidth);
        return result;
    });
}

} // namespace

ThumbnailGenerator::ThumbnailGenerator(QObject* parent)
    : QObject(parent)
{
    m_walkStart.setSingleShot(true);
    m_walkStart.setInterval(kWalkStartDelay);
    connect(&m_walkStart, &QTimer::timeout, this,
            [this] { walkTimeline(std::exchange(m_walkTimes, {})); });
}

ThumbnailGenerator::~ThumbnailGenerator() = default;

void ThumbnailGenerator::setup(const QUrl& url, double duration)
{
    ++m_epoch;
    m_walkStart.stop();
    m_walkTimes.clear();
    m_pendingKeys.clear();
    m_requests.clear();
    m_servingRequests = false;
    m_requestSession.reset();
    if (!m_cache.isEmpty()) {
        m_cache.clear();
        Q_EMIT cacheChanged();
    }
    setLastImage(QImage());
    m_lastDisplayedKey = -1;

    m_path = url.isLocalFile() ? MediaFiles::localPath(url) : QByteArray();
    m_bucketSize = thumbnails::bucketSize(duration);
    if (duration > 0 && !m_path.isEmpty()) {
        m_walkTimes = thumbnails::walkTimes(duration, m_bucketSize);
        m_walkStart.start();
    }
}

QImage ThumbnailGenerator::thumbnail(double seconds)
{
    // A time no file can have (from a seek bar of zero width, say) asks for nothing.
    if (!std::isfinite(seconds) || std::abs(seconds / m_bucketSize) > 1e15)
        return QImage();
    const qint64 key = thumbnails::bucketKey(seconds, m_bucketSize);
    if (key == m_lastDisplayedKey)
        return m_lastImage;

    if (const auto cached = m_cache.constFind(key); cached != m_cache.constEnd()) {
        m_lastDisplayedKey = key;
        setLastImage(*cached);
        return m_lastImage;
    }

    for (const qint64 offset : kNeighbourOffsets) {
        if (const auto near = m_cache.constFind(key + offset); near != m_cache.constEnd()) {
            m_lastDisplayedKey = key;
            setLastImage(*near);
            break;
        }
    }

    if (!m_pendingKeys.contains(key) && !m_path.isEmpty())
        requestThumbnail(key, seconds);
    return m_lastImage;
}

// The walk: one grab at a time, front to back, with a pause after each picture. It ends when
// the generator goes or a new setup starts another epoch.
QCoro::Task<> ThumbnailGenerator::walkTimeline(QList<double> times)
{
    QPointer<ThumbnailGenerator> self(this);
    const quint64 epoch = m_epoch;
    const QByteArray path = m_path;
    std::shared_ptr<FrameGrabberSession> session;

    for (const double seconds : times) {
        if (!self || m_epoch != epoch)
            co_return;
        const qint64 key = thumbnails::bucketKey(seconds, m_bucketSize);
        if (m_cache.contains(key))
            continue;

        // Futures are named before they are awaited: GCC 12 destroys temporaries of a co_await
        // operand twice.
        QFuture<GrabResult> grab = grabInBackground(path, session, seconds);
        const GrabResult grabbed = co_await grab;
        if (!self || m_epoch != epoch)
            co_return;
        // A file that cannot be opened now will not open at the next step either.
        if (!grabbed.session)
            co_return;
        session = grabbed.session;
        if (!grabbed.image.isNull())
            insertThumbnail(key, grabbed.image);

        QCoro::Task<> pause = QCoro::sleepFor(kWalkPause);
        co_await pause;
    }
}

void ThumbnailGenerator::requestThumbnail(qint64 key, double seconds)
{
    m_pendingKeys.insert(key);
    m_requests.append({key, seconds});
    if (!m_servingRequests)
        serveRequests();
}

// The request lane: grabs what `thumbnail` asked for, one at a time beside the walk, newest
// request first, because the pointer has usually moved on from the older ones. A bucket the
// walk filled meanwhile needs no grab.
QCoro::Task<> ThumbnailGenerator::serveRequests()
{
    QPointer<ThumbnailGenerator> self(this);
    const quint64 epoch = m_epoch;
    const QByteArray path = m_path;
    std::shared_ptr<FrameGrabberSession> session = std::exchange(m_requestSession, nullptr);
    m_servingRequests = true;

    while (!m_requests.isEmpty()) {
        const Request request = m_requests.takeLast();
        if (!m_cache.contains(request.key)) {
            Q_EMIT thumbnailRequested(request.key);
            QFuture<GrabResult> grab = grabInBackground(path, session, request.seconds);
            const GrabResult grabbed = co_await grab;
            if (!self || m_epoch != epoch)
                co_return;
            session = grabbed.session;
            if (!grabbed.image.isNull())
                insertThumbnail(request.key, grabbed.image);
        }
        // A failed grab only clears the mark, so that a later hover asks again.
        m_pendingKeys.remove(request.key);
    }

    m_requestSession = std::move(session);
    m_servingRequests = false;
}

void ThumbnailGenerator::insertThumbnail(qint64 key, const QImage& image)
{
    // The bucket on show gets its own picture in place of the neighbour standing in for it.
    if (key == m_lastDisplayedKey)
        setLastImage(image);
    m_cache.insert(key, image);
    Q_EMIT cacheChanged();
}

void ThumbnailGenerator::setLastImage(const QImage& image)
{
    // Identity, not pixels: comparing images would compare every pixel.
    if (m_lastImage.cacheKey() == image.cacheKey())
        return;
    m_lastImage = image;
    Q_EMIT lastImageChanged();
}
