#pragma once

#include "PlaybackRecord.h"

#include <optional>
#include <QList>
#include <QObject>

class SQLiteDatabase;

/// Remembers where playback of each file stopped, newest files first, mirrored in the
/// `playback_history` table. Keeps at most `maxHistoryCount` records. Never throws: load
/// failures are printed, write failures are ignored and the in-memory change stays.
/// GUI thread only.
class PlaybackHistoryManager : public QObject
{
    Q_OBJECT

public:
    /// Loads the stored history at once.
    explicit PlaybackHistoryManager(SQLiteDatabase& db, int maxHistoryCount = 50,
                                    QObject* parent = nullptr);

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
    void loadHistory();

    SQLiteDatabase& m_db;
    const int m_maxHistoryCount;
    QList<PlaybackRecord> m_history;
};
