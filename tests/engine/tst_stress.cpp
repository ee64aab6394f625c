// The player under strain: thousands of commands while the video renders, files opened faster
// than libmpv opens them, and a library that another program keeps locked. Nothing may hang or
// crash, the last request must win, and nothing handed to the library may be lost. (Files
// handed over by later launches: tests/e2e/handover_storm.sh.)
#include "app/Player.h"
#include "app/UserCommands.h"
#include "engine/PlaybackEngine.h"
#include "features/bookmark/BookmarkManager.h"
#include "features/playlist/PlaybackHistoryManager.h"
#include "features/track/TrackManager.h"
#include "infrastructure/persistence/Library.h"
#include "infrastructure/persistence/SQLiteDatabase.h"
#include "support/TestSupport.h"

#include <QCoroTask>
#include <QProcess>
#include <QRandomGenerator>
#include <QThread>

using namespace velmar::test;
using Kind = PlayerState::Kind;

namespace {

/// Another program holding the library's write lock, through the sqlite3 tool.
class LockHolder
{
public:
    explicit LockHolder(const QString& path)
    {
        m_process.start(QStringLiteral("sqlite3"), {path});
        m_process.waitForStarted();
        m_process.write("BEGIN EXCLUSIVE;\nSELECT 'locked';\n");
        while (!m_process.readAllStandardOutput().contains("locked") &&
               m_process.waitForReadyRead(5000)) {
        }
    }
    ~LockHolder() { release(); }
    void release()
    {
        if (m_process.state() == QProcess::NotRunning)
            return;
        m_process.write("COMMIT;\n.quit\n");
        m_process.waitForFinished(5000);
    }

private:
    QProcess m_process;
};

} // namespace

class StressTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        freshStart();
        failOnWarnings();
    }

    void hammerTheEngineWhileRendering()
    {
        TestPlayer player;
        PlaybackEngine& engine = player.engine();
        player.open(fixtureUrl(QStringLiteral("clip30.mp4")));
        QRandomGenerator random(20261122);
        const std::function<void(double)> commands[] = {
            [&](double) { player.commands().togglePlayPause(); },
            [&](double target) { engine.seek(target); },
            [&](double target) { player.commands().seekBy(target - 15.0); },
            [&](double target) { engine.scrubBegan(), engine.scrub(target); },
            [&](double target) { engine.scrub(target), engine.scrubEnded(target); },
        };
        for (int i = 0; i < 2000; ++i) {
            commands[random.bounded(5)](random.bounded(30.0));
            // A thousand commands a second: far beyond any hand, within what libmpv queues.
            QTest::qWait(1);
        }
        // It still answers: left playing, the position advances.
        engine.scrubEnded(1.0);
        QTRY_VERIFY(engine.state().isActive());
        if (engine.state().kind() != Kind::Playing)
            engine.play();
        const double before = engine.currentTime();
        QTRY_VERIFY_WITH_TIMEOUT(engine.currentTime() != before, 5000);
    }

    // A user clicking through files faster than they open: good, broken and short ones in a
    // burst. The last one opens with its own duration, tracks and resume point.
    void aBurstOfLoadsEndsOnTheLastFile()
    {
        const QUrl last = fixtureUrl(QStringLiteral("clip60.mp4"));
        {
            TestPlayer player;
            player.open(last);
            QCoro::waitFor(player.engine().seek(33.0));
        }
        TestPlayer player;
        PlaybackEngine& engine = player.engine();
        QVERIFY(player.show());
        player.expectLibmpvErrors();
        const QList<QUrl> burst = {
            fixtureUrl(QStringLiteral("tracks.mkv")),  fixtureUrl(QStringLiteral("empty.mp4")),
            fixtureUrl(QStringLiteral("clip10.mp4")),  fixtureUrl(QStringLiteral("truncated.mp4")),
            fixtureUrl(QStringLiteral("pq.mkv")),      fixtureUrl(QStringLiteral("still.png")),
            fixtureUrl(QStringLiteral("no-such.mp4")), last};
        QRandomGenerator random(1124);
        for (int round = 0; round < 5; ++round) {
            for (const QUrl& url : burst) {
                engine.load(url);
                QThread::msleep(ulong(random.bounded(40))); // libmpv's reports pile up
                QTest::qWait(random.bounded(40));
            }
            QTRY_COMPARE_WITH_TIMEOUT(engine.state().kind(), Kind::Playing, 10000);
            QCOMPARE(engine.currentURL(), last);
            QVERIFY(qAbs(engine.duration() - 60.0) < 0.5);
            QVERIFY2(engine.currentTime() > 32.5,
                     qPrintable(QString::number(engine.currentTime())));
            QTRY_COMPARE(engine.tracks()->audioTracks().size(), 1);
            QCOMPARE(engine.tracks()->subtitleTracks().size(), 0);
            QCoro::waitFor(engine.seek(33.0)); // the next round resumes there again
        }
    }

    // Another program holds the library's write lock for ten seconds while files are opened,
    // places left and bookmarks added: the window never stalls, and everything lands once the
    // lock is gone.
    void aLockedLibraryKeepsTheWindowResponsiveAndLosesNothing()
    {
        const QList<QUrl> files = {fixtureUrl(QStringLiteral("clip30.mp4")),
                                   fixtureUrl(QStringLiteral("clip60.mp4"))};
        {
            TestPlayer player;
            PlaybackEngine& engine = player.engine();
            player.open(files.at(0));
            QVERIFY(player.player().library().waitForPendingWrites(std::chrono::seconds(5)));
            auto lock = std::make_unique<LockHolder>(libraryPath());
            QElapsedTimer locked;
            locked.start();
            const qint64 allowed = GuiHeartbeat::allowance(100);
            GuiHeartbeat heartbeat;
            for (int round = 0; round < 6; ++round) {
                player.open(files.at(round % 2));
                engine.pause();
                QCoro::waitFor(engine.seek(6.0 + round));
                player.commands().addBookmark();
            }
            QTRY_VERIFY(std::all_of(engine.bookmarks()->bookmarks().begin(),
                                    engine.bookmarks()->bookmarks().end(),
                                    [](const Bookmark& b) { return b.thumbnailData.has_value(); }));
            QTest::qWait(int(std::max<qint64>(0, 10000 - locked.elapsed()))); // still locked
            QVERIFY2(heartbeat.longestStall() < allowed,
                     qPrintable(QStringLiteral("%1 ms").arg(heartbeat.longestStall())));
            lock->release();
            QVERIFY(player.player().library().waitForPendingWrites(std::chrono::seconds(10)));
        } // leaves clip60 at 11 s
        // The next session finds every bookmark, picture included, and every place.
        TestPlayer player;
        QTRY_COMPARE(player.engine().bookmarks()->bookmarks().size(), 6);
        for (const Bookmark& bookmark : player.engine().bookmarks()->bookmarks())
            QVERIFY(bookmark.thumbnailData.has_value());
        QCOMPARE(player.engine().history()->resumePosition(files.at(0)), std::optional(10.0));
        QCOMPARE(player.engine().history()->resumePosition(files.at(1)), std::optional(11.0));
    }
};

VELMAR_TEST_MAIN(StressTest)
#include "tst_stress.moc"
