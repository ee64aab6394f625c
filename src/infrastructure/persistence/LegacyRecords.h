#pragma once

#include "model/Bookmark.h"
#include "model/PerFileSettings.h"
#include "model/PlaybackRecord.h"

#include <QByteArray>
#include <QList>
#include <QMap>
#include <stdexcept>

/// Readers for the JSON records that older versions kept in the preferences store. Every field
/// is required (a bookmark's thumbnail excepted); anything else throws LegacyDecodingError.
namespace LegacyRecords {

class LegacyDecodingError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

QList<PlaybackRecord> decodeHistory(const QByteArray& json);
QList<Bookmark> decodeBookmarks(const QByteArray& json);
QMap<QString, PerFileSettings> decodePerFileSettings(const QByteArray& json);

} // namespace LegacyRecords
