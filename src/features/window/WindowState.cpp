#include "WindowState.h"

#include "base/PropertyUpdate.h"
#include "infrastructure/preferences/Preferences.h"

#include <QVariantMap>

using velmar::assignIfChanged;

WindowState::WindowState(QObject* parent)
    : QObject(parent)
{}

void WindowState::setIsFullscreen(bool fullscreen)
{
    if (assignIfChanged(m_isFullscreen, fullscreen))
        Q_EMIT isFullscreenChanged();
}

void WindowState::setVideoAspectRatio(double ratio)
{
    if (assignIfChanged(m_videoAspectRatio, ratio))
        Q_EMIT videoAspectRatioChanged();
}

void WindowState::setWindowFrame(const QRectF& frame)
{
    if (assignIfChanged(m_windowFrame, frame))
        Q_EMIT windowFrameChanged();
}

QVariant WindowState::priorWindowedFrameVariant() const
{
    return m_priorWindowedFrame ? QVariant(*m_priorWindowedFrame) : QVariant();
}

void WindowState::setPriorWindowedFrame(const std::optional<QRectF>& frame)
{
    if (assignIfChanged(m_priorWindowedFrame, frame))
        Q_EMIT priorWindowedFrameChanged();
}

std::optional<QRectF> WindowState::loadSavedFrame() const
{
    const QVariant stored = Preferences().value(PreferenceKeys::windowFrame);
    if (stored.typeId() != QMetaType::QVariantMap)
        return std::nullopt;
    const QVariantMap map = stored.toMap();
    double values[4];
    const char* keys[4] = {"x", "y", "w", "h"};
    for (int i = 0; i < 4; ++i) {
        const QVariant value = map.value(QLatin1String(keys[i]));
        const int type = value.typeId();
        if (type != QMetaType::Double && type != QMetaType::Float && type != QMetaType::Int &&
            type != QMetaType::LongLong)
            return std::nullopt;
        values[i] = value.toDouble();
    }
    return QRectF(values[0], values[1], values[2], values[3]);
}

void WindowState::saveFrame(const QRectF& frame)
{
    setWindowFrame(frame);
    m_writer.setValue(PreferenceKeys::windowFrame,
                      QVariantMap{{QStringLiteral("x"), frame.x()},
                                  {QStringLiteral("y"), frame.y()},
                                  {QStringLiteral("w"), frame.width()},
                                  {QStringLiteral("h"), frame.height()}});
}
