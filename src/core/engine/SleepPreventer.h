#pragma once

#include <QtGlobal>

/// Keeps the display awake while video plays, through the desktop's
/// org.freedesktop.ScreenSaver service on the session bus. Without a bus or without that
/// service it silently stays inactive, and the next `preventSleep` tries again.
/// GUI thread only.
class SleepPreventer
{
public:
    SleepPreventer() = default;
    ~SleepPreventer();
    SleepPreventer(const SleepPreventer&) = delete;
    SleepPreventer& operator=(const SleepPreventer&) = delete;

    void preventSleep();
    void allowSleep();

    bool isActive() const { return m_isActive; }
    quint32 assertionID() const { return m_assertionID; }

private:
    quint32 m_assertionID = 0; // the service's inhibit cookie
    bool m_isActive = false;
};
