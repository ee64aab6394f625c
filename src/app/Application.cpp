#include "Application.h"

#include "core/engine/PlaybackEngine.h"
#include "infrastructure/keybinding/KeyBindingManager.h"

#include <QDir>
#include <QQmlApplicationEngine>
#include <QQuickWindow>

void Application::prepareGraphics()
{
    QQuickWindow::setGraphicsApi(QSGRendererInterface::OpenGL);
    // libmpv's render context must be serviced on a thread that never waits for the GUI thread.
    if (!qEnvironmentVariableIsSet("QSG_RENDER_LOOP"))
        qputenv("QSG_RENDER_LOOP", "threaded");
}

Application::Application()
    : m_engine(std::make_unique<PlaybackEngine>())
{}

Application::~Application() = default;

bool Application::start(const QStringList& files)
{
    for (const QString& file : files)
        m_pendingFiles << QUrl::fromUserInput(file, QDir::currentPath(), QUrl::AssumeLocalFile);

    m_qml = std::make_unique<QQmlApplicationEngine>();
    m_qml->addImportPath(QStringLiteral("qrc:/qt/qml"));
    m_qml->setInitialProperties({{QStringLiteral("engine"), QVariant::fromValue(m_engine.get())}});
    m_qml->load(QUrl(QStringLiteral("qrc:/qt/qml/Velmar/Main.qml")));
    if (m_qml->rootObjects().isEmpty())
        return false;

    auto* window = qobject_cast<QQuickWindow*>(m_qml->rootObjects().constFirst());
    if (!window)
        return false;
    m_engine->keyBindings()->start(window);
    // libmpv needs its render context before a file starts, and that exists only once the
    // window has drawn.
    connect(window, &QQuickWindow::frameSwapped, this, &Application::openInitialFiles,
            Qt::SingleShotConnection);
    return true;
}

void Application::openInitialFiles()
{
    if (m_pendingFiles.isEmpty())
        return;
    // Several files become a playlist once there is one; until then the first one plays.
    m_engine->open(m_pendingFiles.constFirst());
    m_pendingFiles.clear();
}
