#include "OpeningRule.h"

#include "core/engine/PlaybackEngine.h"
#include "features/playlist/MediaExtensions.h"
#include "features/playlist/PlaylistManager.h"

#include <algorithm>
#include <QFileInfo>

namespace OpeningRule {

namespace {

bool isFolder(const QUrl& url)
{
    return url.isLocalFile() && QFileInfo(url.toLocalFile()).isDir();
}

QString patterns(const QSet<QString>& extensions)
{
    QStringList sorted(extensions.begin(), extensions.end());
    std::sort(sorted.begin(), sorted.end());
    for (QString& extension : sorted)
        extension.prepend(QStringLiteral("*."));
    return sorted.join(QLatin1Char(' '));
}

} // namespace

QCoro::Task<void> open(QPointer<PlaybackEngine> engine, QList<QUrl> urls)
{
    if (!engine || urls.isEmpty())
        co_return;

    if (urls.size() == 1 && !isFolder(urls.constFirst())) {
        QCoro::Task<void> loading = engine->load(urls.constFirst());
        co_await loading;
        co_return;
    }

    PlaylistManager* playlist = engine->playlist();
    if (urls.size() == 1) {
        playlist->clear();
        QCoro::Task<void> scan = playlist->addFolder(urls.constFirst());
        co_await scan;
        if (!engine)
            co_return;
    } else {
        urls.removeIf(isFolder);
        if (urls.isEmpty())
            co_return;
        playlist->clear();
        for (const QUrl& url : std::as_const(urls))
            playlist->add(url);
    }
    if (const std::optional<QUrl> first = playlist->play(0)) {
        QCoro::Task<void> loading = engine->load(*first);
        co_await loading;
    }
}

QStringList nameFilters()
{
    QSet<QString> playable = MediaExtensions::video;
    playable.unite(MediaExtensions::image);
    return {QStringLiteral("Videos and images (%1)").arg(patterns(playable)),
            QStringLiteral("Videos (%1)").arg(patterns(MediaExtensions::video)),
            QStringLiteral("Images (%1)").arg(patterns(MediaExtensions::image)),
            QStringLiteral("All files (*)")};
}

} // namespace OpeningRule
