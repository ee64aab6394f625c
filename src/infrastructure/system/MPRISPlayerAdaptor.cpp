#include "MPRISPlayerAdaptor.h"

#include "core/engine/PlaybackEngine.h"
#include "core/model/PropertyUpdate.h"
#include "MPRISNames.h"
#include "NowPlayingManager.h"

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

double MPRISPlayerAdaptor::minimumRate() const
{
    return double(PlaybackEngine::playbackRates.front());
}

double MPRISPlayerAdaptor::maximumRate() const
{
    return double(PlaybackEngine::playbackRates.back());
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
    m_manager->play();
}

void MPRISPlayerAdaptor::Pause()
{
    m_manager->pause();
}

void MPRISPlayerAdaptor::PlayPause()
{
    m_manager->togglePlayPause();
}

void MPRISPlayerAdaptor::Stop()
{
    // The player has no stopped state to enter from outside; like the other transport
    // commands it does not offer, a remote Stop is accepted and ignored.
}

void MPRISPlayerAdaptor::Next()
{
    m_manager->nextTrack();
}

void MPRISPlayerAdaptor::Previous()
{
    m_manager->previousTrack();
}

void MPRISPlayerAdaptor::Seek(qlonglong)
{
    // Remote controls move the position only to an absolute place (SetPosition); relative
    // skips are not offered.
}

void MPRISPlayerAdaptor::SetPosition(const QDBusObjectPath& trackId, qlonglong position)
{
    // A request aimed at a track that is no longer current is stale, and a place outside the
    // track is not a place to go: MPRIS asks for both to be ignored. A track whose length is
    // not known yet has no end to check against.
    const qlonglong length = m_metadata.value(kLengthKey).toLongLong();
    if (trackId != publishedTrackId() || position < 0 || (length > 0 && position > length))
        return;
    m_manager->changePlaybackPosition(double(position) / 1e6);
}

void MPRISPlayerAdaptor::OpenUri(const QString& uri)
{
    // Only the schemes the root interface lists; anything else is not ours to open.
    const QUrl url(uri);
    if (url.isLocalFile())
        m_manager->requestOpen(url);
}
