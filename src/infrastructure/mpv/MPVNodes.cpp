#include "MPVNodes.h"

#include <cstring>

namespace MPVNodes {
namespace {

const mpv_node* mapValue(const mpv_node& map, const char* key)
{
    if (map.format != MPV_FORMAT_NODE_MAP || !map.u.list)
        return nullptr;
    const mpv_node_list& list = *map.u.list;
    for (int i = 0; i < list.num; ++i) {
        if (std::strcmp(list.keys[i], key) == 0)
            return &list.values[i];
    }
    return nullptr;
}

std::optional<QString> mapString(const mpv_node& map, const char* key)
{
    const mpv_node* value = mapValue(map, key);
    if (!value || value->format != MPV_FORMAT_STRING || !value->u.string)
        return std::nullopt;
    return QString::fromUtf8(value->u.string);
}

bool mapFlag(const mpv_node& map, const char* key)
{
    const mpv_node* value = mapValue(map, key);
    return value && value->format == MPV_FORMAT_FLAG && value->u.flag != 0;
}

std::optional<double> mapNumber(const mpv_node& map, const char* key)
{
    const mpv_node* value = mapValue(map, key);
    if (!value)
        return std::nullopt;
    if (value->format == MPV_FORMAT_DOUBLE)
        return value->u.double_;
    if (value->format == MPV_FORMAT_INT64)
        return double(value->u.int64);
    return std::nullopt;
}

} // namespace

std::optional<qint64> mapInteger(const mpv_node& map, const char* key)
{
    const mpv_node* value = mapValue(map, key);
    if (!value || value->format != MPV_FORMAT_INT64)
        return std::nullopt;
    return value->u.int64;
}

QList<MediaTrack> tracks(const mpv_node& trackList)
{
    QList<MediaTrack> result;
    if (trackList.format != MPV_FORMAT_NODE_ARRAY || !trackList.u.list)
        return result;
    const mpv_node_list& entries = *trackList.u.list;
    for (int i = 0; i < entries.num; ++i) {
        const mpv_node& entry = entries.values[i];
        const std::optional<QString> typeName = mapString(entry, "type");
        const std::optional<TrackType> type =
            typeName ? trackTypeFromString(*typeName) : std::nullopt;
        if (!type)
            continue;
        MediaTrack track;
        track.type = *type;
        track.id = mapInteger(entry, "id").value_or(0);
        track.isDefault = mapFlag(entry, "default");
        track.isExternal = mapFlag(entry, "external");
        track.title = mapString(entry, "title");
        track.lang = mapString(entry, "lang");
        track.codec = mapString(entry, "codec");
        result << track;
    }
    return result;
}

QList<Chapter> chapters(const mpv_node& chapterList)
{
    QList<Chapter> result;
    if (chapterList.format != MPV_FORMAT_NODE_ARRAY || !chapterList.u.list)
        return result;
    const mpv_node_list& entries = *chapterList.u.list;
    for (int i = 0; i < entries.num; ++i) {
        const mpv_node& entry = entries.values[i];
        const std::optional<double> time = mapNumber(entry, "time");
        if (!time)
            continue;
        result << Chapter{*time, mapString(entry, "title").value_or(QString())};
    }
    return result;
}

} // namespace MPVNodes
