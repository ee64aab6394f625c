#pragma once

#include "PlayerAction.h"

#include <optional>
#include <QByteArray>
#include <QList>
#include <QString>

/// Stored modifier bits. Kept as the player has always stored them, whatever the desktop:
/// "command" is the Ctrl key and "control" the Meta (Super) key on Linux.
namespace KeyModifier {
inline constexpr quint64 shift = 0x20000;
inline constexpr quint64 control = 0x40000;
inline constexpr quint64 option = 0x80000;
inline constexpr quint64 command = 0x100000;
} // namespace KeyModifier

/// One action on one key with a modifier set. Key codes are the player's stored key numbers
/// (see QtKeyTranslation for how keyboard events map onto them).
struct KeyBinding
{
    PlayerAction action = PlayerAction::togglePlayPause;
    quint16 keyCode = 0;
    quint64 modifiers = 0;

    /// Modifier glyphs in the order ^ ⌥ ⇧ ⌘, then the key: "⇧←", "^]".
    QString displayString() const;

    friend bool operator==(const KeyBinding&, const KeyBinding&) = default;
};

/// "A", "Space", "→", ... ; codes without a label read "Key" and the number ("Key122").
QString keyCodeToString(quint16 keyCode);

namespace KeyBindings {

/// The 28 default bindings, in their fixed order.
QList<KeyBinding> defaults();
/// [{"action": "...", "keyCode": n, "modifiers": n}, ...]
QByteArray toJson(const QList<KeyBinding>& bindings);
/// Nothing unless every entry is complete and names a known action.
std::optional<QList<KeyBinding>> fromJson(const QByteArray& json);

} // namespace KeyBindings
