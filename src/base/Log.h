#pragma once

#include <QString>

namespace velmar {

/// Writes one diagnostic line to standard output, e.g. "[MPVDecoder] mpv error: ...".
/// Every subsystem tags its lines with its type name in square brackets; there are no levels.
/// Safe to call from any thread (one write per line).
void logLine(const QString& line);

} // namespace velmar
