#include "OpeningRule.h"

#include "engine/PlaybackEngine.h"
#include "features/playlist/PlaylistManager.h"
#include "model/MediaExtensions.h"
#include "model/MediaFiles.h"
#include "UserCommands.h"

#include <algorithm>
#include <QCoroFuture>
#include <QFileInfo>
#include <QtConcurrent/QtConcurrentRun>

namespace OpeningRule {

namespace {

struct Sorted
{
    QList<QUrl> folders;
    QList<QUrl> files;
    QList<QUrl> subtitles;
    QList<QUrl> items; // folders and files, in the order given
};

/// Looks at the items on the thread pool: a folder on a network share may take a while to
/// answer.
Sorted sort(const QList<QUrl>& urls)
{
    Sorted sorted;
    for (const QUrl& url : urls) {
        if (MediaFiles::isFolder(url)) {
            sorted.folders << url;
            sorted.items << url;
        } else if (MediaExtensions::subtitle.contains(QFileInfo(url.path()).suffix().toLower())) {
            sorted.subtitles << url;
        } else {
            sorted.files << url;
            sorted.items << url;
        }
    }
    return sorted;
}

QString patterns(const QSet<QString>& extensions)
{
    QStringList sorted(extensions.begin(), extensions.end());
    std::sort(sorted.begin(), sorted.end());
    for (QString& extension : sorted)
        extension.prepend(QStringLiteral("*."));
    return sorted.join(QLatin1Char(' '));
}

/// Plays the folders and files of the set; the file it started, if any.
QCoro::Task<std::optional<QUrl>> openItems(QPointer<PlaybackEngine> engine,
                                           QPointer<UserCommands> commands, Sorted sorted)
{
    if (sorted.items.size() == 1 && sorted.files.size() == 1) {
        const QUrl file = sorted.files.constFirst();
        QCoro::Task<void> loading = engine->load(file);
        co_await loading;
        co_return file;
    }

    PlaylistManager* playlist = engine->playlist();
    if (sorted.items.size() == 1) {
        const QUrl folder = sorted.folders.constFirst();
        playlist->clear();
        QCoro::Task<bool> scanning = playlist->addFolder(folder);
        const bool added = co_await scanning;
        if (!engine || !commands || !added)
            co_return std::nullopt; // a later request took over the playlist meanwhile
        if (playlist->items().isEmpty()) {
            commands->say(QStringLiteral("No videos in \u201c%1\u201d")
                              .arg(QFileInfo(folder.path()).fileName()));
            co_return std::nullopt;
        }
    } else {
        if (sorted.files.isEmpty())
            co_return std::nullopt;
        playlist->clear();
        for (const QUrl& url : sorted.files)
            playlist->add(url);
    }
    const std::optional<QUrl> first = playlist->play(0);
    if (!first)
        co_return std::nullopt;
    QCoro::Task<void> loading = engine->load(*first);
    co_await loading;
    co_return first;
}

} // namespace

QCoro::Task<void> open(QPointer<PlaybackEngine> engine, QPointer<UserCommands> commands,
                       QList<QUrl> urls)
{
    if (!engine || !commands || urls.isEmpty())
        co_return;
    const quint64 ticket = engine->playlist()->cancelPendingScans();
    QFuture<Sorted> sorting = QtConcurrent::run(sort, urls);
    const Sorted sorted = co_await sorting;
    if (!engine || !commands || !engine->playlist()->isCurrent(ticket))
        co_return; // gone, or a later request took over while this one looked at the disk

    if (sorted.items.isEmpty()) {
        if (engine->state().isActive())
            commands->addSubtitles(sorted.subtitles);
        else
            commands->say(QStringLiteral("Open a video to add subtitles to"));
        co_return;
    }
    QCoro::Task<std::optional<QUrl>> opening = openItems(engine, commands, sorted);
    const std::optional<QUrl> started = co_await opening;
    // Subtitles that come with videos belong to the video that started, not to the one before,
    // nor to one that a later request opened meanwhile. (The playlist's ticket cannot tell:
    // setting up the new playlist renewed it.)
    if (started && engine && commands && !sorted.subtitles.isEmpty() &&
        engine->currentURL() == *started && engine->state().isActive())
        commands->addSubtitles(sorted.subtitles);
}

QStringList nameFilters()
{
    QSet<QString> openable = MediaExtensions::video;
    openable.unite(MediaExtensions::image).unite(MediaExtensions::subtitle);
    return {QStringLiteral("Videos, images and subtitles (%1)").arg(patterns(openable)),
            QStringLiteral("Videos (%1)").arg(patterns(MediaExtensions::video)),
            QStringLiteral("Images (%1)").arg(patterns(MediaExtensions::image)),
            QStringLiteral("Subtitles (%1)").arg(patterns(MediaExtensions::subtitle)),
            QStringLiteral("All files (*)")};
}

} // namespace OpeningRule
