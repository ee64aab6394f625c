#pragma once

#include <optional>
#include <QString>
#include <QVariant>

/// Values handed to a PreferenceWriter that have not reached the settings file yet. Every
/// Preferences reader looks here first, so a value set in one part of the player reads back at
/// once in every other, while the file is written a moment later off the GUI thread.
///
/// Thread-safe: writers hold values on the GUI thread and settle them on their own thread.
namespace PendingPreferences {

/// `value` is what `key` holds from now on, although the file does not have it yet.
void hold(const QString& key, const QVariant& value);
/// `written` is in the file now; it stops standing in for the file, unless a newer value for
/// `key` waits to be written.
void settle(const QString& key, const QVariant& written);
/// The value waiting to be written for `key`, if any.
std::optional<QVariant> value(const QString& key);

} // namespace PendingPreferences
