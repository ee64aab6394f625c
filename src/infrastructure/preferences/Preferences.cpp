#include "Preferences.h"

#include "PendingPreferences.h"

#include <cmath>

Preferences::Preferences()
    : m_settings(QSettings::IniFormat, QSettings::UserScope, QStringLiteral("VelmarPlayer"),
                 QStringLiteral("VelmarPlayer"))
{}

bool Preferences::contains(const QString& key) const
{
    return PendingPreferences::value(key) || m_settings.contains(key);
}

bool Preferences::boolValue(const QString& key) const
{
    return value(key).toBool();
}

double Preferences::doubleValue(const QString& key) const
{
    bool ok = false;
    const double number = value(key).toDouble(&ok);
    return ok && std::isfinite(number) ? number : 0.0;
}

QByteArray Preferences::dataValue(const QString& key) const
{
    return value(key).toByteArray();
}

QVariant Preferences::value(const QString& key) const
{
    // A value still on its way to the file is the one that counts.
    return PendingPreferences::value(key).value_or(m_settings.value(key));
}

void Preferences::setValue(const QString& key, const QVariant& value)
{
    m_settings.setValue(key, value);
}

void Preferences::setBool(const QString& key, bool value)
{
    m_settings.setValue(key, value);
}

void Preferences::setDouble(const QString& key, double value)
{
    m_settings.setValue(key, value);
}

void Preferences::setFloat(const QString& key, float value)
{
    m_settings.setValue(key, value);
}

void Preferences::setData(const QString& key, const QByteArray& value)
{
    m_settings.setValue(key, value);
}

void Preferences::remove(const QString& key)
{
    m_settings.remove(key);
}

std::optional<float> Preferences::storedVolume() const
{
    bool isNumber = false;
    const double volume = value(PreferenceKeys::volume).toDouble(&isNumber);
    if (!contains(PreferenceKeys::volume) || !isNumber || std::isnan(volume))
        return std::nullopt;
    return float(std::clamp(volume, 0.0, 1.0));
}

bool Preferences::boolOr(const QString& key, bool fallback) const
{
    return contains(key) ? boolValue(key) : fallback;
}

double Preferences::doubleOr(const QString& key, double fallback) const
{
    return contains(key) ? doubleValue(key) : fallback;
}

double Preferences::positiveOr(const QString& key, double fallback) const
{
    const double value = doubleValue(key);
    return value > 0.0 ? value : fallback;
}
