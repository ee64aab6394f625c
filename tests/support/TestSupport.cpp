#include "TestSupport.h"

#include "app/AppDelegate.h"
#include "app/Player.h"
#include "core/renderer/MPVVideoView.h"
#include "engine/MPVDecoder.h"
#include "engine/PlaybackEngine.h"
#include "features/osd/OSDManager.h"
#include "infrastructure/mpv/MPVProperties.h"
#include "infrastructure/system/NowPlayingManager.h"

#include <cstdio>
#include <cstring>
#include <dlfcn.h>
#include <link.h>
#include <QCoroTask>
#include <QSettings>
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

namespace {
int g_libraryGeneration = 0; // the running test's library file
} // namespace

QString libraryPath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
           QStringLiteral("/VelmarPlayer/library-%1.db").arg(g_libraryGeneration);
}

void freshStart()
{
    ++g_libraryGeneration;
    QSettings(QSettings::IniFormat, QSettings::UserScope, QStringLiteral("VelmarPlayer"),
              QStringLiteral("VelmarPlayer"))
        .clear();
}

qint64 GuiHeartbeat::allowance(qint64 limit)
{
    GuiHeartbeat idle;
    QTest::qWait(1000);
    return std::max(limit, 3 * idle.longestStall());
}

GuiHeartbeat::GuiHeartbeat()
{
    m_beat.setInterval(5);
    m_beat.setTimerType(Qt::PreciseTimer);
    QObject::connect(&m_beat, &QTimer::timeout,
                     [this] { m_longest = std::max(m_longest, m_sinceLast.restart()); });
    m_sinceLast.start();
    m_beat.start();
}

LibmpvErrorGuard::LibmpvErrorGuard(MPVDecoder* decoder)
{
    QObject::connect(decoder, &MPVDecoder::errorLogged, &m_context, [this](const QString& text) {
        // The silent output's own bookkeeping complaint when playback resumes after a pause;
        // sound is not what these tests look at.
        if (!text.startsWith(QLatin1String("ao/null: illegal state")))
            m_errors << text;
    });
}

void LibmpvErrorGuard::check() const
{
    if (!m_errors.isEmpty() && !m_expected)
        QTest::qFail(qPrintable(QStringLiteral("libmpv logged errors: ") +
                                m_errors.join(QStringLiteral("; "))),
                     __FILE__, __LINE__);
}

TestPlayer::TestPlayer(QSize windowSize)
    : m_player(std::make_unique<Player>(libraryPath()))
    , m_window(std::make_unique<QQuickWindow>())
    , m_view(new MPVVideoView(m_window->contentItem()))
    , m_libmpvErrors(m_player->engine().decoder())
{
    MPVDecoder* decoder = engine().decoder();
    decoder->setMPVString(MPVName::ao, QStringLiteral("null"));
    decoder->setMPVString(MPVName::hwdec, QStringLiteral("no"));

    m_window->resize(windowSize);
    m_window->setColor(Qt::black);
    m_view->setSize(windowSize);
    QObject::connect(m_window.get(), &QQuickWindow::widthChanged, m_view,
                     [this](int width) { m_view->setWidth(width); });
    QObject::connect(m_window.get(), &QQuickWindow::heightChanged, m_view,
                     [this](int height) { m_view->setHeight(height); });
    m_view->setDecoder(engine().decoder());
    // As the player view does: a seek or a step while paused redraws the frame.
    QObject::connect(&engine(), &PlaybackEngine::needsFrameRefreshChanged, m_view, [this] {
        if (!engine().needsFrameRefresh())
            return;
        m_view->refresh();
        engine().acknowledgeFrameRefresh();
    });
    // The desktop finds the player once the bus has given it its name (when no other has it).
    QSignalSpy named(&m_player->nowPlaying(), &NowPlayingManager::busNameSettled);
    m_player->startDesktopServices();
    if (named.isEmpty() && !named.wait())
        QTest::qFail("the bus did not answer the request for the player's name", __FILE__,
                     __LINE__);
}

