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

/// Still images the player shows (the file dialog offers them next to the videos).
inline const QSet<QString> image = {
    QStringLiteral("png"),  QStringLiteral("jpg"), QStringLiteral("jpeg"),
    QStringLiteral("gif"),  QStringLiteral("tif"), QStringLiteral("tiff"),
    QStringLiteral("heic"), QStringLiteral("bmp"), QStringLiteral("webp")};

/// The one list of subtitle file kinds, for opening and dropping subtitle files.
inline const QSet<QString> subtitle = {
    QStringLiteral("srt"), QStringLiteral("ass"), QStringLiteral("ssa"), QStringLiteral("sub"),
    QStringLiteral("vtt"), QStringLiteral("idx"), QStringLiteral("sup"), QStringLiteral("lrc")};

} // namespace MediaExtensions
