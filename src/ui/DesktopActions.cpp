#include "DesktopActions.h"

#include "infrastructure/system/FileRevealer.h"
#include "model/MediaExtensions.h"

void DesktopActions::revealFile(const QUrl& url)
{
    if (url.isLocalFile())
        FileRevealer::reveal(url);
}

QStringList DesktopActions::subtitleNameFilters()
{
    QStringList patterns;
    for (const QString& extension : MediaExtensions::subtitle)
        patterns << QStringLiteral("*.") + extension;
    patterns.sort();
    return {QStringLiteral("Subtitles (%1)").arg(patterns.join(QLatin1Char(' '))),
            QStringLiteral("All files (*)")};
}
