#pragma once

#include <functional>
#include <memory>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QQuickWindow>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>
#include <QUrl>

class MPVDecoder;
class MPVVideoView;
class PlaybackEngine;
class Player;
class UserCommands;

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

/// The library file the players of the running test use.
QString libraryPath();
/// Forgets what earlier tests stored, so that no test depends on another: the preferences, and
/// the library (the next players use a new file). Tests call it from `init()`, together with
/// `failOnWarnings()`.
void freshStart();

/// Measures the longest time the GUI thread goes without turning its event loop while it runs.
class GuiHeartbeat
{
public:
    GuiHeartbeat();
    /// The longest stall to accept: `limit` ms, or more on a machine so busy (a parallel build,
    /// a sanitizer) that an idle second already stalls for a third of that.
    static qint64 allowance(qint64 limit);
    /// Milliseconds.
    qint64 longestStall() const { return m_longest; }

private:
    QTimer m_beat;
    QElapsedTimer m_sinceLast;
    qint64 m_longest = 0;
};

/// Fails the running test on any error libmpv logs through the decoder, unless the test
/// expects some (broken files). Its owner checks once the decoder is gone, so that errors
/// logged on the way out count too.
class LibmpvErrorGuard
{
public:
    explicit LibmpvErrorGuard(MPVDecoder* decoder);
    void expect() { m_expected = true; }
    void check() const;

private:
    QObject m_context; // the connection goes with the guard
    QStringList m_errors;
    bool m_expected = false;
};

/// A player as the application builds it, with a real window showing its video: sound goes
/// nowhere and hardware decoding is off, so tests run the same on any machine. Any error
/// libmpv logs fails the running test, unless the test expects some (broken files).
/// The window goes before the player, as in the application.
class TestPlayer
{
public:
    explicit TestPlayer(QSize windowSize = QSize(640, 360));
    ~TestPlayer();

    Player& player() { return *m_player; }
    PlaybackEngine& engine();
    UserCommands& commands();
    QQuickWindow* window() { return m_window.get(); }
    MPVVideoView* view() { return m_view; }

    /// Shows the window and waits until libmpv can draw into it.
    bool show();
    /// Shows the window if needed, opens the file and waits for the load to finish.
    void open(const QUrl& url);
    /// The text on the on-screen display, empty when nothing is shown.
    QString osdText() const;
    /// Ends the player while its window stays up, as when the core goes first.
    void endPlayerFirst();
    /// Broken media makes libmpv log errors; the test that opens it says so.
    void expectLibmpvErrors() { m_libmpvErrors.expect(); }

private:
    std::unique_ptr<Player> m_player;
    std::unique_ptr<QQuickWindow> m_window;
    MPVVideoView* m_view;
    LibmpvErrorGuard m_libmpvErrors;
};

/// Waits until the window has drawn no frame for `stillMs` in a row, as it should once its
/// fades and animations have run out; false when it keeps drawing for `timeoutMs`.
bool waitForStillScene(QQuickWindow* window, int stillMs = 1000, int timeoutMs = 10000);

/// Runs the operation and returns the lines it printed on standard output (its log lines).
QStringList printedLines(const std::function<void()>& operation);

/// Makes every warning Qt prints during the running test fail it: a warning is a fault someone
/// has to look at. Tests call it from `init()`.
void failOnWarnings();

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
