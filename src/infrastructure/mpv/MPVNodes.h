#pragma once

#include "model/Chapter.h"
#include "model/MediaTrack.h"

#include <mpv/client.h>
#include <optional>
#include <QList>

/// Reads libmpv's structured values (mpv_node) into the player's types. Pure functions; the
/// event thread calls them on nodes that libmpv owns until its next event.
namespace MPVNodes {

/// The audio, subtitle and video tracks of a "track-list" node, in libmpv's order. Entries
/// without a known type are skipped; fields libmpv leaves out stay absent (or 0 / false).
QList<MediaTrack> tracks(const mpv_node& trackList);

/// The chapters of a "chapter-list" node, in libmpv's order (by time). Entries without a
/// time are skipped; a missing title stays empty.
QList<Chapter> chapters(const mpv_node& chapterList);

/// An integer entry of a map node ("playlist_entry_id" of a "loadfile" reply, say).
std::optional<qint64> mapInteger(const mpv_node& map, const char* key);

} // namespace MPVNodes