TestPlayer::~TestPlayer()
{
    m_window.reset();
    m_player.reset();
    m_libmpvErrors.check();
}

void TestPlayer::endPlayerFirst()
{
    m_player.reset();
}

PlaybackEngine& TestPlayer::engine()
{
    return m_player->engine();
}

UserCommands& TestPlayer::commands()
{
    return m_player->commands();
}

bool TestPlayer::show()
{
    if (m_window->isExposed() && m_view->hasRenderContext())
        return true;
    m_window->show();
    if (!QTest::qWaitForWindowExposed(m_window.get()))
        return false;
    return QTest::qWaitFor([this] { return m_view->hasRenderContext(); }, 10000);
}

void TestPlayer::open(const QUrl& url)
{
    if (!show())
        QTest::qFail("the player window did not come up", __FILE__, __LINE__);
    QCoro::waitFor(engine().load(url));
}

QString TestPlayer::osdText() const
{
    const auto message = m_player->engine().osd()->currentMessage();
    return message ? message->text() : QString();
}

bool waitForStillScene(QQuickWindow* window, int stillMs, int timeoutMs)
{
    QElapsedTimer sinceFrame;
    sinceFrame.start();
    // Frames are swapped on the render thread; the count restarts here, on this one. Reports
    // still queued when the wait ends go with their receiver.
    QObject receiver;
    QObject::connect(window, &QQuickWindow::frameSwapped, &receiver,
                     [&sinceFrame] { sinceFrame.restart(); });
    return QTest::qWaitFor([&] { return sinceFrame.elapsed() >= stillMs; }, timeoutMs);
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

void failOnWarnings()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral(".*")));
}

void finishBackgroundWork()
{
    // A finished grab resumes its coroutine through an event, and a walk pauses 100 ms on a
    // timer before it notices that its generator is gone, so the event loop must turn a while.
    QThreadPool* pool = QThreadPool::globalInstance();
    for (int round = 0; round < 20; ++round) {
        pool->waitForDone();
        QTest::qWait(150);
        if (pool->activeThreadCount() == 0)
            return;
    }
}

namespace {

/// The command line QtTest runs: as given, or, with VELMAR_TEST_ORDER=reverse and no test
/// function named, every test function named last to first, so that a test that passes only
/// after another one shows up.
QStringList testArguments(const QObject* testObject, const QStringList& given)
{
    static const QRegularExpression notATest(QStringLiteral("^(init|cleanup)(TestCase)?$|_data$"));
    const QMetaObject* meta = testObject->metaObject();
    QStringList reversed;
    for (int i = meta->methodOffset(); i < meta->methodCount(); ++i) {
        const QString name = QString::fromLatin1(meta->method(i).name());
        if (meta->method(i).access() == QMetaMethod::Private && !notATest.match(name).hasMatch())
            reversed.prepend(name);
    }
    const bool chosen = std::any_of(given.begin() + 1, given.end(), [&](const QString& argument) {
        return reversed.contains(argument.section(QLatin1Char(':'), 0, 0));
    });
    return qgetenv("VELMAR_TEST_ORDER") != "reverse" || chosen ? given : given + reversed;
}

} // namespace

int runTests(QObject* testObject, int argc, char** argv)
{
    AppDelegate::prepareGraphics();
    QGuiApplication app(argc, argv);
    QGuiApplication::setApplicationName(QStringLiteral("VelmarPlayer"));
    QGuiApplication::setOrganizationName(QStringLiteral("VelmarPlayer"));
    QStandardPaths::setTestModeEnabled(true);
    QStringList given;
    for (int i = 0; i < argc; ++i)
        given << QString::fromLocal8Bit(argv[i]);
    const int failures = QTest::qExec(testObject, testArguments(testObject, given));
    // Coroutines still waiting when the application object goes would never be resumed, and
    // LeakSanitizer would report what they hold.
    finishBackgroundWork();
    pinGraphicsDrivers();
    return failures;
}

} // namespace velmar::test
