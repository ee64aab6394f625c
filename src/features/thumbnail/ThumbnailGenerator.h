#pragma once

#include <memory>
#include <QCoroTask>
#include <QHash>
#include <QImage>
#include <QList>
#include <QObject>
#include <QSet>
#include <QString>
#include <QTimer>
#include <QtQml/qqmlregistration.h>
#include <QUrl>

class FrameGrabberSession;

/// Seek-bar hover pictures for the open file: one picture per time bucket, kept in memory.
///
/// `setup` starts a walk that grabs the whole timeline front to back, one picture at a time with
/// a pause between pictures so that playback keeps the machine. `thumbnail` answers at once from
/// memory, with the bucket's picture or a near one, and asks for a missing picture once.
///
/// GUI thread only. Grabs run on the global thread pool through grabber sessions kept for the
/// current file; results come back to the GUI thread and are dropped when the generator is gone
/// or has been set up for another file meanwhile.
class ThumbnailGenerator : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Owned by the playback engine")
    /// The picture last handed to the seek bar; null before the first one.
    Q_PROPERTY(QImage lastImage READ lastImage NOTIFY lastImageChanged)
    Q_PROPERTY(int cachedCount READ cachedCount NOTIFY cacheChanged)

public:
    /// Width of every picture, in pixels; heights follow the video's aspect ratio.
    static constexpr int kThumbnailWidth = 240;

    explicit ThumbnailGenerator(QObject* parent = nullptr);
    ~ThumbnailGenerator() override;

    /// Forgets everything about the previous file and stops its walk, then prepares for `url`;
    /// with a positive duration, starts walking its timeline. Only local files get pictures.
    void setup(const QUrl& url, double duration);

    /// The picture for `seconds`: its bucket's own, else a neighbour's, else the last one shown
    /// (null when there is none, or when the time is not one a file can have). Never waits; a
    /// missing bucket is asked for once, and `cacheChanged` tells when it arrives.
    Q_INVOKABLE QImage thumbnail(double seconds);

    QImage lastImage() const { return m_lastImage; }
    int cachedCount() const { return int(m_cache.size()); }
    double bucketSize() const { return m_bucketSize; }
    /// The picture stored for a bucket; null when there is none yet.
    QImage cachedThumbnail(qint64 key) const { return m_cache.value(key); }

Q_SIGNALS:
    /// A picture was stored (or all were forgotten). The seek bar asks again and finds it.
    void cacheChanged();
    void lastImageChanged();
    /// A grab for a bucket `thumbnail` asked for has started; at most one per bucket at a time.
    void thumbnailRequested(qint64 key);

private:
    struct Request
    {
        qint64 key;
        double seconds;
    };

    QCoro::Task<> walkTimeline(QList<double> times);
    void requestThumbnail(qint64 key, double seconds);
    QCoro::Task<> serveRequests();
    void insertThumbnail(qint64 key, const QImage& image);
    void setLastImage(const QImage& image);

    QHash<qint64, QImage> m_cache;
    // Buckets asked for by `thumbnail` and not yet answered; each is asked for only once.
    QSet<qint64> m_pendingKeys;
    // Requests waiting for the request lane, oldest first.
    QList<Request> m_requests;
    bool m_servingRequests = false;
    // The request lane's open session while the lane is idle.
    std::shared_ptr<FrameGrabberSession> m_requestSession;
    QImage m_lastImage;
    qint64 m_lastDisplayedKey = -1;
    double m_bucketSize = 2.0;
    QByteArray m_path; // the file's name as the file system has it
    // Every setup starts a new epoch. Work of an older epoch that comes back from the thread
    // pool finds the epoch changed and stops without touching the new file's state.
    quint64 m_epoch = 0;
    // Holds the walk back a moment after a file opens; owned here rather than slept on inside
    // the walk, so a generator that goes meanwhile leaves nothing waiting.
    QTimer m_walkStart;
    QList<double> m_walkTimes;
};
