#pragma once

#include <optional>
#include <QString>
#include <Qt>

/// Maps Qt's keyboard events onto the player's stored key numbers and modifier bits.
/// Shifted punctuation is mapped back to its unshifted key (Shift+] arrives as "}"), so bindings
/// name physical keys the way they are stored. Ctrl is the stored "command" bit and Meta the
/// stored "control" bit, following Qt's cross-platform convention.
namespace QtKeyTranslation {

std::optional<quint16> keyCode(int qtKey, Qt::KeyboardModifiers modifiers);
quint64 modifierBits(Qt::KeyboardModifiers modifiers);

Qt::KeyboardModifiers qtModifiers(quint64 bits);
/// How menus and the key-binding editor show a stored key: the desktop's own text ("Ctrl+K").
QString shortcutText(quint16 keyCode, quint64 modifierBits);

/// The reverse, for synthesizing and showing keys: the Qt key of a stored key number.
std::optional<int> qtKey(quint16 keyCode, bool keypad = false);

} // namespace QtKeyTranslation
