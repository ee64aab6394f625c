#include "TestSupport.h"

#include "app/AppDelegate.h"
#include "core/engine/MPVDecoder.h"
#include "core/engine/PlaybackEngine.h"
#include "core/renderer/MPVVideoView.h"

#include <cstdio>
#include <cstring>
#include <dlfcn.h>
#include <link.h>
#include <QCoroTask>
#include <QStandardPaths>
#include <QTemporaryFile>
#include <QThreadPool>
#include <unistd.h>

namespace velmar::test {

QString fixturePath(const QString& name)
{
    return QStringLiteral(VELMAR_FIXTURE_DIR "/") + name;
}

QUrl fixtureUrl(const QString& name)
{
    return QUrl::fromLocalFile(fixturePath(name));
}

IsolatedHome::IsolatedHome()
{
    const QString root = m_dir.path();
    for (const char* variable : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME",
                                 "XDG_STATE_HOME", "XDG_PICTURES_DIR"}) {
        const QString folder = root + QLatin1Char('/') + QString::fromLatin1(variable);
        QDir().mkpath(folder);
        qputenv(variable, folder.toUtf8());
    }
    QDir().mkpath(root + QStringLiteral("/runtime"));
    QFile::setPermissions(root + QStringLiteral("/runtime"),
                          QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    qputenv("XDG_RUNTIME_DIR", (root + QStringLiteral("/runtime")).toUtf8());
    qputenv("HOME", root.toUtf8());
}

std::unique_ptr<PlaybackEngine> makeSilentEngine()
{
    auto engine = std::make_unique<PlaybackEngine>();
    engine->decoder()->setMPVString("ao", QStringLiteral("null"));
    return engine;
}

PlayerWindow::PlayerWindow(PlaybackEngine* engine, QSize size)
    : m_engine(engine)
    , m_view(new MPVVideoView(m_window.contentItem()))
{
    m_window.resize(size);
    m_window.setColor(Qt::black);
    m_view->setSize(size);
    QObject::connect(&m_window, &QQuickWindow::widthChanged, m_view,
                     [this](int width) { m_view->setWidth(width); });
    QObject::connect(&m_window, &QQuickWindow::heightChanged, m_view,
                     [this](int height) { m_view->setHeight(height); });
    m_view->setEngine(engine);
}

PlayerWindow::~PlayerWindow()
{
    delete m_view;
}

bool PlayerWindow::showAndWaitForRenderContext()
{
    m_window.show();
    if (!QTest::qWaitForWindowExposed(&m_window))
        return false;
    return QTest::qWaitFor([this] { return m_engine->decoder()->renderContext() != nullptr; },
                           10000);
}

QStringList printedLines(const std::function<void()>& operation)
{
    QTemporaryFile capture;
    if (!capture.open())
        qFatal("cannot create a file to capture standard output");
    std::fflush(stdout);
    const int savedStdout = dup(STDOUT_FILENO);
    dup2(capture.handle(), STDOUT_FILENO);
    operation();
    std::fflush(stdout);
    dup2(savedStdout, STDOUT_FILENO);
    close(savedStdout);

    QFile reader(capture.fileName());
    if (!reader.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(reader.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

void loadAndWait(PlaybackEngine& engine, const QUrl& url)
{
    QCoro::waitFor(engine.load(url));
}

namespace {

/// Keeps the OpenGL driver modules mapped until the process ends. The GL stack unloads them on
/// shutdown, before LeakSanitizer reports, which would leave the driver's own one-off
/// allocations unattributed and impossible to tell from ours.
void pinGraphicsDrivers()
{
    dl_iterate_phdr(
        [](dl_phdr_info* info, size_t, void*) {
            if (info->dlpi_name && std::strstr(info->dlpi_name, "/dri/"))
                dlopen(info->dlpi_name, RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE);
            return 0;
        },
        nullptr);
}

} // namespace

void finishBackgroundWork()
{
    // A finished grab resumes its coroutine through an event, and a walk pauses 100 ms on a
    // timer before it notices that its generator is gone, so the event loop must turn for a while.
    QThreadPool* pool = QThreadPool::globalInstance();
    for (int round = 0; round < 20; ++round) {
        pool->waitForDone();
        QTest::qWait(150);
        if (pool->activeThreadCount() == 0)
            return;
    }
}

int runTests(QObject* testObject, int argc, char** argv)
{
    AppDelegate::prepareGraphics();
    QGuiApplication app(argc, argv);
    QGuiApplication::setApplicationName(QStringLiteral("VelmarPlayer"));
    QGuiApplication::setOrganizationName(QStringLiteral("VelmarPlayer"));
    QStandardPaths::setTestModeEnabled(true);
    const int failures = QTest::qExec(testObject, argc, argv);
    // Coroutines still waiting when the application object goes would never be resumed, and
    // LeakSanitizer would report what they hold.
    finishBackgroundWork();
    pinGraphicsDrivers();
    return failures;
}

} // namespace velmar::test
