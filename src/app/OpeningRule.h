#pragma once

#include <QCoroTask>
#include <QList>
#include <QPointer>
#include <QStringList>
#include <QUrl>

class PlaybackEngine;
class UserCommands;

/// What opening a set of files and folders does, wherever they come from (the command line,
/// the file dialogs, a drop, another launch):
/// - subtitle files are never played: on their own they join the video that is open, when one
///   is; with other items they join the video that those items start;
/// - of the rest, one folder becomes the playlist of the videos in it; one file plays on its
///   own without touching the playlist; several items become a playlist of the files among
///   them, in the order given (folders in such a set are skipped); the first entry then plays.
/// Nothing playable among them is said on screen. A later request wins over one still
/// scanning its folder.
namespace OpeningRule {

QCoro::Task<void> open(QPointer<PlaybackEngine> engine, QPointer<UserCommands> commands,
                       QList<QUrl> urls);

/// File dialog filters: everything the player opens first, then videos, images, subtitles
/// and all files.
QStringList nameFilters();

} // namespace OpeningRule
