#pragma once

#include <QString>

namespace velmar {

/// Bits per second as "128 kbps", or "1.5 Mbps" from a thousand kbps on.
QString formatBitrate(qint64 bitsPerSecond);
/// "Mono", "Stereo", "5.1", "7.1", or the count followed by "ch".
QString formatChannels(int channels);
/// "48 kHz" for whole kilohertz, else one decimal: "44.1 kHz".
QString formatSampleRate(int hertz);

} // namespace velmar
