#pragma once

#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace PlayerStateKind {
Q_NAMESPACE
QML_ELEMENT

enum Kind { Error, Idle, Loading, Playing, Paused, Stopped, ViewingImage };
Q_ENUM_NS(Kind)

} // namespace PlayerStateKind

/// Where playback stands. Only Error carries a value: the message shown to the user.
class PlayerState
{
    Q_GADGET
    QML_VALUE_TYPE(playerState)
    Q_PROPERTY(PlayerStateKind::Kind kind READ kind CONSTANT)
    Q_PROPERTY(QString message READ message CONSTANT)
    Q_PROPERTY(bool isActive READ isActive CONSTANT)

public:
    using Kind = PlayerStateKind::Kind;

    PlayerState() = default;
    PlayerState(Kind kind)
        : m_kind(kind)
    {} // NOLINT: a plain case converts implicitly

    static PlayerState error(const QString& message) { return PlayerState(Kind::Error, message); }

    Kind kind() const { return m_kind; }
    QString message() const { return m_message; }

    /// Position operations act only while media is playing or paused.
    bool isActive() const { return m_kind == Kind::Playing || m_kind == Kind::Paused; }

    friend bool operator==(const PlayerState&, const PlayerState&) = default;

private:
    PlayerState(Kind kind, const QString& message)
        : m_kind(kind)
        , m_message(message)
    {}

    Kind m_kind = Kind::Idle;
    QString m_message;
};
