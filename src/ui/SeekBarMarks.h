#pragma once

#include "engine/PlaybackEngine.h"

#include <QList>
#include <QPointer>
#include <QtQml/qqmlregistration.h>
#include <QVariantList>

/// What the seek bar marks on the open file's timeline besides the loop: its bookmarks and its
/// chapters. Follows the engine's file, the bookmarks and the decoder's chapter list.
/// GUI thread only.
class SeekBarMarks : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(PlaybackEngine* engine READ engine WRITE setEngine NOTIFY engineChanged)
    /// The open file's bookmarks, as times in seconds, earliest first.
    Q_PROPERTY(QList<double> bookmarkTimes READ bookmarkTimes NOTIFY bookmarkTimesChanged)
    /// The open file's chapters by time, each a map with `time` (seconds) and `title`.
    Q_PROPERTY(QVariantList chapters READ chapters NOTIFY chaptersChanged)

public:
    using QObject::QObject;

    PlaybackEngine* engine() const { return m_engine; }
    void setEngine(PlaybackEngine* engine);
    QList<double> bookmarkTimes() const { return m_bookmarkTimes; }
    QVariantList chapters() const;

Q_SIGNALS:
    void engineChanged();
    void bookmarkTimesChanged();
    void chaptersChanged();

private:
    void refreshBookmarkTimes();

    QPointer<PlaybackEngine> m_engine;
    QList<double> m_bookmarkTimes;
};
