#include "app/Application.h"

#include <QCommandLineParser>
#include <QCoreApplication>
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
QStringList filesFromCommandLine(int argc, char* argv[])
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
    return parser.positionalArguments();
}

} // namespace

int main(int argc, char* argv[])
{
    const QStringList files = filesFromCommandLine(argc, argv);

    Application::prepareGraphics();
    QGuiApplication app(argc, argv);
    describeApplication();
    QGuiApplication::setDesktopFileName(QStringLiteral("velmarplayer"));

    Application player;
    if (!player.start(files))
        return 1;
    return QGuiApplication::exec();
}
