#include "HDRManager.h"

#include "base/PropertyUpdate.h"

using velmar::assignIfChanged;

void HDRManager::updateTransferFunction(const QString& name)
{
    const QString transfer = name.isNull() ? QStringLiteral("bt.1886") : name;
    setTransferFunction(transfer);
    // Case matters: libmpv's names are lower case, anything else is not a known HDR curve.
    setIsHDRContent(transfer == QLatin1String("pq") || transfer == QLatin1String("hlg"));
}

void HDRManager::updatePrimaries(const QString& name)
{
    // Wide primaries alone (BT.2020 with an SDR curve) are not HDR.
    setPrimaries(name.isNull() ? QStringLiteral("bt.709") : name);
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
