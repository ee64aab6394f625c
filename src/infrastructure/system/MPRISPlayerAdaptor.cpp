#include "MPRISPlayerAdaptor.h"

#include "base/PropertyUpdate.h"
#include "MPRISNames.h"
#include "NowPlayingManager.h"

#include <cmath>
#include <QDBusMessage>
#include <QUrl>

using velmar::assignIfChanged;

namespace {

const QString kTrackIdKey = QStringLiteral("mpris:trackid");
const QString kLengthKey = QStringLiteral("mpris:length");
const QString kTitleKey = QStringLiteral("xesam:title");

} // namespace

const QDBusObjectPath
    MPRISPlayerAdaptor::noTrack(QStringLiteral("/org/mpris/MediaPlayer2/TrackList/NoTrack"));

MPRISPlayerAdaptor::MPRISPlayerAdaptor(NowPlayingManager* manager, const QDBusConnection& bus)
    : QDBusAbstractAdaptor(manager)
    , m_manager(manager)
    , m_bus(bus)
    , m_metadata{{kTrackIdKey, QVariant::fromValue(noTrack)}}
{}

QDBusObjectPath MPRISPlayerAdaptor::publishedTrackId() const
{
    return m_metadata.value(kTrackIdKey).value<QDBusObjectPath>();
}

void MPRISPlayerAdaptor::setPlaybackStatus(const QString& status)
{
    if (assignIfChanged(m_playbackStatus, status))
        announceChange(QStringLiteral("PlaybackStatus"), m_playbackStatus);
}

void MPRISPlayerAdaptor::setRate(double rate)
{
    if (assignIfChanged(m_rate, rate))
        announceChange(QStringLiteral("Rate"), m_rate);
}

void MPRISPlayerAdaptor::setVolume(double volume)
{
    if (assignIfChanged(m_volume, volume))
        announceChange(QStringLiteral("Volume"), m_volume);
}

void MPRISPlayerAdaptor::setRateLimits(double minimum, double maximum)
{
    m_minimumRate = minimum;
    m_maximumRate = maximum;
}

void MPRISPlayerAdaptor::requestRate(double rate)
{
    // MPRIS: a rate of 0 means pause; anything outside the offered speeds is not a request
    // to act on.
    if (rate == 0.0)
        Q_EMIT m_manager->pauseRequested();
    else if (rate >= m_minimumRate && rate <= m_maximumRate)
        Q_EMIT m_manager->rateRequested(rate);
}

void MPRISPlayerAdaptor::requestVolume(double volume)
{
    if (std::isfinite(volume))
        Q_EMIT m_manager->volumeRequested(std::clamp(volume, 0.0, 1.0));
}

void MPRISPlayerAdaptor::setTrack(const QDBusObjectPath& trackId, const QString& title,
                                  qint64 length)
{
    QVariantMap metadata{{kTrackIdKey, QVariant::fromValue(trackId)}, {kTitleKey, title}};
    // MPRIS leaves out a length that is not known rather than calling it zero.
    if (length > 0)
        metadata.insert(kLengthKey, qlonglong(length));
    if (assignIfChanged(m_metadata, metadata))
        announceChange(QStringLiteral("Metadata"), m_metadata);
}

void MPRISPlayerAdaptor::announceChange(const QString& property, const QVariant& value)
{
    QDBusMessage signal = QDBusMessage::createSignal(
        MPRISNames::objectPath, QStringLiteral("org.freedesktop.DBus.Properties"),
        QStringLiteral("PropertiesChanged"));
    signal << MPRISNames::playerInterface << QVariantMap{{property, value}} << QStringList();
    m_bus.send(signal);
}

void MPRISPlayerAdaptor::Play()
{
    Q_EMIT m_manager->playRequested();
}

void MPRISPlayerAdaptor::Pause()
{
    Q_EMIT m_manager->pauseRequested();
}

void MPRISPlayerAdaptor::PlayPause()
{
    Q_EMIT m_manager->playPauseRequested();
}

void MPRISPlayerAdaptor::Stop()
{
    Q_EMIT m_manager->stopRequested();
}

void MPRISPlayerAdaptor::Next()
{
    Q_EMIT m_manager->nextRequested();
}

void MPRISPlayerAdaptor::Previous()
{
    Q_EMIT m_manager->previousRequested();
}

void MPRISPlayerAdaptor::Seek(qlonglong offset)
{
    Q_EMIT m_manager->seekRequested(double(offset) / 1e6);
}

void MPRISPlayerAdaptor::SetPosition(const QDBusObjectPath& trackId, qlonglong position)
{
    // A request aimed at a track that is no longer current is stale, and a place outside the
    // track is not a place to go: MPRIS asks for both to be ignored. A track whose length is
    // not known yet has no end to check against.
    const qlonglong length = m_metadata.value(kLengthKey).toLongLong();
    if (trackId != publishedTrackId() || position < 0 || (length > 0 && position > length))
        return;
    Q_EMIT m_manager->positionRequested(double(position) / 1e6);
}

void MPRISPlayerAdaptor::OpenUri(const QString& uri)
{
    // Only the schemes the root interface lists; anything else is not ours to open.
    const QUrl url(uri);
    if (url.isLocalFile())
        Q_EMIT m_manager->openRequested(url);
}
