#include "QtKeyTranslation.h"

#include "KeyBinding.h"

#include <QHash>
#include <QKeySequence>

namespace QtKeyTranslation {
namespace {

struct KeyPair
{
    int qtKey;
    quint16 code;
};

// Letters, digits, punctuation and named keys of the main keyboard.
constexpr KeyPair kMainKeys[] = {
    {Qt::Key_A, 0},          {Qt::Key_S, 1},          {Qt::Key_D, 2},
    {Qt::Key_F, 3},          {Qt::Key_H, 4},          {Qt::Key_G, 5},
    {Qt::Key_Z, 6},          {Qt::Key_X, 7},          {Qt::Key_C, 8},
    {Qt::Key_V, 9},          {Qt::Key_B, 11},         {Qt::Key_Q, 12},
    {Qt::Key_W, 13},         {Qt::Key_E, 14},         {Qt::Key_R, 15},
    {Qt::Key_Y, 16},         {Qt::Key_T, 17},         {Qt::Key_1, 18},
    {Qt::Key_2, 19},         {Qt::Key_3, 20},         {Qt::Key_4, 21},
    {Qt::Key_6, 22},         {Qt::Key_5, 23},         {Qt::Key_Equal, 24},
    {Qt::Key_9, 25},         {Qt::Key_7, 26},         {Qt::Key_Minus, 27},
    {Qt::Key_8, 28},         {Qt::Key_0, 29},         {Qt::Key_BracketRight, 30},
    {Qt::Key_O, 31},         {Qt::Key_U, 32},         {Qt::Key_BracketLeft, 33},
    {Qt::Key_I, 34},         {Qt::Key_P, 35},         {Qt::Key_Return, 36},
    {Qt::Key_L, 37},         {Qt::Key_J, 38},         {Qt::Key_Apostrophe, 39},
    {Qt::Key_K, 40},         {Qt::Key_Semicolon, 41}, {Qt::Key_Backslash, 42},
    {Qt::Key_Comma, 43},     {Qt::Key_Slash, 44},     {Qt::Key_N, 45},
    {Qt::Key_M, 46},         {Qt::Key_Period, 47},    {Qt::Key_Tab, 48},
    {Qt::Key_Space, 49},     {Qt::Key_QuoteLeft, 50}, {Qt::Key_Backspace, 51},
    {Qt::Key_Escape, 53},    {Qt::Key_Left, 123},     {Qt::Key_Right, 124},
    {Qt::Key_Down, 125},     {Qt::Key_Up, 126},       {Qt::Key_Delete, 117},
    {Qt::Key_Home, 115},     {Qt::Key_End, 119},      {Qt::Key_PageUp, 116},
    {Qt::Key_PageDown, 121}, {Qt::Key_F1, 122},       {Qt::Key_F2, 120},
    {Qt::Key_F3, 99},        {Qt::Key_F4, 118},       {Qt::Key_F5, 96},
    {Qt::Key_F6, 97},        {Qt::Key_F7, 98},        {Qt::Key_F8, 100},
    {Qt::Key_F9, 101},       {Qt::Key_F10, 109},      {Qt::Key_F11, 103},
    {Qt::Key_F12, 111},
};

// What a US layout produces with Shift held, mapped back to the key that was pressed.
constexpr KeyPair kShiftedKeys[] = {
    {Qt::Key_Exclam, 18},     {Qt::Key_At, 19},          {Qt::Key_NumberSign, 20},
    {Qt::Key_Dollar, 21},     {Qt::Key_AsciiCircum, 22}, {Qt::Key_Percent, 23},
    {Qt::Key_Plus, 24},       {Qt::Key_ParenLeft, 25},   {Qt::Key_Ampersand, 26},
    {Qt::Key_Underscore, 27}, {Qt::Key_Asterisk, 28},    {Qt::Key_ParenRight, 29},
    {Qt::Key_BraceRight, 30}, {Qt::Key_BraceLeft, 33},   {Qt::Key_QuoteDbl, 39},
    {Qt::Key_Colon, 41},      {Qt::Key_Bar, 42},         {Qt::Key_Less, 43},
    {Qt::Key_Question, 44},   {Qt::Key_Greater, 47},     {Qt::Key_AsciiTilde, 50},
    {Qt::Key_Backtab, 48},
};

// The numeric keypad has keys of its own.
constexpr KeyPair kKeypadKeys[] = {
    {Qt::Key_0, 82},
    {Qt::Key_1, 83},
    {Qt::Key_2, 84},
    {Qt::Key_3, 85},
    {Qt::Key_4, 86},
    {Qt::Key_5, 87},
    {Qt::Key_6, 88},
    {Qt::Key_7, 89},
    {Qt::Key_8, 91},
    {Qt::Key_9, 92},
    {Qt::Key_Period, 65},
    {Qt::Key_Asterisk, 67},
    {Qt::Key_Plus, 69},
    {Qt::Key_Slash, 75},
    {Qt::Key_Enter, 76},
    {Qt::Key_Minus, 78},
    {Qt::Key_Equal, 81},
    // With Num Lock off the keypad reports navigation keys; arrows stay arrows.
    {Qt::Key_Left, 123},
    {Qt::Key_Right, 124},
    {Qt::Key_Down, 125},
    {Qt::Key_Up, 126},
};

template <size_t N> QHash<int, quint16> toHash(const KeyPair (&pairs)[N])
{
    QHash<int, quint16> hash;
    for (const KeyPair& pair : pairs)
        hash.insert(pair.qtKey, pair.code);
    return hash;
}

} // namespace

std::optional<quint16> keyCode(int qtKey, Qt::KeyboardModifiers modifiers)
{
    static const QHash<int, quint16> main = toHash(kMainKeys);
    static const QHash<int, quint16> shifted = toHash(kShiftedKeys);
    static const QHash<int, quint16> keypad = toHash(kKeypadKeys);
    if (modifiers & Qt::KeypadModifier) {
        if (const auto it = keypad.constFind(qtKey); it != keypad.constEnd())
            return *it;
    }
    if (qtKey == Qt::Key_Enter)
        return 76;
    if (const auto it = main.constFind(qtKey); it != main.constEnd())
        return *it;
    if (const auto it = shifted.constFind(qtKey); it != shifted.constEnd())
        return *it;
    return std::nullopt;
}

quint64 modifierBits(Qt::KeyboardModifiers modifiers)
{
    quint64 bits = 0;
    if (modifiers & Qt::ShiftModifier)
        bits |= KeyModifier::shift;
    if (modifiers & Qt::MetaModifier)
        bits |= KeyModifier::control;
    if (modifiers & Qt::AltModifier)
        bits |= KeyModifier::option;
    if (modifiers & Qt::ControlModifier)
        bits |= KeyModifier::command;
    return bits;
}

Qt::KeyboardModifiers qtModifiers(quint64 bits)
{
    Qt::KeyboardModifiers modifiers;
    if (bits & KeyModifier::shift)
        modifiers |= Qt::ShiftModifier;
    if (bits & KeyModifier::control)
        modifiers |= Qt::MetaModifier;
    if (bits & KeyModifier::option)
        modifiers |= Qt::AltModifier;
    if (bits & KeyModifier::command)
        modifiers |= Qt::ControlModifier;
    return modifiers;
}

QString shortcutText(quint16 code, quint64 bits)
{
    Qt::KeyboardModifiers modifiers = qtModifiers(bits);
    std::optional<int> key = qtKey(code);
    if (!key) {
        key = qtKey(code, true);
        modifiers |= Qt::KeypadModifier;
    }
    if (!key)
        return keyCodeToString(code);
    return QKeySequence(QKeyCombination(modifiers, Qt::Key(*key)))
        .toString(QKeySequence::NativeText);
}

std::optional<int> qtKey(quint16 code, bool keypad)
{
    if (keypad) {
        for (const KeyPair& pair : kKeypadKeys) {
            if (pair.code == code)
                return pair.qtKey;
        }
    }
    for (const KeyPair& pair : kMainKeys) {
        if (pair.code == code)
            return pair.qtKey;
    }
    return code == 76 ? std::optional<int>(Qt::Key_Enter) : std::nullopt;
}

} // namespace QtKeyTranslation
