#include "MediaTrack.h"

#include <QStringList>

std::optional<TrackType> trackTypeFromString(const QString& text)
{
    if (text == QLatin1String("audio"))
        return TrackType::Audio;
    if (text == QLatin1String("sub"))
        return TrackType::Sub;
    if (text == QLatin1String("video"))
        return TrackType::Video;
    return std::nullopt;
}

QString trackTypeName(TrackType type)
{
    switch (type) {
    case TrackType::Audio:
        return QStringLiteral("audio");
    case TrackType::Sub:
        return QStringLiteral("sub");
    case TrackType::Video:
        return QStringLiteral("video");
    }
    return {};
}

QString MediaTrack::displayLabel() const
{
    QStringList parts;
    if (title)
        parts << *title;
    if (lang)
        parts << lang->toUpper();
    if (parts.isEmpty())
        parts << (codec ? *codec : QStringLiteral("Track %1").arg(id));
    return parts.join(QStringLiteral(" \u2014 "));
}
