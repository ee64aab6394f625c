#include "KeyBinding.h"

#include <cmath>

#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

QString keyCodeToString(quint16 keyCode)
{
    static const QHash<quint16, QString> labels = [] {
        QHash<quint16, QString> table;
        const char* const letters[] = {"A", "S", "D", "F", "H", "G", "Z", "X", "C", "V"};
        for (quint16 code = 0; code <= 9; ++code)
            table.insert(code, QString::fromLatin1(letters[code]));
        const char* const row[] = {"B", "Q",  "W", "E", "R", "Y",      "T", "1",   "2",    "3",
                                   "4", "6",  "5", "=", "9", "7",      "-", "8",   "0",    "]",
                                   "O", "U",  "[", "I", "P", "Return", "L", "J",   "'",    "K",
                                   ";", "\\", ",", "/", "N", "M",      ".", "Tab", "Space"};
        for (quint16 i = 0; i < sizeof row / sizeof *row; ++i)
            table.insert(quint16(11 + i), QString::fromLatin1(row[i]));
        table.insert(51, QStringLiteral("Delete"));
        table.insert(53, QStringLiteral("Esc"));
        table.insert(76, QStringLiteral("Enter"));
        table.insert(123, QStringLiteral("\u2190"));
        table.insert(124, QStringLiteral("\u2192"));
        table.insert(125, QStringLiteral("\u2193"));
        table.insert(126, QStringLiteral("\u2191"));
        return table;
    }();
    return labels.value(keyCode, QStringLiteral("Key%1").arg(keyCode));
}

QString KeyBinding::displayString() const
{
    QString text;
    if (modifiers & KeyModifier::control)
        text += QLatin1Char('^');
    if (modifiers & KeyModifier::option)
        text += QStringLiteral("\u2325");
    if (modifiers & KeyModifier::shift)
        text += QStringLiteral("\u21e7");
    if (modifiers & KeyModifier::command)
        text += QStringLiteral("\u2318");
    return text + keyCodeToString(keyCode);
}

namespace KeyBindings {

QList<KeyBinding> defaults()
{
    using A = PlayerAction;
    using namespace KeyModifier;
    return {
        {A::togglePlayPause, 49, 0},
        {A::seekBackwardSmall, 123, 0},
        {A::seekForwardSmall, 124, 0},
        {A::seekBackwardLarge, 123, shift},
        {A::seekForwardLarge, 124, shift},
        {A::volumeUp, 126, 0},
        {A::volumeDown, 125, 0},
        {A::toggleMute, 46, 0},
        {A::cyclePlaybackRate, 15, 0},
        {A::addBookmark, 11, 0},
        {A::nextBookmark, 11, shift},
        {A::previousBookmark, 11, option},
        {A::playNext, 45, 0},
        {A::playPrevious, 35, 0},
        {A::takeScreenshot, 1, 0},
        {A::frameStepForward, 47, 0},
        {A::frameStepBackward, 43, 0},
        {A::setLoopA, 33, 0},
        {A::setLoopB, 30, 0},
        {A::clearLoop, 42, 0},
        {A::toggleFullScreen, 36, 0},
        {A::rotateVideo, 40, command},
        {A::audioDelayIncrease, 30, control},
        {A::audioDelayDecrease, 33, control},
        {A::audioDelayReset, 42, control},
        {A::togglePiP, 35, command},
        {A::cycleSubtitleTrack, 38, 0},
        {A::cycleAudioTrack, 38, shift},
    };
}

QByteArray toJson(const QList<KeyBinding>& bindings)
{
    QJsonArray array;
    for (const KeyBinding& binding : bindings)
        array.append(
            QJsonObject{{QStringLiteral("action"), PlayerActions::rawValue(binding.action)},
                        {QStringLiteral("keyCode"), int(binding.keyCode)},
                        {QStringLiteral("modifiers"), qint64(binding.modifiers)}});
    return QJsonDocument(array).toJson(QJsonDocument::Compact);
}

std::optional<QList<KeyBinding>> fromJson(const QByteArray& json)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(json, &error);
    if (error.error != QJsonParseError::NoError || !document.isArray())
        return std::nullopt;
    QList<KeyBinding> bindings;
    for (const QJsonValue& value : document.array()) {
        const QJsonObject object = value.toObject();
        const QJsonValue keyCode = object.value(QLatin1String("keyCode"));
        const QJsonValue modifiers = object.value(QLatin1String("modifiers"));
        const auto action =
            PlayerActions::fromRawValue(object.value(QLatin1String("action")).toString());
        // Key numbers and modifier masks are whole numbers; anything else is not a table the
        // player wrote (12.5 is no key, and must not quietly become key 0).
        auto isWhole = [](const QJsonValue& v, double max) {
            const double number = v.toDouble(-1);
            return v.isDouble() && number >= 0 && number <= max && number == std::trunc(number);
        };
        if (!value.isObject() || !action || !isWhole(keyCode, 0xFFFF) ||
            !isWhole(modifiers, 9007199254740992.0))
            return std::nullopt;
        bindings << KeyBinding{*action, quint16(keyCode.toInt()), quint64(modifiers.toDouble())};
    }
    return bindings;
}

} // namespace KeyBindings
