#include "OSDMessage.h"

#include "TimeFormat.h"

OSDMessage OSDMessage::volume(float level)
{
    OSDMessage message(Kind::Volume);
    message.m_number = level;
    return message;
}

OSDMessage OSDMessage::seek(double current, double duration)
{
    OSDMessage message(Kind::Seek);
    message.m_current = current;
    message.m_duration = duration;
    return message;
}

OSDMessage OSDMessage::playbackRate(float rate)
{
    OSDMessage message(Kind::PlaybackRate);
    message.m_number = rate;
    return message;
}

OSDMessage OSDMessage::muted(bool isMuted)
{
    OSDMessage message(Kind::Muted);
    message.m_number = isMuted ? 1.0f : 0.0f;
    return message;
}

OSDMessage OSDMessage::text(const QString& text)
{
    OSDMessage message(Kind::Text);
    message.m_text = text;
    return message;
}

OSDMessage OSDMessage::paused()
{
    return OSDMessage(Kind::Paused);
}

OSDMessage OSDMessage::playing()
{
    return OSDMessage(Kind::Playing);
}

QString OSDMessage::icon() const
{
    switch (m_kind) {
    case Kind::Volume:
        return m_number == 0 ? QStringLiteral("speaker.slash.fill")
                             : QStringLiteral("speaker.wave.2.fill");
    case Kind::Seek:
        return QStringLiteral("arrow.right");
    case Kind::PlaybackRate:
        return QStringLiteral("gauge.with.needle");
    case Kind::Muted:
        return m_number != 0 ? QStringLiteral("speaker.slash.fill")
                             : QStringLiteral("speaker.wave.2.fill");
    case Kind::Text:
        return QStringLiteral("info.circle");
    case Kind::Paused:
        return QStringLiteral("pause.fill");
    case Kind::Playing:
        return QStringLiteral("play.fill");
    }
    return {};
}

QString OSDMessage::text() const
{
    switch (m_kind) {
    case Kind::Volume:
        return QStringLiteral("Volume: %1%").arg(percent());
    case Kind::Seek:
        return velmar::formatTime(m_current) + QStringLiteral(" / ") +
               velmar::formatTime(m_duration);
    case Kind::PlaybackRate:
        return velmar::formatRate(m_number) + QLatin1Char('x');
    case Kind::Muted:
        return m_number != 0 ? QStringLiteral("Muted") : QStringLiteral("Unmuted");
    case Kind::Text:
        return m_text;
    case Kind::Paused:
        return QStringLiteral("Paused");
    case Kind::Playing:
        return QStringLiteral("Playing");
    }
    return {};
}
