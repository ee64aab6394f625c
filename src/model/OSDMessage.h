#pragma once

#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace OSDMessageKind {
Q_NAMESPACE
QML_ELEMENT

enum Kind { Volume, Seek, PlaybackRate, Muted, Text, Paused, Playing };
Q_ENUM_NS(Kind)

} // namespace OSDMessageKind

/// One short feedback message for the on-screen display. Equal when kind and payload match.
class OSDMessage
{
    Q_GADGET
    QML_VALUE_TYPE(osdMessage)
    Q_PROPERTY(OSDMessageKind::Kind kind READ kind CONSTANT)
    Q_PROPERTY(QString icon READ icon CONSTANT)
    Q_PROPERTY(QString text READ text CONSTANT)
    Q_PROPERTY(double level READ level CONSTANT)
    Q_PROPERTY(qint64 percent READ percent CONSTANT)
    Q_PROPERTY(double current READ current CONSTANT)
    Q_PROPERTY(double duration READ duration CONSTANT)

public:
    using Kind = OSDMessageKind::Kind;

    OSDMessage() = default;

    static OSDMessage volume(float level);
    static OSDMessage seek(double current, double duration);
    static OSDMessage playbackRate(float rate);
    static OSDMessage muted(bool isMuted);
    static OSDMessage text(const QString& text);
    static OSDMessage paused();
    static OSDMessage playing();

    Kind kind() const { return m_kind; }
    /// Symbol name of the icon ("speaker.wave.2.fill", "play.fill", ...).
    QString icon() const;
    QString text() const;

    /// Volume level (0..1) or playback rate, depending on the kind.
    double level() const { return m_number; }
    /// The volume level as a whole percentage, truncated: 0.999 is 99.
    qint64 percent() const { return static_cast<qint64>(m_number * 100.0f); }
    double current() const { return m_current; }
    double duration() const { return m_duration; }

    friend bool operator==(const OSDMessage&, const OSDMessage&) = default;

private:
    explicit OSDMessage(Kind kind)
        : m_kind(kind)
    {}

    Kind m_kind = Kind::Text;
    float m_number = 0; // volume level, playback rate, or 1/0 for muted
    double m_current = 0;
    double m_duration = 0;
    QString m_text;
};
