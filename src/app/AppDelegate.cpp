#include "AppDelegate.h"

#include "base/StartupTrace.h"
#include "core/renderer/MPVVideoView.h"

#include "engine/PlaybackEngine.h"
#include "features/playlist/PlaybackHistoryManager.h"
#include "infrastructure/keybinding/KeyBindingManager.h"
#include "infrastructure/system/NowPlayingManager.h"
#include "KeyDispatch.h"
#include "MainWindowGeometry.h"
#include "OpeningRule.h"
#include "Player.h"
#include "UserCommands.h"

#include <QGuiApplication>
#include <QIcon>
#include <QQmlApplicationEngine>
#include <QQuickWindow>
#include <QTimer>
#include <QVariantMap>

namespace {

constexpr int kRecentFileCount = 10;
// The longest the desktop services wait for a first picture that may never come (a file that
// is only sound, a window hidden as it opened).
constexpr std::chrono::seconds kDesktopServicesDelay(3);

} // namespace

void AppDelegate::prepareGraphics()
{
    QQuickWindow::setGraphicsApi(QSGRendererInterface::OpenGL);
    // libmpv's render context must be serviced on a thread that never waits for the GUI thread.
    if (!qEnvironmentVariableIsSet("QSG_RENDER_LOOP"))
        qputenv("QSG_RENDER_LOOP", "threaded");
}

AppDelegate::AppDelegate(const QString& libraryPath)
    : m_player(std::make_unique<Player>(libraryPath))
{
    connect(&m_player->keyDispatch(), &KeyDispatch::fullScreenToggleRequested, this,
            &AppDelegate::toggleFullScreen);
    // The desktop's media controls may ask for the window, or hand over a file.
    connect(&m_player->nowPlaying(), &NowPlayingManager::raiseRequested, this, &AppDelegate::raise);
    connect(&m_player->nowPlaying(), &NowPlayingManager::openRequested, this,
            [this](const QUrl& url) { openURLs({url}); });
}

PlaybackEngine* AppDelegate::engine() const
{
    return &m_player->engine();
}

UserCommands* AppDelegate::commands() const
{
    return &m_player->commands();
}

ControlStrip* AppDelegate::controlStrip() const
{
    return &m_player->controlStrip();
}

KeyBindingManager* AppDelegate::keyBindings() const
{
    return &m_player->keyBindings();
}

AppDelegate::~AppDelegate() = default;

bool AppDelegate::start(const QList<QUrl>& files)
{
    m_pendingFiles = files;

    useIconTheme();
    m_qml = std::make_unique<QQmlApplicationEngine>();
    m_qml->addImportPath(QStringLiteral("qrc:/qt/qml"));
    m_qml->setInitialProperties({{QStringLiteral("engine"), QVariant::fromValue(engine())},
                                 {QStringLiteral("commands"), QVariant::fromValue(commands())},
                                 {QStringLiteral("app"), QVariant::fromValue(this)}});
    m_qml->load(QUrl(QStringLiteral("qrc:/qt/qml/Velmar/Main.qml")));
    if (m_qml->rootObjects().isEmpty())
        return false;
    m_mainWindow = qobject_cast<QQuickWindow*>(m_qml->rootObjects().constFirst());
    if (!m_mainWindow)
        return false;

    configureMainWindow();
    if (QObject* view = m_mainWindow->findChild<QObject*>(QStringLiteral("playerInterfaceLoader")))
        connect(view, SIGNAL(loaded()), this, SLOT(interfaceLoaded()));
    m_player->keyBindings().start(m_mainWindow);
    // libmpv needs its render context before a file starts. The video item creates it in the
    // window's first scene sync, so the file can start while that first frame is still drawn.
    connect(m_mainWindow, &QQuickWindow::afterSynchronizing, this, &AppDelegate::openInitialFiles,
            static_cast<Qt::ConnectionType>(Qt::QueuedConnection | Qt::SingleShotConnection));
    return true;
}

void AppDelegate::interfaceLoaded()
{
    velmar::traceStartup("interface made");
}

