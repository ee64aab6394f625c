#pragma once

#include <functional>
#include <memory>
#include <QGuiApplication>
#include <QQuickWindow>
#include <QString>
#include <QTemporaryDir>
#include <QtTest>
#include <QUrl>

class PlaybackEngine;
class MPVVideoView;

namespace velmar::test {

/// Absolute path of a generated test media file.
QString fixturePath(const QString& name);
QUrl fixtureUrl(const QString& name);

/// Points every XDG folder at a fresh temporary directory, so that no test reads or writes
/// the user's settings or library. Must exist before the application object.
class IsolatedHome
{
public:
    IsolatedHome();

private:
    QTemporaryDir m_dir;
};

/// An engine whose sound goes nowhere, so tests run the same with or without an audio device.
std::unique_ptr<PlaybackEngine> makeSilentEngine();

/// A real window showing the engine's video, as the player shows it. Destroy it before the
/// engine.
class PlayerWindow
{
public:
    explicit PlayerWindow(PlaybackEngine* engine, QSize size = QSize(640, 360));
    ~PlayerWindow();

    QQuickWindow* window() { return &m_window; }
    MPVVideoView* view() { return m_view; }

    /// Shows the window and waits until libmpv's render context exists.
    bool showAndWaitForRenderContext();

private:
    PlaybackEngine* m_engine;
    QQuickWindow m_window;
    MPVVideoView* m_view;
};

/// Runs the operation and returns the lines it printed on standard output (its log lines).
QStringList printedLines(const std::function<void()>& operation);

/// Loads a file through the engine and waits for the load coroutine to finish.
void loadAndWait(PlaybackEngine& engine, const QUrl& url);

/// Lets background work that tests left running end: grabs on the global thread pool, the
/// coroutines that resume when they finish, and walks pausing between grabs.
void finishBackgroundWork();

int runTests(QObject* testObject, int argc, char** argv);

} // namespace velmar::test

/// Test entry point: an isolated home, the player's graphics set-up, then the tests.
#define VELMAR_TEST_MAIN(TestClass)                                                                \
    int main(int argc, char** argv)                                                                \
    {                                                                                              \
        velmar::test::IsolatedHome home;                                                           \
        TestClass tests;                                                                           \
        return velmar::test::runTests(&tests, argc, argv);                                         \
    }
