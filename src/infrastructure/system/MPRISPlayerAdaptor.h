#pragma once

#include <QDBusAbstractAdaptor>
#include <QDBusConnection>
#include <QDBusObjectPath>
#include <QVariantMap>

class NowPlayingManager;

/// The MPRIS player interface, org.mpris.MediaPlayer2.Player. Commands and writable
/// properties are handed to the manager as requests; the values the manager publishes are
/// announced with PropertiesChanged, and only when they change. Position is never announced:
/// clients read it when they need it and extrapolate from PlaybackStatus and Rate in between,
/// so a jump is announced with Seeked. GUI thread only.
class MPRISPlayerAdaptor : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.mpris.MediaPlayer2.Player")
    Q_PROPERTY(QString PlaybackStatus READ playbackStatus)
    Q_PROPERTY(double Rate READ rate WRITE requestRate)
    Q_PROPERTY(double Volume READ volume WRITE requestVolume)
    Q_PROPERTY(QVariantMap Metadata READ metadata)
    Q_PROPERTY(qlonglong Position READ position)
    Q_PROPERTY(double MinimumRate READ minimumRate)
    Q_PROPERTY(double MaximumRate READ maximumRate)
    Q_PROPERTY(bool CanGoNext READ canControl CONSTANT)
    Q_PROPERTY(bool CanGoPrevious READ canControl CONSTANT)
    Q_PROPERTY(bool CanPlay READ canControl CONSTANT)
    Q_PROPERTY(bool CanPause READ canControl CONSTANT)
    Q_PROPERTY(bool CanSeek READ canControl CONSTANT)
    Q_PROPERTY(bool CanControl READ canControl CONSTANT)

public:
    /// Track id published while there is no track, as MPRIS defines it.
    static const QDBusObjectPath noTrack;

    /// `bus` is the connection the manager serves on; property changes are announced there.
    MPRISPlayerAdaptor(NowPlayingManager* manager, const QDBusConnection& bus);

    QString playbackStatus() const { return m_playbackStatus; }
    double rate() const { return m_rate; }
    double volume() const { return m_volume; }
    QVariantMap metadata() const { return m_metadata; }
    /// Microseconds.
    qlonglong position() const { return m_position; }
    /// The id of the published track, or `noTrack`.
    QDBusObjectPath publishedTrackId() const;
    double minimumRate() const { return m_minimumRate; }
    double maximumRate() const { return m_maximumRate; }
    bool canControl() const { return true; }

    void setPlaybackStatus(const QString& status);
    void setRate(double rate);
    void setVolume(double volume);
    void setRateLimits(double minimum, double maximum);
    /// Publishes a track: its id, title and length in microseconds (0 when not known).
    void setTrack(const QDBusObjectPath& trackId, const QString& title, qint64 length);
    /// Moves the position quietly, as playback does.
    void setPosition(qint64 microseconds) { m_position = microseconds; }
    /// Tells clients that the position jumped to where it now is.
    void announceSeek() { Q_EMIT Seeked(m_position); }

public Q_SLOTS:
    void Play();
    void Pause();
    void PlayPause();
    void Stop();
    void Next();
    void Previous();
    void Seek(qlonglong offset);
    void SetPosition(const QDBusObjectPath& trackId, qlonglong position);
    void OpenUri(const QString& uri);

Q_SIGNALS:
    void Seeked(qlonglong position);

private:
    void requestRate(double rate);
    void requestVolume(double volume);
    void announceChange(const QString& property, const QVariant& value);

    NowPlayingManager* m_manager;
    QDBusConnection m_bus;
    QString m_playbackStatus = QStringLiteral("Stopped");
    double m_rate = 1.0;
    double m_volume = 1.0;
    double m_minimumRate = 1.0;
    double m_maximumRate = 1.0;
    QVariantMap m_metadata;
    qlonglong m_position = 0;
};
