#pragma once

#include <optional>
#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QUrl>
#include <QUuid>

/// A named position inside a media file, with an optional encoded still image.
struct Bookmark
{
    QUuid id;
    QUrl videoURL;
    double time = 0;
    QString name;
    QDateTime createdAt;
    std::optional<QByteArray> thumbnailData;

    friend bool operator==(const Bookmark&, const Bookmark&) = default;
};
