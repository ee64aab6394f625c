#pragma once

#include <QHash>
#include <QObject>
#include <QString>
#include <QThreadPool>
#include <QTimer>
#include <QVariant>

/// Writes preferences a moment after the last change, off the GUI thread, so that a window
/// drag or a held volume key costs one write of the settings file instead of hundreds. What
/// is still pending when the writer goes is written before it does.
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
    /// The value waiting to be written, if any: readers that may run before the write see it.
    std::optional<QVariant> pendingValue(const QString& key) const;
    /// Writes what is pending now, and waits for it.
    void flush();

private:
    void writeInBackground();

    QHash<QString, QVariant> m_pending;
    QTimer m_delay;
    // One thread, so that writes reach the file in the order they were made.
    QThreadPool m_writer;
};
