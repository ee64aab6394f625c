#include "SettingsModel.h"

#include "infrastructure/preferences/Preferences.h"

namespace Keys = PreferenceKeys;

bool SettingsModel::resumePlayback() const
{
    return Preferences().resumePlayback();
}
void SettingsModel::setResumePlayback(bool on)
{
    writeBool(Keys::resumePlayback, on);
}
bool SettingsModel::autoPlayOnOpen() const
{
    return Preferences().autoPlayOnOpen();
}
void SettingsModel::setAutoPlayOnOpen(bool on)
{
    writeBool(Keys::autoPlayOnOpen, on);
}
bool SettingsModel::preventSleep() const
{
    return Preferences().preventSleep();
}
void SettingsModel::setPreventSleep(bool on)
{
    writeBool(Keys::preventSleep, on);
}
double SettingsModel::defaultVolume() const
{
    return Preferences().defaultVolume();
}
void SettingsModel::setDefaultVolume(double volume)
{
    writeDouble(Keys::defaultVolume, volume);
}
double SettingsModel::seekSmallStep() const
{
    return Preferences().seekSmallStep();
}
void SettingsModel::setSeekSmallStep(double seconds)
{
    writeDouble(Keys::seekSmallStep, seconds);
}
double SettingsModel::seekLargeStep() const
{
    return Preferences().seekLargeStep();
}
void SettingsModel::setSeekLargeStep(double seconds)
{
    writeDouble(Keys::seekLargeStep, seconds);
}
bool SettingsModel::hardwareDecoding() const
{
    return Preferences().hardwareDecoding();
}
void SettingsModel::setHardwareDecoding(bool on)
{
    writeBool(Keys::hardwareDecoding, on);
}
double SettingsModel::controlBarOpacity() const
{
    return Preferences().controlBarOpacity();
}
void SettingsModel::setControlBarOpacity(double opacity)
{
    writeDouble(Keys::controlBarOpacity, opacity);
}
double SettingsModel::controlsAutoHideDelay() const
{
    return Preferences().controlsAutoHideDelay();
}
void SettingsModel::setControlsAutoHideDelay(double seconds)
{
    writeDouble(Keys::controlsAutoHideDelay, seconds);
}
double SettingsModel::osdDuration() const
{
    return Preferences().osdDuration();
}
void SettingsModel::setOsdDuration(double seconds)
{
    writeDouble(Keys::osdDuration, seconds);
}

QString SettingsModel::formatSeconds(double seconds)
{
    return QString::asprintf("%.1fs", seconds);
}

void SettingsModel::writeBool(const QString& key, bool value)
{
    const Preferences preferences;
    if (preferences.contains(key) && preferences.boolValue(key) == value)
        return;
    m_writer.setValue(key, value);
    Q_EMIT changed();
}

void SettingsModel::writeDouble(const QString& key, double value)
{
    const Preferences preferences;
    if (preferences.contains(key) && preferences.doubleValue(key) == value)
        return;
    m_writer.setValue(key, value);
    Q_EMIT changed();
}
