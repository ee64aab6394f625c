#include "SeekBarMarks.h"

#include "features/bookmark/BookmarkManager.h"

void SeekBarMarks::setEngine(PlaybackEngine* engine)
{
    if (engine == m_engine)
        return;
    if (m_engine) {
        disconnect(m_engine, nullptr, this, nullptr);
        disconnect(m_engine->bookmarks(), nullptr, this, nullptr);
        disconnect(m_engine->decoder(), nullptr, this, nullptr);
    }
    m_engine = engine;
    if (engine) {
        connect(engine, &PlaybackEngine::currentURLChanged, this,
                &SeekBarMarks::refreshBookmarkTimes);
        connect(engine->bookmarks(), &BookmarkManager::bookmarksChanged, this,
                &SeekBarMarks::refreshBookmarkTimes);
        connect(engine->decoder(), &MPVDecoder::chaptersChanged, this,
                &SeekBarMarks::chaptersChanged);
    }
    refreshBookmarkTimes();
    Q_EMIT chaptersChanged();
    Q_EMIT engineChanged();
}

QVariantList SeekBarMarks::chapters() const
{
    QVariantList list;
    if (!m_engine)
        return list;
    for (const Chapter& chapter : m_engine->decoder()->chapters())
        list << QVariantMap{{QStringLiteral("time"), chapter.time},
                            {QStringLiteral("title"), chapter.title}};
    return list;
}

void SeekBarMarks::refreshBookmarkTimes()
{
    QList<double> times;
    if (m_engine && !m_engine->currentURL().isEmpty()) {
        for (const Bookmark& bookmark : m_engine->bookmarks()->bookmarks(m_engine->currentURL()))
            times << bookmark.time;
    }
    if (times == m_bookmarkTimes)
        return;
    m_bookmarkTimes = times;
    Q_EMIT bookmarkTimesChanged();
}
