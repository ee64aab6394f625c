#pragma once

#include "infrastructure/preferences/PreferenceWriter.h"

#include <optional>
#include <QObject>
#include <QRectF>
#include <QString>
#include <QtQml/qqmlregistration.h>
#include <QVariant>

/// The main window's geometry facts, and its windowed frame remembered across launches as
/// {"x", "y", "w", "h"} (Qt window geometry, top-left origin). GUI thread only.
class WindowState : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Owned by the playback engine")
    Q_PROPERTY(bool isFullscreen READ isFullscreen WRITE setIsFullscreen NOTIFY isFullscreenChanged)
    Q_PROPERTY(double videoAspectRatio READ videoAspectRatio WRITE setVideoAspectRatio NOTIFY
                   videoAspectRatioChanged)
    Q_PROPERTY(QRectF windowFrame READ windowFrame WRITE setWindowFrame NOTIFY windowFrameChanged)
    /// The frame to return to after full screen, or undefined.
    Q_PROPERTY(
        QVariant priorWindowedFrame READ priorWindowedFrameVariant NOTIFY priorWindowedFrameChanged)

public:
    explicit WindowState(QObject* parent = nullptr);

    bool isFullscreen() const { return m_isFullscreen; }
    void setIsFullscreen(bool fullscreen);
    double videoAspectRatio() const { return m_videoAspectRatio; }
    void setVideoAspectRatio(double ratio);
    QRectF windowFrame() const { return m_windowFrame; }
    void setWindowFrame(const QRectF& frame);
    std::optional<QRectF> priorWindowedFrame() const { return m_priorWindowedFrame; }
    QVariant priorWindowedFrameVariant() const;
    void setPriorWindowedFrame(const std::optional<QRectF>& frame);

    /// The saved frame, or nothing when none is stored or the stored value is malformed.
    std::optional<QRectF> loadSavedFrame() const;
    /// Adopts the frame and writes it to the preferences: a moment after the last of a burst
    /// of moves, and in any case before the window state goes.
    void saveFrame(const QRectF& frame);

Q_SIGNALS:
    void isFullscreenChanged();
    void videoAspectRatioChanged();
    void windowFrameChanged();
    void priorWindowedFrameChanged();

private:
    bool m_isFullscreen = false;
    double m_videoAspectRatio = 16.0 / 9.0;
    QRectF m_windowFrame;
    std::optional<QRectF> m_priorWindowedFrame;
    PreferenceWriter m_writer;
};
