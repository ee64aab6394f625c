#include "app/Application.h"

#include <QCommandLineParser>
#include <QGuiApplication>

int main(int argc, char* argv[]) {
    Application::prepareGraphics();
    QGuiApplication app(argc, argv);
    QGuiApplication::setApplicationName(QStringLiteral("VelmarPlayer"));
    QGuiApplication::setOrganizationName(QStringLiteral("VelmarPlayer"));
    QGuiApplication::setApplicationVersion(QStringLiteral(VELMAR_VERSION));
    QGuiApplication::setDesktopFileName(QStringLiteral("velmarplayer"));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("VelmarPlayer, a video player."));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addPositionalArgument(QStringLiteral("files"),
                                 QStringLiteral("Video or image files to open."),
                                 QStringLiteral("[FILE...]"));
    parser.process(app);

    Application player;
    if (!player.start(parser.positionalArguments()))
        return 1;
    return QGuiApplication::exec();
}
