#include "PlaybackFollowers.h"

#include "engine/PlaybackEngine.h"
#include "features/pip/PiPManager.h"
#include "infrastructure/preferences/Preferences.h"
#include "infrastructure/system/SleepPreventer.h"

PlaybackFollowers::PlaybackFollowers(PlaybackEngine& engine, SleepPreventer& sleepPreventer,
                                     QObject* parent)
    : QObject(parent)
    , m_engine(&engine)
    , m_sleepPreventer(&sleepPreventer)
{
    m_placeSaver.setInterval(std::chrono::seconds(5));
    connect(&m_placeSaver, &QTimer::timeout, this, [this] { m_engine->savePlace(); });
    connect(&engine, &PlaybackEngine::stateChanged, this, [this] {
        const bool playing = m_engine->state().kind() == PlayerState::Kind::Playing;
        m_engine->pip()->setPlaying(playing);
        if (playing) {
            m_sleepPreventer->preventSleep();
            m_placeSaver.start();
        } else {
            m_sleepPreventer->allowSleep();
            m_placeSaver.stop();
        }
    });
    connect(&engine, &PlaybackEngine::volumeChanged, this,
            [this] { m_preferences.setValue(PreferenceKeys::volume, m_engine->volume()); });
    connect(&engine, &PlaybackEngine::isMutedChanged, this,
            [this] { m_preferences.setValue(PreferenceKeys::isMuted, m_engine->isMuted()); });
}
