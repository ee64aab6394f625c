#include "ControlStrip.h"

#include "engine/PlaybackEngine.h"
#include "model/TimeFormat.h"

namespace {
constexpr int kSyncIntervalMs = 500;
} // namespace

ControlStrip::ControlStrip(PlaybackEngine& engine, QObject* parent)
    : QObject(parent)
    , m_engine(&engine)
{
    m_sync.setInterval(kSyncIntervalMs);
    connect(&m_sync, &QTimer::timeout, this, &ControlStrip::syncState);
    connect(&engine, &PlaybackEngine::stateChanged, this, [this] {
        if (running())
            syncState();
    });
    syncState();
}

void ControlStrip::setRunning(bool running)
{
    if (running == m_sync.isActive())
        return;
    if (running) {
        syncState();
        m_sync.start();
    } else {
        m_sync.stop();
    }
    Q_EMIT runningChanged();
}

void ControlStrip::syncState()
{
    if (!m_engine)
        return;
    const bool playing = m_engine->state().kind() == PlayerState::Kind::Playing;
    const double duration = m_engine->duration();
    const double value = duration > 0 ? m_engine->currentTime() / duration : m_sliderValue;
    const QString text = velmar::formatTime(m_engine->currentTime()) + QStringLiteral(" / ") +
                         velmar::formatTime(duration);
    if (playing == m_isPlaying && value == m_sliderValue && text == m_timeText)
        return; // nothing new: nothing to draw
    m_isPlaying = playing;
    m_sliderValue = value;
    m_timeText = text;
    Q_EMIT synced();
}

void ControlStrip::seekSliderChanged(double value)
{
    if (m_engine)
        m_engine->seek(value * m_engine->duration());
}
