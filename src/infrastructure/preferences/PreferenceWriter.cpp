#include "PreferenceWriter.h"

#include "PendingPreferences.h"
#include "Preferences.h"

#include <QtConcurrent/QtConcurrentRun>

namespace {

constexpr int kWriteDelayMs = 500;

void write(const QHash<QString, QVariant>& values)
{
    {
        Preferences preferences;
        for (auto it = values.begin(); it != values.end(); ++it)
            preferences.setValue(it.key(), it.value());
    } // the settings file is written when `preferences` goes
    for (auto it = values.begin(); it != values.end(); ++it)
        PendingPreferences::settle(it.key(), it.value());
}

} // namespace

PreferenceWriter::PreferenceWriter(QObject* parent)
    : QObject(parent)
{
    m_writer.setMaxThreadCount(1);
    m_delay.setSingleShot(true);
    m_delay.setInterval(kWriteDelayMs);
    connect(&m_delay, &QTimer::timeout, this, &PreferenceWriter::writeInBackground);
}

PreferenceWriter::~PreferenceWriter()
{
    flush();
}

void PreferenceWriter::setValue(const QString& key, const QVariant& value)
{
    PendingPreferences::hold(key, value);
    m_pending.insert(key, value);
    m_delay.start();
}

void PreferenceWriter::flush()
{
    m_delay.stop();
    m_writer.waitForDone();
    if (!m_pending.isEmpty())
        write(std::exchange(m_pending, {}));
}

void PreferenceWriter::writeInBackground()
{
    // Settings objects are reentrant: one of its own on a pool thread writes the file there.
    (void)QtConcurrent::run(&m_writer, [values = std::exchange(m_pending, {})] { write(values); });
}
