#include "LegacyRecords.h"

#include "model/TimeFormat.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace LegacyRecords {
namespace {

[[noreturn]] void fail(const QString& what)
{
    throw LegacyDecodingError(what.toStdString());
}

QJsonDocument parse(const QByteArray& json, const QString& record)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(json, &error);
    if (error.error != QJsonParseError::NoError)
        fail(QStringLiteral("%1 is not valid JSON: %2").arg(record, error.errorString()));
    return document;
}

QJsonArray parseArray(const QByteArray& json, const QString& record)
{
    const QJsonDocument document = parse(json, record);
    if (!document.isArray())
        fail(QStringLiteral("%1 is not a JSON array").arg(record));
    return document.array();
}

/// Reads one required field of a legacy object, with the type the record demands.
class Fields
{
public:
    Fields(const QJsonValue& value, const QString& record)
        : m_record(record)
    {
        if (!value.isObject())
            fail(QStringLiteral("%1 entry is not an object").arg(record));
        m_object = value.toObject();
    }

    QString string(const char* key) const
    {
        const QJsonValue value = m_object.value(QLatin1String(key));
        if (!value.isString())
            missing(key);
        return value.toString();
    }

    double number(const char* key) const
    {
        const QJsonValue value = m_object.value(QLatin1String(key));
        if (!value.isDouble())
            missing(key);
        return value.toDouble();
    }

    QUuid uuid(const char* key) const
    {
        const QUuid id = QUuid::fromString(string(key));
        if (id.isNull())
            missing(key);
        return id;
    }

    QUrl url(const char* key) const
    {
        const QUrl url(string(key), QUrl::StrictMode);
        if (!url.isValid() || url.isEmpty())
            missing(key);
        return url;
    }

    QDateTime date(const char* key) const { return velmar::fromReferenceTimestamp(number(key)); }

    std::optional<QByteArray> optionalData(const char* key) const
    {
        const QJsonValue value = m_object.value(QLatin1String(key));
        if (value.isUndefined() || value.isNull())
            return std::nullopt;
        if (!value.isString())
            missing(key);
        const auto decoded = QByteArray::fromBase64Encoding(
            value.toString().toLatin1(), QByteArray::AbortOnBase64DecodingErrors);
        if (!decoded)
            missing(key);
        return *decoded;
    }

private:
    [[noreturn]] void missing(const char* key) const
    {
        fail(QStringLiteral("%1 entry has no valid \"%2\"").arg(m_record, QLatin1String(key)));
    }

    QJsonObject m_object;
    QString m_record;
};

} // namespace

QList<PlaybackRecord> decodeHistory(const QByteArray& json)
{
    const QString record = QStringLiteral("playback history");
    QList<PlaybackRecord> records;
    for (const QJsonValue& value : parseArray(json, record)) {
        const Fields fields(value, record);
        records << PlaybackRecord{fields.uuid("id"),         fields.url("videoURL"),
                                  fields.string("title"),    fields.number("lastPosition"),
                                  fields.number("duration"), fields.date("lastPlayedAt")};
    }
    return records;
}

QList<Bookmark> decodeBookmarks(const QByteArray& json)
{
    const QString record = QStringLiteral("bookmark");
    QList<Bookmark> bookmarks;
    for (const QJsonValue& value : parseArray(json, record)) {
        const Fields fields(value, record);
        bookmarks << Bookmark{fields.uuid("id"),        fields.url("videoURL"),
                              fields.number("time"),    fields.string("name"),
                              fields.date("createdAt"), fields.optionalData("thumbnailData")};
    }
    return bookmarks;
}

QMap<QString, PerFileSettings> decodePerFileSettings(const QByteArray& json)
{
    const QJsonDocument document = parse(json, QStringLiteral("per-file settings"));
    if (!document.isObject())
        fail(QStringLiteral("per-file settings is not a JSON object"));
    QMap<QString, PerFileSettings> settings;
    const QJsonObject object = document.object();
    for (auto it = object.begin(); it != object.end(); ++it) {
        const auto decoded = it.value().isObject()
                                 ? PerFileSettings::fromJsonObject(it.value().toObject())
                                 : std::nullopt;
        if (!decoded)
            fail(QStringLiteral("per-file settings for %1 are malformed").arg(it.key()));
        settings.insert(it.key(), *decoded);
    }
    return settings;
}

} // namespace LegacyRecords
