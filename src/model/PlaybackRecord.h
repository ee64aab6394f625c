#pragma once

#include <QDateTime>
#include <QString>
#include <QUrl>
#include <QUuid>

/// Where playback of one media file last stopped.
struct PlaybackRecord
{
    QUuid id;
    QUrl videoURL;
    QString title;
    double lastPosition = 0;
    double duration = 0;
    QDateTime lastPlayedAt;

    friend bool operator==(const PlaybackRecord&, const PlaybackRecord&) = default;
};
