#include "NowPlayingManager.h"

#include "core/engine/PlaybackEngine.h"
#include "core/engine/PlayPauseToggle.h"
#include "infrastructure/logging/Log.h"
#include "MPRISNames.h"
#include "MPRISPlayerAdaptor.h"
#include "MPRISRootAdaptor.h"

#include <cmath>
#include <QCryptographicHash>

namespace {

// How far a position may land from where playback alone would have taken it before it counts
// as a seek. Generous, so that a stalled timer or a slow first frame is never mistaken for one.
constexpr double kSeekToleranceSeconds = 1.0;
constexpr int kSeekSettleMs = 100;

qint64 toMicroseconds(double seconds)
{
    return std::isfinite(seconds) ? qint64(std::llround(seconds * 1e6)) : 0;
}

QString statusName(NowPlayingManager::PlaybackState state)
{
    return state == NowPlayingManager::PlaybackState::Playing ? QStringLiteral("Playing")
                                                              : QStringLiteral("Paused");
}

} // namespace

NowPlayingManager::NowPlayingManager(QObject* parent)
    : NowPlayingManager(QDBusConnection::sessionBus(), parent)
{}

NowPlayingManager::NowPlayingManager(const QDBusConnection& bus, QObject* parent)
    : QObject(parent)
    , m_bus(bus)
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
    m_bus.unregisterService(MPRISNames::service);
    m_bus.unregisterObject(MPRISNames::objectPath);
}

void NowPlayingManager::setEngine(PlaybackEngine* engine)
{
    if (m_engine)
        disconnect(m_engine, nullptr, this, nullptr);
    m_engine = engine;
    // Seeks and scrubs move the engine's position while paused too, when no update comes.
    if (engine)
        connect(engine, &PlaybackEngine::currentTimeChanged, this,
                [this] { followPosition(m_engine->currentTime()); });
}

void NowPlayingManager::setupRemoteCommands()
{
    const QString off = QStringLiteral(": media keys and desktop media controls are off");
    if (!m_bus.isConnected()) {
        velmar::logLine(QStringLiteral("[NowPlayingManager] No session bus") + off);
        return;
    }
    auto* root = new MPRISRootAdaptor(this);
    auto* player = new MPRISPlayerAdaptor(this, m_bus);
    // The object must answer before the name appears: desktops query a player as soon as
    // they see it.
    const bool registered =
        m_bus.registerObject(MPRISNames::objectPath, this, QDBusConnection::ExportAdaptors);
    if (!registered || !m_bus.registerService(MPRISNames::service)) {
        if (registered)
            m_bus.unregisterObject(MPRISNames::objectPath);
        delete player;
        delete root;
        velmar::logLine(QStringLiteral("[NowPlayingManager] ") + MPRISNames::service +
                        QStringLiteral(" is already taken") + off);
        return;
    }
    m_player = player;
    m_player->setPlaybackStatus(statusName(m_state));
}

void NowPlayingManager::updateNowPlayingInfo(const QString& title, double currentTime,
                                             double duration, float rate)
{
    if (!m_player)
        return;
    m_rate = rate;
    // The position first: a new file's first position must be taken against the old track,
    // where it is a change of track rather than a seek.
    followPosition(currentTime);
    m_player->setTrack(currentTrackId(), title, toMicroseconds(duration));
    m_player->setRate(double(rate));
}

void NowPlayingManager::setPlaybackState(PlaybackState state)
{
    m_state = state;
    m_sinceLastPosition.start(); // time spent paused does not move the position
    if (m_player)
        m_player->setPlaybackStatus(statusName(state));
}

void NowPlayingManager::followPosition(double seconds)
{
    if (!m_player)
        return;
    const double elapsed =
        m_sinceLastPosition.isValid() ? double(m_sinceLastPosition.nsecsElapsed()) / 1e9 : 0.0;
    m_sinceLastPosition.start();
    const double expected =
        m_position + (m_state == PlaybackState::Playing ? elapsed * double(m_rate) : 0.0);
    const double drift = std::abs(seconds - expected);
    m_position = seconds;
    m_player->setPosition(toMicroseconds(seconds));

    // Paused, any move is a seek; playing, only one that playback cannot explain. A file
    // that has just opened is announced by its new track id instead. Its first position may
    // still be the previous file's, until libmpv reports the new one; the correction that
    // follows is then announced as a seek, which puts clients that read the stale place right.
    const bool jumped =
        m_state == PlaybackState::Playing ? drift > kSeekToleranceSeconds : drift > 0;
    if (jumped && m_player->publishedTrackId() == currentTrackId())
        m_seekSettle.start();
}

QDBusObjectPath NowPlayingManager::currentTrackId() const
{
    if (!m_engine || m_engine->currentURL().isEmpty())
        return MPRISPlayerAdaptor::noTrack;
    // Object paths allow only [A-Za-z0-9_] in an element; a digest of the URL fits and names
    // the same file the same way every time.
    const QByteArray digest =
        QCryptographicHash::hash(m_engine->currentURL().toEncoded(), QCryptographicHash::Md5);
    return QDBusObjectPath(QStringLiteral("/org/velmar/VelmarPlayer/track/") +
                           QString::fromLatin1(digest.toHex()));
}

void NowPlayingManager::play()
{
    if (m_engine)
        m_engine->play();
}

void NowPlayingManager::pause()
{
    if (m_engine)
        m_engine->pause();
}

void NowPlayingManager::togglePlayPause()
{
    if (m_engine)
        togglePlayPauseWithIndicator(*m_engine);
}

void NowPlayingManager::changePlaybackPosition(double seconds)
{
    if (m_engine)
        m_engine->seek(seconds); // runs on by itself; the command has already been answered
}

void NowPlayingManager::nextTrack()
{
    if (m_engine)
        m_engine->playNext();
}

void NowPlayingManager::previousTrack()
{
    if (m_engine)
        m_engine->playPrevious();
}
