#pragma once

#include "infrastructure/preferences/PreferenceWriter.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

/// The settings window's view of the preferences: each property reads the stored value (or its
/// fallback), and every change takes effect at once and reaches the settings file a moment
/// after the last one (a dragged slider writes the file once), so nothing needs saving on
/// close. GUI thread.
class SettingsModel : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(bool resumePlayback READ resumePlayback WRITE setResumePlayback NOTIFY changed)
    Q_PROPERTY(bool autoPlayOnOpen READ autoPlayOnOpen WRITE setAutoPlayOnOpen NOTIFY changed)
    Q_PROPERTY(bool preventSleep READ preventSleep WRITE setPreventSleep NOTIFY changed)
    Q_PROPERTY(double defaultVolume READ defaultVolume WRITE setDefaultVolume NOTIFY changed)
    Q_PROPERTY(double seekSmallStep READ seekSmallStep WRITE setSeekSmallStep NOTIFY changed)
    Q_PROPERTY(double seekLargeStep READ seekLargeStep WRITE setSeekLargeStep NOTIFY changed)
    Q_PROPERTY(bool hardwareDecoding READ hardwareDecoding WRITE setHardwareDecoding NOTIFY changed)
    Q_PROPERTY(
        double controlBarOpacity READ controlBarOpacity WRITE setControlBarOpacity NOTIFY changed)
    Q_PROPERTY(double controlsAutoHideDelay READ controlsAutoHideDelay WRITE
                   setControlsAutoHideDelay NOTIFY changed)
    Q_PROPERTY(double osdDuration READ osdDuration WRITE setOsdDuration NOTIFY changed)

public:
    using QObject::QObject;

    bool resumePlayback() const;
    void setResumePlayback(bool on);
    bool autoPlayOnOpen() const;
    void setAutoPlayOnOpen(bool on);
    bool preventSleep() const;
    void setPreventSleep(bool on);
    double defaultVolume() const;
    void setDefaultVolume(double volume);
    double seekSmallStep() const;
    void setSeekSmallStep(double seconds);
    double seekLargeStep() const;
    void setSeekLargeStep(double seconds);
    bool hardwareDecoding() const;
    void setHardwareDecoding(bool on);
    double controlBarOpacity() const;
    void setControlBarOpacity(double opacity);
    double controlsAutoHideDelay() const;
    void setControlsAutoHideDelay(double seconds);
    double osdDuration() const;
    void setOsdDuration(double seconds);

    /// "%.1f" and "s", as the delay and duration labels read.
    Q_INVOKABLE static QString formatSeconds(double seconds);

Q_SIGNALS:
    void changed();

private:
    void writeBool(const QString& key, bool value);
    void writeDouble(const QString& key, double value);

    PreferenceWriter m_writer;
};