void AppDelegate::useIconTheme()
{
    // Outside a desktop session (or under one without a theme setting) fall back to the theme
    // the player's icon names come from.
    if (QIcon::themeName().isEmpty() || QIcon::themeName() == QStringLiteral("hicolor"))
        QIcon::setThemeName(QStringLiteral("Adwaita"));
}

void AppDelegate::configureMainWindow()
{
    m_mainWindow->setColor(Qt::black);
    m_mainWindow->setMinimumSize(QSize(480, 270));
    m_geometry = new MainWindowGeometry(m_mainWindow, engine()->windowState(), this);
}

QStringList AppDelegate::openNameFilters() const
{
    return OpeningRule::nameFilters();
}

void AppDelegate::openInitialFiles()
{
    m_windowHasDrawn = true;
    velmar::traceStartup("window ready for video");
    const QList<QUrl> files = std::exchange(m_pendingFiles, {});
    m_openingFirstFiles = !files.isEmpty();
    [](QPointer<AppDelegate> self, QList<QUrl> files) -> QCoro::Task<void> {
        QCoro::Task<void> opening = OpeningRule::open(self->engine(), self->commands(), files);
        co_await opening;
        if (self && std::exchange(self->m_openingFirstFiles, false))
            Q_EMIT self->hasFilesToOpenChanged();
    }(this, files);
    // What the first picture does not need waits until it is up: the library's clean-up and
    // the desktop services would compete with it for the processor. A file that shows no
    // video (it failed, it is an image, it is only sound) lets them start as soon as that is
    // clear, and none waits more than a moment.
    if (files.isEmpty())
        return m_player->startDesktopServices();
    auto* waiting = new QObject(this);
    // Whichever comes first starts them; the player ignores the others.
    auto startServices = [this, waiting] {
        waiting->deleteLater();
        m_player->startDesktopServices();
    };
    if (auto* video = m_mainWindow->findChild<MPVVideoView*>(QStringLiteral("videoView")))
        connect(video, &MPVVideoView::firstFrameShown, waiting, startServices);
    connect(engine(), &PlaybackEngine::stateChanged, waiting, [this, startServices] {
        const PlayerState::Kind kind = engine()->state().kind();
        if (kind == PlayerState::Kind::Error || kind == PlayerState::Kind::ViewingImage ||
            kind == PlayerState::Kind::Idle)
            startServices();
    });
    QTimer::singleShot(kDesktopServicesDelay, waiting, startServices);
}

void AppDelegate::openURLs(const QList<QUrl>& urls)
{
    if (!m_windowHasDrawn) {
        const bool hadFiles = hasFilesToOpen();
        m_pendingFiles = urls; // a later request before the first frame replaces the earlier
        if (hasFilesToOpen() != hadFiles)
            Q_EMIT hasFilesToOpenChanged();
        return;
    }
    OpeningRule::open(engine(), commands(), urls); // runs on by itself; nothing waits for it
}

bool AppDelegate::dropURLs(QList<QUrl> urls)
{
    urls.removeIf([](const QUrl& url) { return !url.isLocalFile(); });
    if (urls.isEmpty())
        return false;
    openURLs(urls);
    return true;
}

void AppDelegate::openRecentFile(const QUrl& url)
{
    if (!url.isEmpty())
        engine()->load(url);
}

QVariantList AppDelegate::recentMenuEntries() const
{
    QVariantList entries;
    for (const PlaybackRecord& record : engine()->history()->recentRecords(kRecentFileCount)) {
        entries << QVariantMap{{QStringLiteral("title"), record.title},
                               {QStringLiteral("url"), record.videoURL},
                               {QStringLiteral("enabled"), true}};
    }
    if (entries.isEmpty()) {
        entries << QVariantMap{{QStringLiteral("title"), QStringLiteral("No Recent Files")},
                               {QStringLiteral("url"), QUrl()},
                               {QStringLiteral("enabled"), false}};
    }
    return entries;
}

void AppDelegate::toggleFullScreen()
{
    if (m_geometry)
        m_geometry->toggleFullScreen();
}

void AppDelegate::raise()
{
    if (!m_mainWindow)
        return;
    m_mainWindow->show();
    m_mainWindow->raise();
    m_mainWindow->requestActivate();
}
