#include "NowPlayingManager.h"

#include "base/Log.h"
#include "MPRISNames.h"
#include "MPRISPlayerAdaptor.h"
#include "MPRISRootAdaptor.h"

#include <cmath>
#include <QCryptographicHash>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

namespace {

// How far a position may land from where playback alone would have taken it before it counts
// as a seek. Generous, so that a stalled timer or a slow first frame is never mistaken for one.
constexpr double kSeekToleranceSeconds = 1.0;
constexpr int kSeekSettleMs = 100;

qint64 toMicroseconds(double seconds)
{
    return std::isfinite(seconds) ? qint64(std::llround(seconds * 1e6)) : 0;
}

/// A call to the bus daemon itself.
QDBusMessage busCall(const QString& method)
{
    return QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"),
                                          QStringLiteral("/org/freedesktop/DBus"),
                                          QStringLiteral("org.freedesktop.DBus"), method);
}

QString statusName(NowPlayingManager::PlaybackState state)
{
    switch (state) {
    case NowPlayingManager::PlaybackState::Playing:
        return QStringLiteral("Playing");
    case NowPlayingManager::PlaybackState::Paused:
        return QStringLiteral("Paused");
    case NowPlayingManager::PlaybackState::Stopped:
        break;
    }
    return QStringLiteral("Stopped");
}

} // namespace

NowPlayingManager::NowPlayingManager(QObject* parent)
    : NowPlayingManager(QDBusConnection::sessionBus(), parent)
{}

NowPlayingManager::NowPlayingManager(const QDBusConnection& bus, QObject* parent)
    : QObject(parent)
    , m_bus(bus)
    , m_trackId(MPRISPlayerAdaptor::noTrack)
{
    m_seekSettle.setSingleShot(true);
    m_seekSettle.setInterval(kSeekSettleMs);
    connect(&m_seekSettle, &QTimer::timeout, this, [this] {
        if (m_player)
            m_player->announceSeek();
    });
}

NowPlayingManager::~NowPlayingManager()
{
    if (!m_player)
        return;
    // Given back without waiting for the answer; the bus would drop it with the connection.
    if (m_nameRequested)
        m_bus.send(busCall(QStringLiteral("ReleaseName")) << MPRISNames::service);
    m_bus.unregisterObject(MPRISNames::objectPath);
}

void NowPlayingManager::setupRemoteCommands()
{
    if (!m_bus.isConnected())
        return giveUp(QStringLiteral("No session bus"));
    m_root = new MPRISRootAdaptor(this);
    m_player = new MPRISPlayerAdaptor(this, m_bus);
    // The object must answer before the name appears: desktops query a player as soon as
    // they see it.
    if (!m_bus.registerObject(MPRISNames::objectPath, this, QDBusConnection::ExportAdaptors))
        return giveUp(MPRISNames::service + QStringLiteral(" is already taken"));
    m_player->setPlaybackStatus(statusName(m_state));
    m_player->setTrack(m_trackId, m_title, toMicroseconds(m_duration));
    m_player->setRate(m_rate);
    m_player->setVolume(m_volume);
    m_player->setRateLimits(m_minimumRate, m_maximumRate);
    claimName();
}

void NowPlayingManager::claimName()
{
    // Only the name, not a place in the queue for it: a player that cannot have it now
    // runs without it.
    constexpr uint kDoNotQueue = 0x4;
    constexpr uint kPrimaryOwner = 1;
    constexpr uint kAlreadyOwner = 4;
    m_nameRequested = true;
    auto* answer =
        new QDBusPendingCallWatcher(m_bus.asyncCall(busCall(QStringLiteral("RequestName"))
                                                    << MPRISNames::service << kDoNotQueue),
                                    this);
    connect(answer, &QDBusPendingCallWatcher::finished, this,
            [this](QDBusPendingCallWatcher* call) {
                call->deleteLater();
                const QDBusPendingReply<uint> reply = *call;
                if (reply.isError() ||
                    (reply.value() != kPrimaryOwner && reply.value() != kAlreadyOwner)) {
                    m_nameRequested = false;
                    m_bus.unregisterObject(MPRISNames::objectPath);
                    return giveUp(MPRISNames::service + QStringLiteral(" is already taken"));
                }
                m_ownsName = true;
                Q_EMIT busNameSettled();
            });
}

void NowPlayingManager::giveUp(const QString& why)
{
    delete std::exchange(m_player, nullptr);
    delete std::exchange(m_root, nullptr);
    velmar::logLine(QStringLiteral("[NowPlayingManager] ") + why +
                    QStringLiteral(": media keys and desktop media controls are off"));
    Q_EMIT busNameSettled();
}

void NowPlayingManager::setTrack(const QUrl& url, const QString& title, double duration,
                                 double position)
{
    const QDBusObjectPath id = trackId(url);
    if (id != m_trackId) {
        // A new file is announced by its track id; where it starts is not a seek.
        m_position = position;
        m_sinceLastPosition.start();
        if (m_player)
            m_player->setPosition(toMicroseconds(position));
    }
    m_trackId = id;
    m_title = title;
    m_duration = duration;
    if (m_player)
        m_player->setTrack(m_trackId, title, toMicroseconds(duration));
}

void NowPlayingManager::setPlaybackState(PlaybackState state)
{
    m_state = state;
    m_sinceLastPosition.start(); // time spent paused does not move the position
    if (m_player)
        m_player->setPlaybackStatus(statusName(state));
}

void NowPlayingManager::setRate(double rate)
{
    m_rate = rate;
    if (m_player)
        m_player->setRate(rate);
}

void NowPlayingManager::setVolume(double volume)
{
    m_volume = volume;
    if (m_player)
        m_player->setVolume(volume);
}

void NowPlayingManager::setRateLimits(double minimum, double maximum)
{
    m_minimumRate = minimum;
    m_maximumRate = maximum;
    if (m_player)
        m_player->setRateLimits(minimum, maximum);
}

void NowPlayingManager::followPosition(double seconds)
{
    const double elapsed =
        m_sinceLastPosition.isValid() ? double(m_sinceLastPosition.nsecsElapsed()) / 1e9 : 0.0;
    m_sinceLastPosition.start();
    const double expected =
        m_position + (m_state == PlaybackState::Playing ? elapsed * m_rate : 0.0);
    const bool jumped = m_state == PlaybackState::Playing
                            ? std::abs(seconds - expected) > kSeekToleranceSeconds
                            : seconds != expected;
    m_position = seconds;
    if (!m_player)
        return;
    m_player->setPosition(toMicroseconds(seconds));
    if (jumped && m_trackId != MPRISPlayerAdaptor::noTrack)
        m_seekSettle.start();
}

QDBusObjectPath NowPlayingManager::trackId(const QUrl& url)
{
    if (url.isEmpty())
        return MPRISPlayerAdaptor::noTrack;
    // Object paths allow only [A-Za-z0-9_] in an element; a digest of the URL fits and names
    // the same file the same way every time.
    const QByteArray digest = QCryptographicHash::hash(url.toEncoded(), QCryptographicHash::Md5);
    return QDBusObjectPath(QStringLiteral("/org/velmar/VelmarPlayer/track/") +
                           QString::fromLatin1(digest.toHex()));
}
