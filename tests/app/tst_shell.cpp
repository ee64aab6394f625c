// The application shell on real parts: the opening rule over real folders and fixtures, the
// recent-files menu from a real history, the window frame across two launches, full screen and
// its way back, and the settings window's models. (Hand-overs between launches:
// tests/e2e/handover_storm.sh.)
#include "app/AppDelegate.h"
#include "app/MainWindowGeometry.h"
#include "app/OpeningRule.h"
#include "app/UserCommands.h"
#include "engine/MPVDecoder.h"
#include "engine/PlaybackEngine.h"
#include "features/playlist/PlaybackHistoryManager.h"
#include "features/playlist/PlaylistManager.h"
#include "features/track/TrackManager.h"
#include "features/window/WindowState.h"
#include "infrastructure/keybinding/KeyBindingManager.h"
#include "infrastructure/keybinding/QtKeyTranslation.h"
#include "infrastructure/mpv/MPVProperties.h"
#include "infrastructure/preferences/Preferences.h"
#include "renderer/RunningApp.h"
#include "support/TestSupport.h"
#include "ui/KeyBindingListModel.h"

#include <QCoroTask>
#include <QQuickItem>
#include <QSignalSpy>
#include <QtQml/qqmlextensionplugin.h>

Q_IMPORT_QML_PLUGIN(VelmarPlugin)

using namespace velmar::test;
using namespace Qt::StringLiterals;
using Kind = PlayerState::Kind;

namespace {

/// A folder with two videos (sorted a, b) and a text file that is not media.
struct MediaFolder
{
    QTemporaryDir dir;

    MediaFolder()
    {
        QFile::copy(fixturePath(QStringLiteral("clip10.mp4")), path(QStringLiteral("b.mp4")));
        QFile::copy(fixturePath(QStringLiteral("clip30.mp4")), path(QStringLiteral("a.mp4")));
        QFile notes(path(QStringLiteral("notes.txt")));
        notes.open(QIODevice::WriteOnly);
    }
    QString path(const QString& name) const { return dir.filePath(name); }
    QUrl url(const QString& name) const { return QUrl::fromLocalFile(path(name)); }
};

QStringList playlistNames(const PlaylistManager& playlist)
{
    QStringList names;
    for (const PlaylistItem& item : playlist.items())
        names << item.url.fileName();
    return names;
}

/// Every item drawn in the tree below `root` (visual children, which QObject children miss).
QList<QQuickItem*> itemTree(QQuickItem* root)
{
    QList<QQuickItem*> items{root};
    for (QQuickItem* child : root->childItems())
        items << itemTree(child);
    return items;
}

void open(TestPlayer& player, const QList<QUrl>& urls)
{
    QCoro::waitFor(OpeningRule::open(&player.engine(), &player.commands(), urls));
}

} // namespace

class ShellTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        freshStart();
        failOnWarnings();
    }

    void openingRuleForFilesAndFolders()
    {
        MediaFolder folder;
        QTemporaryDir other; // no videos in it
        TestPlayer player;
        QVERIFY(player.show());
        PlaybackEngine* engine = &player.engine();
        PlaylistManager& playlist = *engine->playlist();

        // One folder: its media, sorted, and the first one plays.
        open(player, {QUrl::fromLocalFile(folder.dir.path())});
        QCOMPARE(playlistNames(playlist), (QStringList{u"a.mp4"_s, u"b.mp4"_s}));
        QCOMPARE(playlist.currentIndex(), std::optional(0));
        QCOMPARE(engine->currentURL(), folder.url(QStringLiteral("a.mp4")));
        QCOMPARE(engine->state().kind(), Kind::Playing);

        // One file: it plays, the playlist stays as it was.
        open(player, {fixtureUrl(QStringLiteral("tracks.mkv"))});
        QCOMPARE(engine->currentURL(), fixtureUrl(QStringLiteral("tracks.mkv")));
        QCOMPARE(playlistNames(playlist), (QStringList{u"a.mp4"_s, u"b.mp4"_s}));

        // Two files, in the order given.
        open(player, {folder.url(QStringLiteral("b.mp4")), folder.url(QStringLiteral("a.mp4"))});
        QCOMPARE(playlistNames(playlist), (QStringList{u"b.mp4"_s, u"a.mp4"_s}));
        QCOMPARE(engine->currentURL(), folder.url(QStringLiteral("b.mp4")));

        // A folder with a file: the folder is skipped.
        open(player,
             {QUrl::fromLocalFile(folder.dir.path()), fixtureUrl(QStringLiteral("clip10.mp4"))});
        QCOMPARE(playlistNames(playlist), QStringList{u"clip10.mp4"_s});
        QCOMPARE(engine->currentURL(), fixtureUrl(QStringLiteral("clip10.mp4")));

        // Only folders among several items: nothing changes.
        open(player, {QUrl::fromLocalFile(folder.dir.path()), QUrl::fromLocalFile(other.path())});
        QCOMPARE(playlistNames(playlist), QStringList{u"clip10.mp4"_s});
        QCOMPARE(engine->currentURL(), fixtureUrl(QStringLiteral("clip10.mp4")));

        // A folder without media empties the playlist, says so, and leaves the file alone.
        open(player, {QUrl::fromLocalFile(other.path())});
        QVERIFY(playlist.items().isEmpty());
        QCOMPARE(player.osdText(),
                 u"No videos in \u201c%1\u201d"_s.arg(QDir(other.path()).dirName()));
        QCOMPARE(engine->currentURL(), fixtureUrl(QStringLiteral("clip10.mp4")));

        // A subtitle file joins the video that plays instead of replacing it. (Subtitles are
        // kept apart from the videos, so that libmpv does not find them itself.)
        const QString srt = other.filePath(QStringLiteral("extra.srt"));
        QFile(fixturePath(QStringLiteral("embedded-subtitles.srt"))).copy(srt);
        open(player, {QUrl::fromLocalFile(srt)});
        QCOMPARE(engine->currentURL(), fixtureUrl(QStringLiteral("clip10.mp4")));
        QTRY_COMPARE(player.osdText(), u"Subtitle loaded: extra.srt"_s);

        // Subtitles dropped together with a folder, or with several videos, join the video
        // that starts.
        const QUrl dropped = QUrl::fromLocalFile(other.filePath(u"dropped.srt"_s));
        QFile(srt).copy(dropped.toLocalFile());
        const QList<std::pair<QList<QUrl>, QString>> drops = {
            {{QUrl::fromLocalFile(folder.dir.path()), dropped}, u"a.mp4"_s},
            {{folder.url(u"b.mp4"_s), dropped, folder.url(u"a.mp4"_s)}, u"b.mp4"_s}};
        for (const auto& [drop, starting] : drops) {
            open(player, drop);
            QCOMPARE(engine->currentURL(), folder.url(starting));
            QTRY_COMPARE(engine->tracks()->subtitleTracks().size(), 1);
            QTRY_COMPARE(player.osdText(), u"Subtitle loaded: dropped.srt"_s);
        }

        // Two folders opened in quick succession: the later one wins, and plays once.
        QSignalSpy loads(engine, &PlaybackEngine::currentURLChanged);
        OpeningRule::open(engine, &player.commands(), {QUrl::fromLocalFile(other.path())});
        open(player, {QUrl::fromLocalFile(folder.dir.path())});
        QCOMPARE(playlistNames(playlist), (QStringList{u"a.mp4"_s, u"b.mp4"_s}));
        QTest::qWait(300);
        QCOMPARE(loads.count(), 1);
        engine->pause();
    }

    void recentFilesMenuFollowsTheHistory()
    {
        RunningApp running;
        QVERIFY(running.start());
        AppDelegate& app = *running.app;

        const QVariantList none = app.recentMenuEntries();
        QCOMPARE(none.size(), 1);
        QCOMPARE(none.first().toMap().value(u"title"_s).toString(),
                 QStringLiteral("No Recent Files"));
        QCOMPARE(none.first().toMap().value(u"enabled"_s).toBool(), false);

        auto* menu = running.window->findChild<QObject*>(QStringLiteral("playerMenu"));
        auto* recent = running.window->findChild<QObject*>(QStringLiteral("recentMenu"));
        QVERIFY(menu && recent);
        auto menuTitles = [&] {
            QMetaObject::invokeMethod(menu, "open");
            QStringList titles;
            const int count = recent->property("count").toInt();
            for (int i = 0; i < count; ++i) {
                QQuickItem* item = nullptr;
                QMetaObject::invokeMethod(recent, "itemAt", Q_RETURN_ARG(QQuickItem*, item),
                                          Q_ARG(int, i));
                titles << item->property("text").toString() +
                              (item->property("enabled").toBool() ? QString() : u" (disabled)"_s);
            }
            QMetaObject::invokeMethod(menu, "close");
            return titles;
        };
        QCOMPARE(menuTitles(), QStringList{u"No Recent Files (disabled)"_s});

        PlaybackHistoryManager& history = *app.engine()->history();
        for (int i = 1; i <= 12; ++i) {
            history.recordPosition(QUrl::fromLocalFile(QStringLiteral("/videos/film%1.mkv").arg(i)),
                                   QStringLiteral("Film %1").arg(i), 60, 600);
            QTest::qWait(3); // distinct play times, so "newest first" is well defined
        }
        QStringList expected;
        for (int i = 12; i > 2; --i)
            expected << QStringLiteral("Film %1").arg(i);
        QCOMPARE(menuTitles(), expected);
        QCOMPARE(app.recentMenuEntries().first().toMap().value(u"url"_s).toUrl(),
                 QUrl::fromLocalFile(QStringLiteral("/videos/film12.mkv")));
    }

    void windowFrameIsRestoredOnTheNextLaunch()
    {
        Preferences().remove(PreferenceKeys::windowFrame);
        const QRect moved(150, 120, 900, 520);
        {
            RunningApp first;
            QVERIFY(first.start());
            QCOMPARE(first.window->minimumSize(), QSize(480, 270));
            first.window->setGeometry(moved);
            QTRY_COMPARE(first.app->engine()->windowState()->loadSavedFrame(),
                         std::optional(QRectF(moved)));
        }
        RunningApp second;
        QVERIFY(second.start());
        QTRY_COMPARE(second.window->geometry(), moved);
    }

    void fullScreenReturnsToTheWindowedFrame()
    {
        Preferences().remove(PreferenceKeys::windowFrame);
        QQuickWindow window;
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        WindowState state;
        MainWindowGeometry geometry(&window, &state);
        const QRect windowed(300, 250, 800, 450);
        window.setGeometry(windowed);
        QTRY_COMPARE(state.loadSavedFrame(), std::optional(QRectF(windowed)));

        geometry.toggleFullScreen();
        QTRY_VERIFY(state.isFullscreen());
        QCOMPARE(state.priorWindowedFrame(), std::optional(QRectF(windowed)));
        // Moves in full screen are not remembered, even once they have settled.
        QSignalSpy settled(&geometry, &MainWindowGeometry::frameSettled);
        window.setGeometry(100, 100, 1600, 900);
        QVERIFY(settled.wait());
        QCOMPARE(state.loadSavedFrame(), std::optional(QRectF(windowed)));

        geometry.toggleFullScreen();
        QTRY_VERIFY(!state.isFullscreen());
        QTRY_COMPARE(window.geometry(), windowed);

        // Full screen switched by someone else (the window manager) is followed all the same.
        window.showFullScreen();
        QTRY_VERIFY(state.isFullscreen());
        geometry.toggleFullScreen();
        QTRY_COMPARE(window.geometry(), windowed);
        QVERIFY(!state.isFullscreen());
    }

    void keyEditorShowsDesktopKeysAndConflicts()
    {
        Preferences().remove(PreferenceKeys::keyBindings);
        KeyBindingManager manager;
        KeyBindingListModel model;
        model.setManager(&manager);
        QCOMPARE(model.rowCount(), 28);

        auto rowOf = [&](PlayerAction action) {
            for (int row = 0; row < model.rowCount(); ++row) {
                if (manager.bindings().at(row).action == action)
                    return row;
            }
            return -1;
        };
        auto keyText = [&](PlayerAction action) {
            return model.data(model.index(rowOf(action)), KeyBindingListModel::KeyTextRole)
                .toString();
        };
        auto conflict = [&](PlayerAction action) {
            return model.data(model.index(rowOf(action)), KeyBindingListModel::ConflictRole)
                .toString();
        };
        QCOMPARE(keyText(PlayerAction::togglePlayPause), QStringLiteral("Space"));
        QCOMPARE(keyText(PlayerAction::seekForwardLarge), QStringLiteral("Shift+Right"));
        QCOMPARE(keyText(PlayerAction::rotateVideo), QStringLiteral("Ctrl+K"));
        QCOMPARE(keyText(PlayerAction::audioDelayIncrease), QStringLiteral("Meta+]"));
        QCOMPARE(model.data(model.index(0), Qt::DisplayRole).toString(),
                 PlayerActions::displayName(PlayerAction::togglePlayPause));
        for (int row = 0; row < model.rowCount(); ++row)
            QVERIFY(model.data(model.index(row), KeyBindingListModel::ConflictRole)
                        .toString()
                        .isEmpty());

        QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
        QVERIFY(
            !model.record(rowOf(PlayerAction::toggleMute), Qt::Key_Shift, int(Qt::ShiftModifier)));
        QVERIFY(model.record(rowOf(PlayerAction::toggleMute), Qt::Key_K, int(Qt::ControlModifier)));
        QCOMPARE(changed.size(), 1);
        QCOMPARE(keyText(PlayerAction::toggleMute), QStringLiteral("Ctrl+K"));
        QVERIFY(conflict(PlayerAction::toggleMute)
                    .contains(PlayerActions::displayName(PlayerAction::rotateVideo)));
        QVERIFY(conflict(PlayerAction::rotateVideo)
                    .contains(PlayerActions::displayName(PlayerAction::toggleMute)));

        model.resetToDefaults();
        QCOMPARE(keyText(PlayerAction::toggleMute), QStringLiteral("M"));
        QVERIFY(conflict(PlayerAction::rotateVideo).isEmpty());
    }

    void settingsWindowOpensWithItsTabs()
    {
        RunningApp running;
        QVERIFY(running.start());
        running.window->requestActivate();
        QVERIFY(QTest::qWaitForWindowActive(running.window));
        QTest::keyClick(running.window, Qt::Key_Comma, Qt::ControlModifier);
        QQuickWindow* settings = nullptr;
        QTRY_VERIFY((settings = [&]() -> QQuickWindow* {
            for (QWindow* window : QGuiApplication::topLevelWindows()) {
                if (window->title() == QStringLiteral("Settings") && window->isVisible())
                    return qobject_cast<QQuickWindow*>(window);
            }
            return nullptr;
        }()));
        QStringList tabs;
        QQuickItem* list = nullptr;
        for (QQuickItem* item : itemTree(settings->contentItem())) {
            if (item->inherits("QQuickTabButton"))
                tabs << item->property("text").toString();
            if (item->objectName() == u"keyBindingList"_s)
                list = item;
        }
        QCOMPARE(tabs,
                 (QStringList{u"General"_s, u"Playback"_s, u"Appearance"_s, u"Key Bindings"_s}));
        QVERIFY(list);
        QCOMPARE(list->property("count").toInt(), 28);
    }
};

VELMAR_TEST_MAIN(ShellTest)
#include "tst_shell.moc"
