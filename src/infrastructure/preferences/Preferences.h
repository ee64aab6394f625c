#pragma once

#include <optional>
#include <QByteArray>
#include <QSettings>
#include <QString>

/// Key names of the user's preferences. Component-owned keys carry the "VelmarPlayer." prefix;
/// the keys the settings window edits have none.
namespace PreferenceKeys {
inline const QString resumePlayback = QStringLiteral("resumePlayback");
inline const QString autoPlayOnOpen = QStringLiteral("autoPlayOnOpen");
inline const QString preventSleep = QStringLiteral("preventSleep");
inline const QString defaultVolume = QStringLiteral("defaultVolume");
inline const QString seekSmallStep = QStringLiteral("seekSmallStep");
inline const QString seekLargeStep = QStringLiteral("seekLargeStep");
inline const QString hardwareDecoding = QStringLiteral("hardwareDecoding");
inline const QString controlBarOpacity = QStringLiteral("controlBarOpacity");
inline const QString controlsAutoHideDelay = QStringLiteral("controlsAutoHideDelay");
inline const QString osdDuration = QStringLiteral("osdDuration");
inline const QString volume = QStringLiteral("VelmarPlayer.volume");
inline const QString isMuted = QStringLiteral("VelmarPlayer.isMuted");
inline const QString windowFrame = QStringLiteral("VelmarPlayer.WindowFrame");
inline const QString keyBindings = QStringLiteral("VelmarPlayer.KeyBindings");
inline const QString pipFrame = QStringLiteral("VelmarPlayer.PiPFrame");
// Records older versions kept here, moved into the library once.
inline const QString legacyHistory = QStringLiteral("VelmarPlayer.PlaybackHistory");
inline const QString legacyBookmarks = QStringLiteral("VelmarPlayer.Bookmarks");
inline const QString legacyPerFileSettings = QStringLiteral("VelmarPlayer.PerFileSettings");
} // namespace PreferenceKeys

/// The per-user key/value store (an INI file under $XDG_CONFIG_HOME/VelmarPlayer). No defaults
/// are registered: every reader supplies its own fallback, and the typed readers below carry the
/// fallbacks the player uses. This is the only code that touches QSettings. Each instance is
/// used by one thread; instances on different threads see each other's writes, and readers
/// see the values a PreferenceWriter has yet to write.
class Preferences
{
public:
    Preferences();

    bool contains(const QString& key) const;
    /// Absent reads as false / 0.0 / empty, like any untyped store.
    bool boolValue(const QString& key) const;
    double doubleValue(const QString& key) const;
    QByteArray dataValue(const QString& key) const;
    /// A structured value (such as a dictionary), exactly as stored.
    QVariant value(const QString& key) const;

    void setBool(const QString& key, bool value);
    void setDouble(const QString& key, double value);
    void setFloat(const QString& key, float value);
    void setData(const QString& key, const QByteArray& value);
    void setValue(const QString& key, const QVariant& value);
    void remove(const QString& key);

    // Settings-window preferences with their fallbacks.
    bool resumePlayback() const { return boolOr(PreferenceKeys::resumePlayback, true); }
    bool autoPlayOnOpen() const { return boolOr(PreferenceKeys::autoPlayOnOpen, true); }
    bool preventSleep() const { return boolOr(PreferenceKeys::preventSleep, true); }
    double defaultVolume() const { return doubleOr(PreferenceKeys::defaultVolume, 1.0); }
    bool hardwareDecoding() const { return boolOr(PreferenceKeys::hardwareDecoding, true); }
    double controlBarOpacity() const { return doubleOr(PreferenceKeys::controlBarOpacity, 0.8); }
    double controlsAutoHideDelay() const
    {
        return doubleOr(PreferenceKeys::controlsAutoHideDelay, 3.0);
    }
    double osdDuration() const { return doubleOr(PreferenceKeys::osdDuration, 1.5); }

    /// Seek steps in seconds; a stored value that is not positive counts as absent.
    double seekSmallStep() const { return positiveOr(PreferenceKeys::seekSmallStep, 5.0); }
    double seekLargeStep() const { return positiveOr(PreferenceKeys::seekLargeStep, 30.0); }

    /// The engine's saved volume, only when one was ever stored; kept within 0…1 (a value
    /// that is not a number counts as not stored).
    std::optional<float> storedVolume() const;
    bool storedIsMuted() const { return boolValue(PreferenceKeys::isMuted); }

private:
    bool boolOr(const QString& key, bool fallback) const;
    double doubleOr(const QString& key, double fallback) const;
    double positiveOr(const QString& key, double fallback) const;

    mutable QSettings m_settings;
};
