#include "app/AppDelegate.h"
#include "app/SingleInstance.h"
#include "base/StartupTrace.h"
#include "infrastructure/persistence/DatabaseManager.h"
#include "infrastructure/system/TerminationSignals.h"
#include "model/MediaFiles.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QGuiApplication>
#include <QThreadPool>
#include <QTimer>
#include <QtQml/qqmlextensionplugin.h>

Q_IMPORT_QML_PLUGIN(VelmarPlugin)

namespace {

void describeApplication()
{
    QCoreApplication::setApplicationName(QStringLiteral("VelmarPlayer"));
    QCoreApplication::setOrganizationName(QStringLiteral("VelmarPlayer"));
    QCoreApplication::setApplicationVersion(QStringLiteral(VELMAR_VERSION));
}

/// A command-line argument as a URL. Names that are not UTF-8 are taken as the bytes they are
/// (Qt's decoding of the command line would replace those bytes and name no file).
QUrl urlFromArgument(const QByteArray& argument, const QString& decoded)
{
    if (QString::fromUtf8(argument).toUtf8() == argument)
        return QUrl::fromUserInput(decoded, QDir::currentPath(), QUrl::AssumeLocalFile);
    const QByteArray absolute = argument.startsWith('/')
                                    ? argument
                                    : QFile::encodeName(QDir::currentPath()) + '/' + argument;
    return MediaFiles::urlForLocalPath(absolute);
}

/// Work that outlived the player (a thumbnail grab on the thread pool, a walk pausing between
/// grabs) resumes once more, finds the player gone and ends, releasing what it holds, instead
/// of being cut off half-way. The window is already gone, so nobody waits on this.
void windDownBackgroundWork()
{
    constexpr int kWindDownMs = 200; // longer than any pause such work takes
    QEventLoop loop;
    QTimer::singleShot(kWindDownMs, &loop, &QEventLoop::quit);
    loop.exec();
    QThreadPool::globalInstance()->waitForDone();
}

/// Reads the command line without a display, so that --help and --version work anywhere.
/// Paths become absolute URLs, as they may be handed to a player started elsewhere.
///
/// No application object may exist before the real one: destroying one runs Qt's clean-up
/// routines, which drop the accessibility factories Qt Quick installs when it loads, and the
/// window would then be empty to screen readers. Only the paths that print and exit (help,
/// version, a bad option) make an application object here.
QList<QUrl> filesFromCommandLine(int argc, char* argv[])
{
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments << QString::fromLocal8Bit(argv[i]);
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("VelmarPlayer, a video player."));
    const QCommandLineOption help = parser.addHelpOption();
    const QCommandLineOption version = parser.addVersionOption();
    parser.addPositionalArgument(QStringLiteral("files"),
                                 QStringLiteral("Video or image files to open."),
                                 QStringLiteral("[FILE...]"));
    if (!parser.parse(arguments) || parser.isSet(help) || parser.isSet(version) ||
        parser.isSet(QStringLiteral("help-all"))) {
        QCoreApplication app(argc, argv);
        describeApplication();
        parser.process(app); // prints, then ends the process
    }

    // The parser knows the files only as decoded text; the raw arguments are the same files in
    // the same order (every option the parser accepts ends the program before this point).
    QList<QByteArray> raw;
    bool optionsEnded = false;
    for (int i = 1; i < argc; ++i) {
        const QByteArray argument(argv[i]);
        if (!optionsEnded && argument == "--")
            optionsEnded = true;
        else if (optionsEnded || !argument.startsWith('-'))
            raw << argument;
    }
    const QStringList decoded = parser.positionalArguments();
    QList<QUrl> urls;
    for (qsizetype i = 0; i < decoded.size(); ++i)
        urls << urlFromArgument(raw.size() == decoded.size() ? raw.at(i) : decoded.at(i).toUtf8(),
                                decoded.at(i));
    return urls;
}

} // namespace

int main(int argc, char* argv[])
{
    velmar::traceStartup("main");
    const QList<QUrl> files = filesFromCommandLine(argc, argv);

    AppDelegate::prepareGraphics();
    QGuiApplication app(argc, argv);
    describeApplication();
    QGuiApplication::setDesktopFileName(QStringLiteral("velmarplayer"));
    velmar::traceStartup("application object ready");

    // A player already running in this session takes the files instead.
    SingleInstance instance;
    if (!instance.claim() && SingleInstance::forward(files))
        return 0;

    // Logging out, Ctrl+C and a closed terminal quit like closing the window: the place and
    // the settings of the open file are saved on the way out.
    TerminationSignals terminationSignals;
    QObject::connect(&terminationSignals, &TerminationSignals::received, &app,
                     &QCoreApplication::quit);

    int status = 0;
    {
        AppDelegate player(DatabaseManager::defaultDatabasePath());
        velmar::traceStartup("player created");
        QObject::connect(&instance, &SingleInstance::openRequested, &player,
                         [&player](const QList<QUrl>& urls) {
                             player.openURLs(urls);
                             player.raise();
                         });
        if (!player.start(files))
            return 1;
        velmar::traceStartup("window loaded");
        status = QGuiApplication::exec();
    }
    windDownBackgroundWork();
    return status;
}
