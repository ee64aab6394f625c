// The playlist: folder scans on real folders, stepping, and the remove/move index rules; then
// the engine playing through it on real media, past broken items.
#include "app/OpeningRule.h"
#include "app/UserCommands.h"
#include "engine/PlaybackEngine.h"
#include "features/playlist/FolderScanner.h"
#include "features/playlist/PlaylistManager.h"
#include "support/TestSupport.h"

#include <QCoroTask>
#include <QProcess>
#include <unistd.h>

using namespace velmar::test;

namespace {

void touch(const QString& path)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    file.open(QIODevice::WriteOnly);
}

QStringList titles(const PlaylistManager& playlist)
{
    QStringList names;
    for (const PlaylistItem& item : playlist.items())
        names << item.title;
    return names;
}

PlaylistManager* filled(QObject* parent, const QStringList& names)
{
    auto* playlist = new PlaylistManager(parent);
    for (const QString& name : names)
        playlist->add(
            QUrl::fromLocalFile(QStringLiteral("/media/") + name + QStringLiteral(".mp4")));
    return playlist;
}

} // namespace

class PlaylistTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        freshStart();
        failOnWarnings();
    }

    void folderScansFindVideosInNaturalOrder()
    {
        QTemporaryDir dir;
        const QString root = dir.path();
        touch(root + QStringLiteral("/b.MKV"));
        touch(root + QStringLiteral("/a.mp4"));
        touch(root + QStringLiteral("/.hidden.mp4"));
        touch(root + QStringLiteral("/notes.txt"));
        touch(root + QStringLiteral("/sub/c.webm"));
        touch(root + QStringLiteral("/.secret/d.mp4"));
        touch(root + QStringLiteral("/z/file10.mkv"));
        touch(root + QStringLiteral("/file2.mkv"));
        // A link back to the root must not send the scan round in circles.
        QVERIFY(QFile::link(root, root + QStringLiteral("/sub/loop")));

        PlaylistManager playlist;
        QCoro::waitFor(playlist.addFolder(QUrl::fromLocalFile(root)));
        QCOMPARE(titles(playlist),
                 (QStringList{QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c"),
                              QStringLiteral("file2"), QStringLiteral("file10")}));
        QCOMPARE(playlist.currentIndex(), std::nullopt);
        QCOMPARE(playlist.items()[2].url,
                 QUrl::fromLocalFile(root + QStringLiteral("/sub/c.webm")));

        // Nothing to find, or no folder at all: nothing added, nothing reported.
        QCoro::waitFor(
            playlist.addFolder(QUrl::fromLocalFile(root + QStringLiteral("/.secret/x"))));
        QCOMPARE(playlist.items().size(), 5);
    }

    void unreadableFoldersArePassedOver()
    {
        QTemporaryDir dir;
        const QString root = dir.path();
        touch(root + QStringLiteral("/open/one.mp4"));
        touch(root + QStringLiteral("/locked/two.mp4"));
        touch(root + QStringLiteral("/three.mkv"));
        const auto readable = QFileDevice::ReadOwner | QFileDevice::ExeOwner |
                              QFileDevice::WriteOwner | QFileDevice::ReadOther |
                              QFileDevice::ExeOther;
        for (const QString& folder : {root, root + QStringLiteral("/open")})
            QFile::setPermissions(folder, readable);
        QFile::setPermissions(root + QStringLiteral("/locked"), QFileDevice::Permissions());

        // Permissions do not stop root, so the scan runs as an ordinary user when we are root.
        const QString tool = QCoreApplication::applicationDirPath() + QStringLiteral("/scan_tool");
        QProcess scan;
        if (geteuid() == 0)
            scan.start(QStringLiteral("setpriv"),
                       {QStringLiteral("--reuid=65534"), QStringLiteral("--regid=65534"),
                        QStringLiteral("--clear-groups"), tool, root});
        else
            scan.start(tool, {root});
        QVERIFY(scan.waitForFinished(10000));
        QCOMPARE(scan.exitCode(), 0);
        const QStringList found = QString::fromUtf8(scan.readAllStandardOutput())
                                      .split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        QCOMPARE(found, (QStringList{root + QStringLiteral("/open/one.mp4"),
                                     root + QStringLiteral("/three.mkv")}));
        QFile::setPermissions(root + QStringLiteral("/locked"), readable);
    }

    void steppingHasNoWrapAround()
    {
        PlaylistManager empty;
        QVERIFY(!empty.hasNext());
        QCOMPARE(empty.next(), std::nullopt);

        auto* playlist = filled(this, {QStringLiteral("A"), QStringLiteral("B")});
        QVERIFY(playlist->hasNext());
        QCOMPARE(playlist->next()->fileName(), QStringLiteral("A.mp4"));
        QCOMPARE(playlist->currentIndex(), 0);
        QCOMPARE(playlist->previous(), std::nullopt);
        QCOMPARE(playlist->next()->fileName(), QStringLiteral("B.mp4"));
        QVERIFY(!playlist->hasNext());
        QCOMPARE(playlist->next(), std::nullopt);
        QCOMPARE(playlist->currentIndex(), 1);
        QCOMPARE(playlist->play(-1), std::nullopt);
        QCOMPARE(playlist->play(2), std::nullopt);
        QCOMPARE(playlist->play(0)->fileName(), QStringLiteral("A.mp4"));
        playlist->updateCurrentDuration(42.0);
        QCOMPARE(playlist->items()[0].duration, std::optional<double>(42.0));

        playlist->add(playlist->items()[0].url); // the same file twice is two entries
        QVERIFY(playlist->items()[2].id != playlist->items()[0].id);
        playlist->clear();
        QVERIFY(playlist->items().isEmpty());
        QCOMPARE(playlist->currentIndex(), std::nullopt);
    }

    void removeAndMoveKeepTheIndexNumber()
    {
        const QStringList abcd{QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C"),
                               QStringLiteral("D")};
        auto* playlist = filled(this, abcd);
        playlist->play(2); // C
        playlist->remove({0});
        QCOMPARE(playlist->currentIndex(), 2);
        QCOMPARE(playlist->currentItem()->title, QStringLiteral("D"));

        playlist = filled(this, {QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C")});
        playlist->play(2);
        playlist->remove({0}); // index 2 now lies past the end
        QCOMPARE(playlist->currentIndex(), std::nullopt);

        playlist = filled(this, abcd);
        playlist->play(1);
        playlist->remove({1});
        QCOMPARE(playlist->currentIndex(), std::nullopt);
        QCOMPARE(titles(*playlist),
                 (QStringList{QStringLiteral("A"), QStringLiteral("C"), QStringLiteral("D")}));

        playlist = filled(this, abcd);
        playlist->play(0);
        playlist->move({0}, 3); // A moves before D
        QCOMPARE(titles(*playlist), (QStringList{QStringLiteral("B"), QStringLiteral("C"),
                                                 QStringLiteral("A"), QStringLiteral("D")}));
        QCOMPARE(playlist->currentIndex(), 0);
        QCOMPARE(playlist->currentItem()->title, QStringLiteral("B"));
        playlist->move({3}, 0);
        QCOMPARE(titles(*playlist), (QStringList{QStringLiteral("D"), QStringLiteral("B"),
                                                 QStringLiteral("C"), QStringLiteral("A")}));
    }

    void theEngineAdvancesAtTheEndOfEachItem()
    {
        TestPlayer player;
        PlaybackEngine& engine = player.engine();
        PlaylistManager& playlist = *engine.playlist();
        playlist.add(fixtureUrl(QStringLiteral("audio-only.m4a")));
        playlist.add(fixtureUrl(QStringLiteral("tracks.mkv")));
        playlist.add(fixtureUrl(QStringLiteral("audio-only.m4a")));

        player.open(*playlist.play(0));
        QVERIFY(playlist.items()[0].duration.has_value());
        QCoro::waitFor(engine.seek(engine.duration() - 0.3));
        // The end of the first item opens the second one.
        QTRY_COMPARE_WITH_TIMEOUT(playlist.currentIndex(), std::optional<int>(1), 5000);
        QTRY_COMPARE_WITH_TIMEOUT(engine.mediaTitle(), QStringLiteral("tracks"), 5000);
        QTRY_COMPARE(engine.state().kind(), PlayerState::Kind::Playing);
        QVERIFY(!engine.isAtEnd());

        QCoro::waitFor(engine.playPrevious());
        QCOMPARE(playlist.currentIndex(), 0);
        QCoro::waitFor(engine.playNext());
        QCoro::waitFor(engine.playNext());
        QCOMPARE(playlist.currentIndex(), 2);
        QCoro::waitFor(engine.playNext()); // nothing after the last: nothing happens
        QCOMPARE(playlist.currentIndex(), 2);

        // At the end of the last item the engine stays paused at the end.
        QCoro::waitFor(engine.seek(engine.duration() - 0.3));
        QTRY_VERIFY_WITH_TIMEOUT(engine.isAtEnd(), 30000);
        QCOMPARE(engine.state().kind(), PlayerState::Kind::Paused);
        QCOMPARE(playlist.currentIndex(), 2);
    }

    // A folder of broken files shows each error briefly and goes on; a long run of them stops
    // the playlist on the last error instead of trying every file.
    void brokenItemsArePassedOverUntilTooManyFail()
    {
        TestPlayer player;
        PlaybackEngine& engine = player.engine();
        player.expectLibmpvErrors();
        QVERIFY(player.show());
        for (const int broken : {3, 11}) {
            QTemporaryDir folder;
            for (int i = 1; i <= broken; ++i)
                touch(folder.filePath(QStringLiteral("broken %1.mp4").arg(i)));
            QFile::copy(fixturePath(QStringLiteral("clip10.mp4")),
                        folder.filePath(QStringLiteral("working.mp4")));
            QList<PlayerState> states;
            const auto connection = connect(&engine, &PlaybackEngine::stateChanged, this,
                                            [&] { states << engine.state(); });
            QCoro::waitFor(OpeningRule::open(&engine, &player.commands(),
                                             {QUrl::fromLocalFile(folder.path())}));
            if (broken < 10) {
                QTRY_COMPARE_WITH_TIMEOUT(engine.mediaTitle(), QStringLiteral("working"), 10000);
                QTRY_COMPARE(engine.state().kind(), PlayerState::Kind::Playing);
                QCOMPARE(std::count_if(states.begin(), states.end(),
                                       [](const PlayerState& s) {
                                           return s.kind() == PlayerState::Kind::Error;
                                       }),
                         broken);
            } else {
                QTRY_COMPARE_WITH_TIMEOUT(engine.playlist()->currentIndex(), 9, 15000);
                QTRY_COMPARE(engine.state().kind(), PlayerState::Kind::Error);
                QTest::qWait(1500); // and it stays there
                QCOMPARE(engine.playlist()->currentIndex(), 9);
                QVERIFY(engine.state().message().contains(QStringLiteral("broken 10.mp4")));

                // A broken file opened on its own keeps its error: the playlist is not its.
                const QString alone = folder.filePath(QStringLiteral("alone.mkv"));
                touch(alone);
                QCoro::waitFor(engine.load(QUrl::fromLocalFile(alone)));
                QTest::qWait(1500);
                QCOMPARE(engine.playlist()->currentIndex(), 9);
                QVERIFY(engine.state().message().contains(QStringLiteral("alone.mkv")));
            }
            disconnect(connection);
        }
    }

    // The end of a file arriving while the next one opens belongs to the old file: it neither
    // skips the new one nor stops it half way.
    void theEndOfAFileDoesNotReachTheNextOne()
    {
        TestPlayer player;
        // When the end does arrive first, the advance it starts is cut short by the open
        // below, and libmpv complains about the read it abandoned.
        player.expectLibmpvErrors();
        PlaybackEngine& engine = player.engine();
        PlaylistManager& playlist = *engine.playlist();
        for (const char* name : {"clip10.mp4", "clip30.mp4", "clip60.mp4"})
            playlist.add(fixtureUrl(QString::fromLatin1(name)));
        // The second item has a place and settings to come back to.
        player.open(*playlist.play(1));
        QCoro::waitFor(engine.seek(12.0));
        engine.adjustments()->setRotation(180);
        for (const int delay : {0, 40, 90}) {
            player.open(*playlist.play(0));
            engine.abLoop()->markA(engine.currentTime());
            QCoro::waitFor(engine.seek(engine.duration() - 0.1));
            QTest::qWait(delay);
            player.open(*playlist.play(1));
            QTest::qWait(400); // a late report of the first file's end would land by now
            QCOMPARE(playlist.currentIndex(), 1);
            QCOMPARE(engine.state().kind(), PlayerState::Kind::Playing);
            QVERIFY(qAbs(engine.duration() - 30.0) < 0.5);
            QVERIFY(engine.currentTime() > 11.5);
            QCOMPARE(engine.videoRotation(), 180);
            QCOMPARE(engine.abLoop()->pointA(), std::nullopt);
        }
    }
};

VELMAR_TEST_MAIN(PlaylistTest)
#include "tst_playlist.moc"
