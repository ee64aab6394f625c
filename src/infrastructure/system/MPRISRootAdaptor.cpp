#include "MPRISRootAdaptor.h"

#include "model/MediaExtensions.h"
#include "NowPlayingManager.h"

#include <QCoreApplication>
#include <QImageReader>
#include <QMimeDatabase>

namespace {

QStringList openableMimeTypes()
{
    const QMimeDatabase database;
    QStringList types;
    for (const QString& extension : MediaExtensions::video) {
        // Some extensions name other kinds of file too (".ts" is also a translation source).
        for (const QMimeType& type :
             database.mimeTypesForFileName(QStringLiteral("file.") + extension)) {
            if (type.name().startsWith(QLatin1String("video/")))
                types << type.name();
        }
    }
    for (const QByteArray& type : QImageReader::supportedMimeTypes())
        types << QString::fromLatin1(type);
    types.sort();
    types.removeDuplicates();
    return types;
}

} // namespace

MPRISRootAdaptor::MPRISRootAdaptor(NowPlayingManager* manager)
    : QDBusAbstractAdaptor(manager)
    , m_manager(manager)
    , m_mimeTypes(openableMimeTypes())
{}

void MPRISRootAdaptor::Raise()
{
    Q_EMIT m_manager->raiseRequested();
}

void MPRISRootAdaptor::Quit()
{
    QCoreApplication::quit();
}
