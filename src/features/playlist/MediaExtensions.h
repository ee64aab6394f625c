#pragma once

#include <QSet>
#include <QString>

/// The file kinds the player recognises by extension (compared in lower case).
namespace MediaExtensions {

/// Files a folder scan puts into the playlist.
inline const QSet<QString> video = {
    QStringLiteral("mp4"), QStringLiteral("mkv"),  QStringLiteral("avi"),  QStringLiteral("mov"),
    QStringLiteral("m4v"), QStringLiteral("webm"), QStringLiteral("ts"),   QStringLiteral("flv"),
    QStringLiteral("wmv"), QStringLiteral("mpg"),  QStringLiteral("mpeg"), QStringLiteral("3gp"),
    QStringLiteral("ogv")};

/// The one list of subtitle file kinds, for opening and dropping subtitle files.
inline const QSet<QString> subtitle = {
    QStringLiteral("srt"), QStringLiteral("ass"), QStringLiteral("ssa"), QStringLiteral("sub"),
    QStringLiteral("vtt"), QStringLiteral("idx"), QStringLiteral("sup"), QStringLiteral("lrc")};

} // namespace MediaExtensions
