#pragma once

#include <optional>
#include <Qt>

/// Maps Qt's keyboard events onto the player's stored key numbers and modifier bits.
/// Shifted punctuation is mapped back to its unshifted key (Shift+] arrives as "}"), so bindings
/// name physical keys the way they are stored. Ctrl is the stored "command" bit and Meta the
/// stored "control" bit, following Qt's cross-platform convention.
namespace QtKeyTranslation {

std::optional<quint16> keyCode(int qtKey, Qt::KeyboardModifiers modifiers);
quint64 modifierBits(Qt::KeyboardModifiers modifiers);

/// The reverse, for synthesizing and showing keys: the Qt key of a stored key number.
std::optional<int> qtKey(quint16 keyCode, bool keypad = false);

} // namespace QtKeyTranslation
