#pragma once

#include "infrastructure/preferences/PreferenceWriter.h"

#include <QObject>
#include <QPointer>
#include <QTimer>

class PlaybackEngine;
class SleepPreventer;

/// What follows the engine's state beside the desktop's media controls: the screen stays awake
/// exactly while video plays, picture in picture knows whether playback runs, a playing file's
/// place is written down every few seconds (a crash or a power cut loses at most those), and
/// the volume and mute are remembered for the next start (written a moment after the last
/// change, not on every step). GUI thread only.
class PlaybackFollowers : public QObject
{
    Q_OBJECT

public:
    PlaybackFollowers(PlaybackEngine& engine, SleepPreventer& sleepPreventer,
                      QObject* parent = nullptr);

private:
    QPointer<PlaybackEngine> m_engine;
    QPointer<SleepPreventer> m_sleepPreventer;
    PreferenceWriter m_preferences;
    QTimer m_placeSaver;
};
