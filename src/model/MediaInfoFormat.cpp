#include "MediaInfoFormat.h"

namespace velmar {

QString formatBitrate(qint64 bitsPerSecond)
{
    const double kilobits = double(bitsPerSecond) / 1000.0;
    // Rounding decides the unit only after the cut: 999999 stays "1000 kbps".
    if (kilobits >= 1000)
        return QString::asprintf("%.1f Mbps", kilobits / 1000.0);
    return QString::asprintf("%.0f kbps", kilobits);
}

QString formatChannels(int channels)
{
    switch (channels) {
    case 1:
        return QStringLiteral("Mono");
    case 2:
        return QStringLiteral("Stereo");
    case 6:
        return QStringLiteral("5.1");
    case 8:
        return QStringLiteral("7.1");
    default:
        return QString::number(channels) + QStringLiteral("ch");
    }
}

QString formatSampleRate(int hertz)
{
    if (hertz % 1000 == 0)
        return QString::number(hertz / 1000) + QStringLiteral(" kHz");
    return QString::asprintf("%.1f kHz", hertz / 1000.0);
}

} // namespace velmar
