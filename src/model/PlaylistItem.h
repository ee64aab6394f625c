#pragma once

#include <optional>
#include <QFileInfo>
#include <QString>
#include <QUrl>
#include <QUuid>

/// One entry of the playlist. Every added entry gets its own id, so one file added twice is two
/// items.
struct PlaylistItem
{
    QUuid id;
    QUrl url;
    QString title; // the file name without its extension
    std::optional<double> duration;
    std::optional<double> lastPlayedTime;

    static PlaylistItem forUrl(const QUrl& url)
    {
        return PlaylistItem{QUuid::createUuid(), url, QFileInfo(url.path()).completeBaseName(),
                            std::nullopt, std::nullopt};
    }

    friend bool operator==(const PlaylistItem&, const PlaylistItem&) = default;
};
