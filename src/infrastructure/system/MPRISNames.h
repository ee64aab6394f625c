#pragma once

#include <QString>

/// Where the player answers on the session bus. Desktops find MPRIS players by the service
/// name's prefix, and every MPRIS player serves the same object path.
namespace MPRISNames {

inline const QString service = QStringLiteral("org.mpris.MediaPlayer2.velmarplayer");
inline const QString objectPath = QStringLiteral("/org/mpris/MediaPlayer2");
inline const QString rootInterface = QStringLiteral("org.mpris.MediaPlayer2");
inline const QString playerInterface = QStringLiteral("org.mpris.MediaPlayer2.Player");

} // namespace MPRISNames
