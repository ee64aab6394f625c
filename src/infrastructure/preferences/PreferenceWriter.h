#pragma once

#include <QHash>
#include <QObject>
#include <QString>
#include <QThreadPool>
#include <QTimer>
#include <QVariant>

/// Writes preferences a moment after the last change, off the GUI thread, so that a window
/// drag, a held volume key or a slider costs one write of the settings file instead of
/// hundreds. Every Preferences reader sees a value from the moment it is set (see
/// PendingPreferences). What is still pending when the writer goes is written before it does.
///
/// GUI thread only.
class PreferenceWriter : public QObject
{
    Q_OBJECT

public:
    explicit PreferenceWriter(QObject* parent = nullptr);
    ~PreferenceWriter() override;

    /// Remembers the value and writes it soon (the latest value of a key wins).
    void setValue(const QString& key, const QVariant& value);
    /// Writes what is pending now, and waits for it.
    void flush();

private:
    void writeInBackground();

    QHash<QString, QVariant> m_pending;
    QTimer m_delay;
    // One thread, so that writes reach the file in the order they were made.
    QThreadPool m_writer;
};
