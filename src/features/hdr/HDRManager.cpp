#include "HDRManager.h"

#include "base/PropertyUpdate.h"

using velmar::assignIfChanged;

void HDRManager::handlePropertyChange(const QString& name, const std::optional<QString>& value)
{
    if (name == QLatin1String("video-params/gamma")) {
        const QString transfer = value.value_or(QStringLiteral("bt.1886"));
        setTransferFunction(transfer);
        // Case matters: libmpv's names are lower case, anything else is not a known HDR curve.
        setIsHDRContent(transfer == QLatin1String("pq") || transfer == QLatin1String("hlg"));
    } else if (name == QLatin1String("video-params/primaries")) {
        // Wide primaries alone (BT.2020 with an SDR curve) are not HDR.
        setPrimaries(value.value_or(QStringLiteral("bt.709")));
    }
}

void HDRManager::reset()
{
    setIsHDRContent(false);
    setTransferFunction(QStringLiteral("bt.1886"));
    setPrimaries(QStringLiteral("bt.709"));
    setMaxEDR(1.0);
}

void HDRManager::setIsHDRContent(bool value)
{
    if (assignIfChanged(m_isHDRContent, value))
        Q_EMIT isHDRContentChanged();
}

void HDRManager::setTransferFunction(const QString& value)
{
    if (assignIfChanged(m_transferFunction, value))
        Q_EMIT transferFunctionChanged();
}

void HDRManager::setPrimaries(const QString& value)
{
    if (assignIfChanged(m_primaries, value))
        Q_EMIT primariesChanged();
}

void HDRManager::setMaxEDR(double value)
{
    if (assignIfChanged(m_maxEDR, value))
        Q_EMIT maxEDRChanged();
}
