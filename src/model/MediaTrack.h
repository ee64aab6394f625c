#pragma once

#include <optional>
#include <QMetaType>
#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>
#include <QVariant>

enum class TrackType { Audio, Sub, Video };

/// "audio", "sub", "video"; anything else is not a track type the player keeps.
std::optional<TrackType> trackTypeFromString(const QString& text);
QString trackTypeName(TrackType type);

/// One audio, subtitle or video stream of the open file.
struct MediaTrack
{
    Q_GADGET
    QML_VALUE_TYPE(mediaTrack)
    Q_PROPERTY(qint64 id MEMBER id CONSTANT)
    Q_PROPERTY(QString type READ typeName CONSTANT)
    Q_PROPERTY(QVariant title READ titleVariant CONSTANT)
    Q_PROPERTY(QVariant lang READ langVariant CONSTANT)
    Q_PROPERTY(QVariant codec READ codecVariant CONSTANT)
    Q_PROPERTY(bool isDefault MEMBER isDefault CONSTANT)
    Q_PROPERTY(bool isExternal MEMBER isExternal CONSTANT)
    Q_PROPERTY(QString displayLabel READ displayLabel CONSTANT)

public:
    qint64 id = 0;
    TrackType type = TrackType::Video;
    std::optional<QString> title;
    std::optional<QString> lang;
    std::optional<QString> codec;
    bool isDefault = false;
    bool isExternal = false;

    /// "Commentary — ENG", "JPN", "aac" or "Track 3": title, then language, else codec or id.
    QString displayLabel() const;

    QString typeName() const { return trackTypeName(type); }
    QVariant titleVariant() const { return title ? QVariant(*title) : QVariant(); }
    QVariant langVariant() const { return lang ? QVariant(*lang) : QVariant(); }
    QVariant codecVariant() const { return codec ? QVariant(*codec) : QVariant(); }

    friend bool operator==(const MediaTrack&, const MediaTrack&) = default;
};
