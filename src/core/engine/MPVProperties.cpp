#include "MPVProperties.h"

#include <cmath>

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

void writeDouble(mpv_handle* mpv, const char* name, double value)
{
    if (!mpv)
        return;
    // Some libmpv versions keep picture controls such as "contrast" as integers and refuse a
    // floating-point value for them ("error accessing property"); those get the nearest whole
    // number instead.
    if (mpv_set_property(mpv, name, MPV_FORMAT_DOUBLE, &value) < 0) {
        int64_t whole = std::llround(value);
        mpv_set_property(mpv, name, MPV_FORMAT_INT64, &whole);
    }
}

void writeFlag(mpv_handle* mpv, const char* name, bool value)
{
    int flag = value ? 1 : 0;
    if (mpv)
        mpv_set_property(mpv, name, MPV_FORMAT_FLAG, &flag);
}

void writeInt64(mpv_handle* mpv, const char* name, qint64 value)
{
    int64_t number = value;
    if (mpv)
        mpv_set_property(mpv, name, MPV_FORMAT_INT64, &number);
}

void writeString(mpv_handle* mpv, const char* name, const QString& value)
{
    if (!mpv)
        return;
    const QByteArray utf8 = value.toUtf8();
    const char* data = utf8.constData();
    mpv_set_property(mpv, name, MPV_FORMAT_STRING, &data);
}

} // namespace MPVProperty
