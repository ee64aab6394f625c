// The video surface in real windows: the picture is the video the right way up, a resize while
// paused redraws the same frame, the window draws only when there is something new to show,
// picture in picture moves the video to a floating window and back, and the core may go before
// the window.
#include "core/renderer/MPVVideoView.h"
#include "engine/MPVDecoder.h"
#include "engine/PlaybackEngine.h"
#include "features/pip/PiPManager.h"
#include "support/TestSupport.h"

#include <atomic>
#include <QCoroTask>
#include <QDir>
#include <QQmlComponent>
#include <QQmlEngine>

using namespace velmar::test;

namespace {

// The fixtures carry a blue block in the top-left fifth and a yellow one in the bottom-right.
bool isBlue(QColor c)
{
    return c.blue() > 180 && c.red() < 70 && c.green() < 70;
}

bool isYellow(QColor c)
{
    return c.red() > 180 && c.green() > 180 && c.blue() < 80;
}

QString describe(QColor c)
{
    return QStringLiteral("rgb(%1,%2,%3)").arg(c.red()).arg(c.green()).arg(c.blue());
}

/// True when the window shows a fixture frame filling it, the right way up.
bool showsUprightVideo(QQuickWindow* window)
{
    const QImage image = window->grabWindow();
    const int right = image.width() - 20;
    const int bottom = image.height() - 20;
    return isBlue(image.pixelColor(20, 20)) && isYellow(image.pixelColor(right, bottom)) &&
           !isBlue(image.pixelColor(right, 20)) && !isBlue(image.pixelColor(20, bottom));
}

/// Mean absolute difference per channel between two images of the same size.
double meanDifference(const QImage& a, const QImage& b)
{
    const QImage x = a.convertToFormat(QImage::Format_RGB32);
    const QImage y = b.convertToFormat(QImage::Format_RGB32);
    double total = 0;
    for (int row = 0; row < x.height(); ++row) {
        const auto* p = reinterpret_cast<const QRgb*>(x.constScanLine(row));
        const auto* q = reinterpret_cast<const QRgb*>(y.constScanLine(row));
        for (int col = 0; col < x.width(); ++col)
            total += qAbs(qRed(p[col]) - qRed(q[col])) + qAbs(qGreen(p[col]) - qGreen(q[col])) +
                     qAbs(qBlue(p[col]) - qBlue(q[col]));
    }
    return total / (3.0 * x.width() * x.height());
}

/// libmpv's playback position, read from the core itself.
double playbackPosition(PlaybackEngine& engine)
{
    double seconds = -1;
    mpv_get_property(engine.decoder()->handle(), "time-pos", MPV_FORMAT_DOUBLE, &seconds);
    return seconds;
}

/// Counts the frames a window presents; the render thread reports them.
class FrameCounter
{
public:
    explicit FrameCounter(QQuickWindow* window)
    {
        m_connection = QObject::connect(
            window, &QQuickWindow::frameSwapped, window, [this] { ++m_frames; },
            Qt::DirectConnection);
    }
    ~FrameCounter() { QObject::disconnect(m_connection); }

    int count() const { return m_frames; }
    int take() { return m_frames.exchange(0); }

private:
    std::atomic<int> m_frames = 0;
    QMetaObject::Connection m_connection;
};

/// Threads libmpv's core runs; none once every handle of every core is gone.
int libmpvThreadCount()
{
    int count = 0;
    const QDir tasks(QStringLiteral("/proc/self/task"));
    for (const QString& task : tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QFile comm(tasks.filePath(task + QStringLiteral("/comm")));
        if (comm.open(QIODevice::ReadOnly) && comm.readAll().startsWith("mpv/"))
            ++count;
    }
    return count;
}

/// Plays clip10 (30 frames per second, sound included) in the window until it has moved on.
void startClip(TestPlayer& player)
{
    player.open(fixtureUrl(QStringLiteral("clip10.mp4")));
    QCOMPARE(player.engine().state().kind(), PlayerState::Kind::Playing);
    QTRY_VERIFY_WITH_TIMEOUT(playbackPosition(player.engine()) > 0.5, 5000);
}

} // namespace

class RenderTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        freshStart();
        failOnWarnings();
    }

    void pictureIsTheVideoRightWayUpAndSurvivesAResize()
    {
        auto player = std::make_unique<TestPlayer>(QSize(640, 360));
        PlaybackEngine* engine = &player->engine();
        startClip(*player);
        engine->pause();
        QCoro::waitFor(engine->seek(3.0));
        QTest::qWait(500);

        QImage before = player->window()->grabWindow();
        QCOMPARE(before.size(), QSize(640, 360));
        QVERIFY2(isBlue(before.pixelColor(20, 20)),
                 qPrintable(describe(before.pixelColor(20, 20))));
        QVERIFY2(isYellow(before.pixelColor(620, 340)),
                 qPrintable(describe(before.pixelColor(620, 340))));
        // Not mirrored either way: the other corners hold neither block.
        QVERIFY(!isBlue(before.pixelColor(620, 20)) && !isBlue(before.pixelColor(20, 340)));
        QVERIFY(!isYellow(before.pixelColor(20, 340)));

        // Paused: the new size gets the same frame, drawn afresh.
        player->window()->resize(960, 540);
        QTRY_COMPARE(player->window()->size(), QSize(960, 540));
        QTest::qWait(500);
        const QImage after = player->window()->grabWindow();
        QCOMPARE(after.size(), QSize(960, 540));
        QVERIFY(isBlue(after.pixelColor(30, 30)));
        QVERIFY(isYellow(after.pixelColor(930, 510)));
        const double difference = meanDifference(after.scaled(640, 360), before);
        QVERIFY2(difference < 8.0, qPrintable(QString::number(difference)));
        QCOMPARE(engine->state().kind(), PlayerState::Kind::Paused);

        player.reset();
    }

    void windowDrawsOnlyWhenTheVideoHasANewFrame()
    {
        auto player = std::make_unique<TestPlayer>(QSize(640, 360));
        PlaybackEngine* engine = &player->engine();
        startClip(*player);
        FrameCounter frames(player->window());

        // Playing: at most one frame per video frame shown meanwhile (however fast the machine
        // plays), give or take the frame in flight at either end.
        QTest::qWait(300);
        frames.take();
        const double start = playbackPosition(*engine);
        QTest::qWait(2000);
        const int playingFrames = frames.take();
        const double videoFrames = (playbackPosition(*engine) - start) * 30;
        QVERIFY2(videoFrames > 10, qPrintable(QString::number(videoFrames)));
        QVERIFY2(playingFrames <= videoFrames + 2,
                 qPrintable(QStringLiteral("%1 frames for %2 video frames")
                                .arg(playingFrames)
                                .arg(videoFrames)));
        QVERIFY2(playingFrames >= videoFrames / 3, qPrintable(QString::number(playingFrames)));

        // Paused: nothing changes, so nothing is drawn.
        engine->pause();
        QTest::qWait(500);
        frames.take();
        QTest::qWait(2000);
        QCOMPARE(frames.take(), 0);

        // A seek while paused shows the frame it lands on, and that is all.
        const QImage before = player->window()->grabWindow();
        frames.take();
        QCoro::waitFor(engine->seek(6.0));
        QTRY_VERIFY_WITH_TIMEOUT(frames.count() > 0, 5000);
        QTest::qWait(1000);
        // At most the key frame, the frame the seek aims at, and the redraw the engine asks for.
        QVERIFY2(frames.count() <= 3, qPrintable(QString::number(frames.count())));
        const QImage after = player->window()->grabWindow();
        QVERIFY2(meanDifference(before, after) > 2.0,
                 qPrintable(QString::number(meanDifference(before, after))));

        // Asked to, the window draws the current frame again.
        frames.take();
        player->view()->refresh();
        QTRY_COMPARE(frames.count(), 1);

        player.reset();
    }

    // Picture in picture lends the very video item to a floating window and takes it back: the
    // picture is upright and moving on both sides, a paused frame survives both moves, a silent
    // file (which libmpv would end when its video output closes) plays on, and fifty round
    // trips leave it playing.
    void pictureInPictureMovesTheVideoAndBack()
    {
        auto player = std::make_unique<TestPlayer>(QSize(640, 360));
        PlaybackEngine& engine = player->engine();
        MPVVideoView* view = player->view();
        QQmlEngine qml;
        QQmlComponent floating(&qml);
        floating.setData("import QtQuick\nWindow { color: \"black\"\n"
                         "Item { objectName: \"videoHost\"; anchors.fill: parent } }",
                         QUrl());
        PiPManager& pip = *engine.pip();
        pip.setWindowComponent(&floating);
        pip.setVideoView(view);
        // The test window sizes its video by hand; the floating one is made to do the same.
        QObject::connect(&pip, &PiPManager::floatingWindowChanged, view, [&](QQuickWindow* window) {
            view->setSize(window ? window->size() : player->window()->size());
        });

        startClip(*player);
        QQuickWindow* main = player->window();
        QVERIFY(showsUprightVideo(main));
        // The video shows upright where it went, and a floating window it left is gone.
        auto moves = [&](QQuickWindow* to, QPointer<QQuickWindow> from) {
            QTRY_VERIFY_WITH_TIMEOUT(view->window() == to && view->hasRenderContext(), 5000);
            QTRY_VERIFY_WITH_TIMEOUT(showsUprightVideo(to), 5000);
            if (from != main && from != to)
                QTRY_VERIFY(!from);
        };
        auto isMoving = [&] {
            const double position = playbackPosition(engine);
            return QTest::qWaitFor([&] { return playbackPosition(engine) > position + 0.3; }, 5000);
        };
        pip.enterPiP();
        QQuickWindow* window = pip.floatingWindow();
        QVERIFY(window && window->flags().testFlag(Qt::WindowStaysOnTopHint));
        QCOMPARE(pip.lockedAspectRatio(), std::optional(QSizeF(640, 360)));
        moves(window, main);
        QVERIFY(isMoving());
        pip.exitPiP();
        moves(main, window);
        QVERIFY(isMoving());

        // Paused, each side shows the frame it stopped on.
        engine.pause();
        QTest::qWait(300);
        const QImage stopped = main->grabWindow();
        pip.enterPiP();
        moves(pip.floatingWindow(), main);
        QVERIFY2(meanDifference(pip.floatingWindow()->grabWindow(),
                                stopped.scaled(pip.floatingWindow()->size() *
                                               pip.floatingWindow()->devicePixelRatio())) < 12,
                 "the paused frame changed on the way out");
        pip.exitPiP();
        moves(main, main);
        QVERIFY(meanDifference(main->grabWindow(), stopped) < 6);

        // A file without sound keeps playing across the moves.
        player->open(fixtureUrl(QStringLiteral("late-start.mkv")));
        for (int round = 0; round < 50; ++round) {
            pip.toggle();
            QTest::qWait(round % 7 * 15);
        }
        QVERIFY(!pip.isActive());
        moves(main, main);
        QCOMPARE(engine.state().kind(), PlayerState::Kind::Playing);
        QVERIFY(isMoving());
        player.reset();
    }

    void decoderMayGoBeforeTheWindow()
    {
        // Every core of the earlier tests has ended with its windows.
        QTRY_COMPARE_WITH_TIMEOUT(libmpvThreadCount(), 0, 5000);
        auto player = std::make_unique<TestPlayer>(QSize(640, 360));
        startClip(*player);

        // The item lets go of its render context, then of the core, which ends; the window
        // still draws.
        player->endPlayerFirst();
        QTRY_VERIFY_WITH_TIMEOUT(!player->view()->hasRenderContext(), 5000);
        QTRY_COMPARE_WITH_TIMEOUT(libmpvThreadCount(), 0, 5000);
        QCOMPARE(player->window()->grabWindow().size(), QSize(640, 360));
        player.reset();
    }
};

VELMAR_TEST_MAIN(RenderTest)
#include "tst_render.moc"
