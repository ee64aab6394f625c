#include "app/AppDelegate.h"
#include "app/SingleInstance.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QGuiApplication>
#include <QtQml/qqmlextensionplugin.h>

Q_IMPORT_QML_PLUGIN(VelmarPlugin)

namespace {

void describeApplication()
{
    QCoreApplication::setApplicationName(QStringLiteral("VelmarPlayer"));
    QCoreApplication::setOrganizationName(QStringLiteral("VelmarPlayer"));
    QCoreApplication::setApplicationVersion(QStringLiteral(VELMAR_VERSION));
}

/// Reads the command line without a display, so that --help and --version work anywhere.
/// Paths become absolute URLs, as they may be handed to a player started elsewhere.
QList<QUrl> filesFromCommandLine(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    describeApplication();
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("VelmarPlayer, a video player."));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addPositionalArgument(QStringLiteral("files"),
                                 QStringLiteral("Video or image files to open."),
                                 QStringLiteral("[FILE...]"));
    parser.process(app);
    QList<QUrl> urls;
    for (const QString& argument : parser.positionalArguments())
        urls << QUrl::fromUserInput(argument, QDir::currentPath(), QUrl::AssumeLocalFile);
    return urls;
}

} // namespace

int main(int argc, char* argv[])
{
    const QList<QUrl> files = filesFromCommandLine(argc, argv);

    AppDelegate::prepareGraphics();
    QGuiApplication app(argc, argv);
    describeApplication();
    QGuiApplication::setDesktopFileName(QStringLiteral("velmarplayer"));

    // A player already running in this session takes the files instead.
    SingleInstance instance;
    if (!instance.claim() && SingleInstance::forward(files))
        return 0;

    AppDelegate player;
    QObject::connect(&instance, &SingleInstance::openRequested, &player,
                     [&player](const QList<QUrl>& urls) {
                         player.openURLs(urls);
                         player.raise();
                     });
    if (!player.start(files))
        return 1;
    return QGuiApplication::exec();
}
