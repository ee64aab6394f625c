#pragma once

#include <QCoroTask>
#include <QList>
#include <QPointer>
#include <QStringList>
#include <QUrl>

class PlaybackEngine;

/// What opening a set of files and folders does, wherever they come from (the command line,
/// the file dialogs, a drop, another launch).
namespace OpeningRule {

/// One folder becomes the playlist of the media in it; one file plays on its own without
/// touching the playlist; several items become a playlist of the files among them (folders in
/// the set are skipped). The first entry then plays.
QCoro::Task<void> open(QPointer<PlaybackEngine> engine, QList<QUrl> urls);

/// File dialog filters: everything playable first, then videos, images and all files.
QStringList nameFilters();

} // namespace OpeningRule
