#pragma once

#include <optional>
#include <QDateTime>
#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>
#include <QVariant>

/// Technical summary of the open file. Every field but the file name may be unknown;
/// QML sees an unknown field as undefined.
struct MediaInfo
{
    Q_GADGET
    QML_VALUE_TYPE(mediaInfo)
    Q_PROPERTY(QString filename MEMBER filename CONSTANT)
    Q_PROPERTY(QVariant fileSize READ fileSizeVariant CONSTANT)
    Q_PROPERTY(QVariant container READ containerVariant CONSTANT)
    Q_PROPERTY(QVariant videoCodec READ videoCodecVariant CONSTANT)
    Q_PROPERTY(QVariant width READ widthVariant CONSTANT)
    Q_PROPERTY(QVariant height READ heightVariant CONSTANT)
    Q_PROPERTY(QVariant fps READ fpsVariant CONSTANT)
    Q_PROPERTY(QVariant videoBitrate READ videoBitrateVariant CONSTANT)
    Q_PROPERTY(QVariant pixelFormat READ pixelFormatVariant CONSTANT)
    Q_PROPERTY(QVariant audioCodec READ audioCodecVariant CONSTANT)
    Q_PROPERTY(QVariant audioChannels READ audioChannelsVariant CONSTANT)
    Q_PROPERTY(QVariant audioSampleRate READ audioSampleRateVariant CONSTANT)
    Q_PROPERTY(QVariant audioBitrate READ audioBitrateVariant CONSTANT)
    Q_PROPERTY(QVariant createdAt READ createdAtVariant CONSTANT)
    Q_PROPERTY(QVariant modifiedAt READ modifiedAtVariant CONSTANT)

public:
    QString filename;
    std::optional<qint64> fileSize;
    std::optional<QString> container;
    std::optional<QString> videoCodec;
    std::optional<int> width;
    std::optional<int> height;
    std::optional<double> fps;
    std::optional<int> videoBitrate;
    std::optional<QString> pixelFormat;
    std::optional<QString> audioCodec;
    std::optional<int> audioChannels;
    std::optional<int> audioSampleRate;
    std::optional<int> audioBitrate;
    std::optional<QDateTime> createdAt;
    std::optional<QDateTime> modifiedAt;

    friend bool operator==(const MediaInfo&, const MediaInfo&) = default;

private:
    template <typename T> static QVariant toVariant(const std::optional<T>& value)
    {
        return value ? QVariant::fromValue(*value) : QVariant();
    }

    QVariant fileSizeVariant() const { return toVariant(fileSize); }
    QVariant containerVariant() const { return toVariant(container); }
    QVariant videoCodecVariant() const { return toVariant(videoCodec); }
    QVariant widthVariant() const { return toVariant(width); }
    QVariant heightVariant() const { return toVariant(height); }
    QVariant fpsVariant() const { return toVariant(fps); }
    QVariant videoBitrateVariant() const { return toVariant(videoBitrate); }
    QVariant pixelFormatVariant() const { return toVariant(pixelFormat); }
    QVariant audioCodecVariant() const { return toVariant(audioCodec); }
    QVariant audioChannelsVariant() const { return toVariant(audioChannels); }
    QVariant audioSampleRateVariant() const { return toVariant(audioSampleRate); }
    QVariant audioBitrateVariant() const { return toVariant(audioBitrate); }
    QVariant createdAtVariant() const { return toVariant(createdAt); }
    QVariant modifiedAtVariant() const { return toVariant(modifiedAt); }
};
