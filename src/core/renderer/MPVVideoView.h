#pragma once

#include <QPointer>
#include <QQuickFramebufferObject>
#include <QtQml/qqmlregistration.h>

class PlaybackEngine;
class MPVDecoder;
Q_MOC_INCLUDE("core/engine/PlaybackEngine.h")

/// The QML element that shows the video. Its renderer (`MPVVideoLayer`) does all GL work on the
/// Qt Quick render thread; this item lives on the GUI thread and only schedules redraws: when
/// libmpv has a frame, when the engine needs a refreshed frame, and on resize.
///
/// The engine (and with it the decoder) must outlive every window that shows this item.
class MPVVideoView : public QQuickFramebufferObject
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(PlaybackEngine* engine READ engine WRITE setEngine NOTIFY engineChanged)

public:
    explicit MPVVideoView(QQuickItem* parent = nullptr);

    PlaybackEngine* engine() const { return m_engine; }
    void setEngine(PlaybackEngine* engine);

    /// GUI thread, or the render thread while the GUI thread is blocked in a sync.
    MPVDecoder* decoder() const;

    Renderer* createRenderer() const override;

Q_SIGNALS:
    void engineChanged();

protected:
    void geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) override;

private:
    void refreshFrame();

    QPointer<PlaybackEngine> m_engine;
};
