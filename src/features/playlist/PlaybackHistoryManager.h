#pragma once

#include "model/PlaybackRecord.h"

#include <optional>
#include <QCoroTask>
#include <QList>
#include <QObject>

class Library;

/// Remembers where playback of each file stopped, newest files first, mirrored in the
/// `playback_history` table. Keeps at most `maxHistoryCount` records. Writes go to the library
/// and never fail visibly: the in-memory history is what the session uses. GUI thread only.
class PlaybackHistoryManager : public QObject
{
    Q_OBJECT

public:
    explicit PlaybackHistoryManager(Library& library, int maxHistoryCount = 50,
                                    QObject* parent = nullptr);

    /// Reads the stored history (once, at start).
    QCoro::Task<void> loadHistory();

    const QList<PlaybackRecord>& history() const { return m_history; }
    int maxHistoryCount() const { return m_maxHistoryCount; }

    /// Records a position unless it lies in the first or last five seconds of the file.
    void recordPosition(const QUrl& videoURL, const QString& title, double position,
                        double duration);
    std::optional<double> resumePosition(const QUrl& videoURL) const;
    /// The most recently played records, newest first.
    QList<PlaybackRecord> recentRecords(int limit) const;

Q_SIGNALS:
    void historyChanged();

private:
    Library& m_library;
    const int m_maxHistoryCount;
    QList<PlaybackRecord> m_history;
};
