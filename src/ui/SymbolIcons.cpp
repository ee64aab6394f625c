#include "SymbolIcons.h"

#include "base/Log.h"

#include <array>
#include <utility>

namespace {

// The symbols are those the models and views name; the icons are the Adwaita theme's symbolic
// ones, which recolour to the text colour of dark controls.
constexpr std::array<std::pair<const char*, const char*>, 26> kIcons = {{
    {"folder", "folder-open-symbolic"},
    {"list.bullet", "view-list-bullet-symbolic"},
    {"keyboard", "input-keyboard-symbolic"},
    {"play.fill", "media-playback-start-symbolic"},
    {"pause.fill", "media-playback-pause-symbolic"},
    {"speaker.wave.1.fill", "audio-volume-low-symbolic"},
    {"speaker.wave.2.fill", "audio-volume-medium-symbolic"},
    {"speaker.wave.3.fill", "audio-volume-high-symbolic"},
    {"speaker.slash.fill", "audio-volume-muted-symbolic"},
    {"exclamationmark.triangle", "dialog-warning-symbolic"},
    {"arrow.right", "go-next-symbolic"},
    {"gauge.with.needle", "power-profile-performance-symbolic"},
    {"info.circle", "dialog-information-symbolic"},
    {"slider.horizontal.3", "preferences-color-symbolic"},
    {"bookmark", "user-bookmarks-symbolic"},
    {"bookmark.fill", "user-bookmarks-symbolic"},
    {"captions.bubble", "media-view-subtitles-symbolic"},
    {"film", "video-x-generic-symbolic"},
    {"waveform", "audio-x-generic-symbolic"},
    {"xmark", "process-stop-symbolic"},
    {"plus.circle", "list-add-symbolic"},
    {"checkmark.circle.fill", "emblem-ok-symbolic"},
    {"circle", "radio-symbolic"},
    {"pip.fill", "focus-windows-symbolic"},
    {"arrow.up.forward.square", "find-location-symbolic"},
    {"line.3.horizontal", "open-menu-symbolic"},
}};

} // namespace

QString SymbolIcons::name(const QString& symbol)
{
    for (const auto& [known, icon] : kIcons) {
        if (symbol == QLatin1String(known))
            return QString::fromLatin1(icon);
    }
    velmar::logLine(QStringLiteral("[SymbolIcons] No icon for the symbol \"%1\"").arg(symbol));
    return QStringLiteral("image-missing-symbolic");
}

QStringList SymbolIcons::symbols()
{
    QStringList all;
    for (const auto& entry : kIcons)
        all << QString::fromLatin1(entry.first);
    return all;
}
