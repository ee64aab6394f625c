#include "AppDelegate.h"

#include "core/engine/PlaybackEngine.h"
#include "features/playlist/PlaybackHistoryManager.h"
#include "infrastructure/keybinding/KeyBindingManager.h"
#include "infrastructure/system/NowPlayingManager.h"
#include "MainWindowGeometry.h"
#include "OpeningRule.h"

#include <QGuiApplication>
#include <QIcon>
#include <QQmlApplicationEngine>
#include <QQuickWindow>
#include <QVariantMap>

namespace {

constexpr int kRecentFileCount = 10;

} // namespace

void AppDelegate::prepareGraphics()
{
    QQuickWindow::setGraphicsApi(QSGRendererInterface::OpenGL);
    // libmpv's render context must be serviced on a thread that never waits for the GUI thread.
    if (!qEnvironmentVariableIsSet("QSG_RENDER_LOOP"))
        qputenv("QSG_RENDER_LOOP", "threaded");
}

AppDelegate::AppDelegate()
    : m_engine(std::make_unique<PlaybackEngine>())
{}

AppDelegate::~AppDelegate() = default;

bool AppDelegate::start(const QList<QUrl>& files)
{
    m_pendingFiles = files;

    useIconTheme();
    m_qml = std::make_unique<QQmlApplicationEngine>();
    m_qml->addImportPath(QStringLiteral("qrc:/qt/qml"));
    m_qml->setInitialProperties({{QStringLiteral("engine"), QVariant::fromValue(m_engine.get())},
                                 {QStringLiteral("app"), QVariant::fromValue(this)}});
    m_qml->load(QUrl(QStringLiteral("qrc:/qt/qml/Velmar/Main.qml")));
    if (m_qml->rootObjects().isEmpty())
        return false;
    m_mainWindow = qobject_cast<QQuickWindow*>(m_qml->rootObjects().constFirst());
    if (!m_mainWindow)
        return false;

    configureMainWindow();
    m_engine->keyBindings()->start(m_mainWindow);
    connect(m_engine->keyBindings(), &KeyBindingManager::toggleFullScreenRequested, this,
            &AppDelegate::toggleFullScreen);
    // The desktop's media controls may ask for the window, or hand over a file.
    connect(m_engine->nowPlaying(), &NowPlayingManager::raiseRequested, this, &AppDelegate::raise);
    connect(m_engine->nowPlaying(), &NowPlayingManager::openRequested, this,
            [this](const QUrl& url) { openURLs({url}); });
    // libmpv needs its render context before a file starts, and that exists only once the
    // window has drawn.
    connect(m_mainWindow, &QQuickWindow::frameSwapped, this, &AppDelegate::openInitialFiles,
            Qt::SingleShotConnection);
    return true;
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
    m_geometry = new MainWindowGeometry(m_mainWindow, m_engine->windowState(), this);
}

QStringList AppDelegate::openNameFilters() const
{
    return OpeningRule::nameFilters();
}

void AppDelegate::openInitialFiles()
{
    m_windowHasDrawn = true;
    openURLs(std::exchange(m_pendingFiles, {}));
}

void AppDelegate::openURLs(const QList<QUrl>& urls)
{
    if (!m_windowHasDrawn) {
        m_pendingFiles = urls; // a later request before the first frame replaces the earlier
        return;
    }
    OpeningRule::open(m_engine.get(), urls); // runs on by itself; nothing waits for it
}

void AppDelegate::openRecentFile(const QUrl& url)
{
    if (!url.isEmpty())
        m_engine->open(url);
}

QVariantList AppDelegate::recentMenuEntries() const
{
    QVariantList entries;
    for (const PlaybackRecord& record : m_engine->history()->recentRecords(kRecentFileCount)) {
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
