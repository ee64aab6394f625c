#pragma once

#include "FilterManager.h"
#include "model/PerFileSettings.h"

#include <QObject>

/// What the user adjusted on the open file: the picture filters, the rotation and the audio
/// delay, which are remembered per file together. It keeps the values and their rules; its
/// owner passes each change on to the player core. GUI thread only.
class VideoAdjustments : public QObject
{
    Q_OBJECT

public:
    explicit VideoAdjustments(QObject* parent = nullptr);

    FilterManager* filters() const { return m_filters; }
    int rotation() const { return m_rotation; }
    double audioDelay() const { return m_audioDelay; }

    /// Degrees; the remainder of 360 keeps the sign (-90 stays -90).
    void setRotation(int degrees);
    /// Kept within ±5 s; a value that is not a number counts as 0. Returns the delay kept.
    double setAudioDelay(double seconds);

    /// The settings as saved per file, and their restoration: a file without saved settings
    /// restores the defaults (upright, neutral filters), but the audio delay carries over
    /// from file to file unless a file has its own.
    PerFileSettings perFileSettings() const;
    void restore(const PerFileSettings& settings);

Q_SIGNALS:
    void rotationChanged(int degrees);
    void audioDelayChanged(double seconds);

private:
    FilterManager* m_filters;
    int m_rotation = 0;
    double m_audioDelay = 0;
};
