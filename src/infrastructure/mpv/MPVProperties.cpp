#include "MPVProperties.h"

namespace MPVProperty {

std::optional<QString> readString(mpv_handle* mpv, const char* name)
{
    if (!mpv)
        return std::nullopt;
    char* raw = mpv_get_property_string(mpv, name);
    if (!raw)
        return std::nullopt;
    QString text = QString::fromUtf8(raw);
    mpv_free(raw);
    return text;
}

std::optional<qint64> readInt64(mpv_handle* mpv, const char* name)
{
    int64_t value = 0;
    if (!mpv || mpv_get_property(mpv, name, MPV_FORMAT_INT64, &value) < 0)
        return std::nullopt;
    return qint64(value);
}

std::optional<double> readDouble(mpv_handle* mpv, const char* name)
{
    double value = 0;
    if (!mpv || mpv_get_property(mpv, name, MPV_FORMAT_DOUBLE, &value) < 0)
        return std::nullopt;
    return value;
}

std::optional<bool> readFlag(mpv_handle* mpv, const char* name)
{
    int value = 0;
    if (!mpv || mpv_get_property(mpv, name, MPV_FORMAT_FLAG, &value) < 0)
        return std::nullopt;
    return value != 0;
}

} // namespace MPVProperty
