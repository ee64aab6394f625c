// The real main window over a real engine and real media, driven with synthesized mouse, wheel,
// key and drop events, as far as the player view decides what they do.
#include "app/AppDelegate.h"
#include "app/UserCommands.h"
#include "engine/PlaybackEngine.h"
#include "features/bookmark/BookmarkManager.h"
#include "features/filter/FilterManager.h"
#include "features/osd/OSDManager.h"
#include "features/playback/ABLoopManager.h"
#include "features/playlist/PlaylistManager.h"
#include "features/track/TrackManager.h"
#include "features/window/WindowState.h"
#include "infrastructure/keybinding/KeyBindingManager.h"
#include "infrastructure/mpv/MPVDecoder.h"
#include "support/TestSupport.h"
#include "ui/Formats.h"
#include "ui/SymbolIcons.h"

#include <algorithm>
#include <fcntl.h>
#include <mpv/client.h>
#include <QAccessible>
#include <QCoroTask>
#include <QIcon>
#include <QMimeData>
#include <QQuickItem>
#include <QtQml/qqmlextensionplugin.h>
#include <sys/stat.h>
#include <unistd.h>

Q_IMPORT_QML_PLUGIN(VelmarPlugin)

using namespace velmar::test;
using namespace Qt::StringLiterals;
using Kind = PlayerState::Kind;

namespace {

/// The names a screen reader finds on screen, through Qt's accessibility interfaces.
QStringList accessibleNames(QAccessibleInterface* node)
{
    QStringList names;
    if (!node || node->state().invisible)
        return names;
    if (const QString name = node->text(QAccessible::Name); !name.isEmpty())
        names << name;
    for (int i = 0; i < node->childCount(); ++i)
        names << accessibleNames(node->child(i));
    return names;
}

/// The started application with its window drawn, silent, at half volume.
struct RunningApp
{
    std::unique_ptr<AppDelegate> app = std::make_unique<AppDelegate>(libraryPath());
    PlaybackEngine* engine = app->engine();
    QQuickWindow* window = nullptr;
    QQuickItem* view = nullptr;

    bool start()
    {
        engine->decoder()->setMPVString("ao", u"null"_s);
        engine->decoder()->setMPVString("hwdec", u"no"_s);
        if (!app->start({}) || !QTest::qWaitForWindowExposed(app->mainWindow()))
            return false;
        window = app->mainWindow();
        view = item("playerView");
        engine->setVolume(0.5f);
        QQuickItem* video = item("videoView");
        return view && video &&
               QTest::qWaitFor([video] { return video->property("hasRenderContext").toBool(); });
    }
    QQuickItem* item(const char* name) const
    {
        if (auto* found = window->findChild<QQuickItem*>(QString::fromLatin1(name)))
            return found;
        return drawnItem(window->contentItem(), QString::fromLatin1(name));
    }
    /// Items a repeater makes belong to no object, only to the item tree.
    static QQuickItem* drawnItem(QQuickItem* under, const QString& name)
    {
        for (QQuickItem* child : under->childItems()) {
            if (child->objectName() == name)
                return child;
            if (QQuickItem* found = drawnItem(child, name))
                return found;
        }
        return nullptr;
    }
    /// The visible items of that name, wherever they hang in the scene (a Repeater's items
    /// have no QObject parent to find them by).
    QList<QQuickItem*> items(const char* name) const
    {
        QList<QQuickItem*> found;
        QList<QQuickItem*> pending{window->contentItem()};
        while (!pending.isEmpty()) {
            QQuickItem* each = pending.takeLast();
            if (each->objectName() == QLatin1String(name) && each->isVisible())
                found << each;
            pending << each->childItems();
        }
        std::sort(found.begin(), found.end(),
                  [](QQuickItem* a, QQuickItem* b) { return a->x() < b->x(); });
        return found;
    }
    bool shows(const char* name) const { return item(name) && item(name)->isVisible(); }
    /// A scene rectangle of an item.
    QRectF sceneRect(QQuickItem* of) const { return of->mapRectToScene(of->boundingRect()); }
    QString text(const char* name) const { return item(name)->property("text").toString(); }
    bool controlsShown() const { return view->property("controlsShown").toBool(); }
    int sidePanelTab() const { return view->property("sidePanelTab").toInt(); }
    bool guideShown() const { return view->property("shortcutGuideShown").toBool(); }
    Qt::CursorShape cursor() const { return window->cursor().shape(); }
    QPoint center() const { return QPoint(window->width() / 2 - 100, window->height() / 2); }
    QPoint centerOf(const char* name) const
    {
        return item(name)->mapToScene(item(name)->boundingRect().center()).toPoint();
    }
    void click(QPoint at) { QTest::mouseClick(window, Qt::LeftButton, {}, at); }
    /// Clicks the middle of an item as it is drawn: after the next frame, so that a part just
    /// shown or moved has its place.
    void click(const char* name)
    {
        QSignalSpy drawn(window, &QQuickWindow::frameSwapped);
        window->update();
        drawn.wait(2000);
        click(centerOf(name));
    }
    void play(const QString& fixture) { QCoro::waitFor(engine->load(fixtureUrl(fixture))); }
    void moveMouse(QPoint to)
    {
        QCursor::setPos(window->mapToGlobal(to));
        QTest::mouseMove(window, to + QPoint(1, 0));
        QTest::mouseMove(window, to);
    }
    void wheel(QPoint at, int angleDelta)
    {
        QWheelEvent event(at, window->mapToGlobal(at), QPoint(), QPoint(0, angleDelta),
                          Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        // Real notches come with their time; lists ignore a notch that claims none has passed.
        static quint64 timestamp = 0;
        timestamp += 50;
        event.setTimestamp(timestamp);
        QCoreApplication::sendEvent(window, &event);
    }
    void drop(const QList<QUrl>& urls)
    {
        QMimeData data;
        data.setUrls(urls);
        QDragEnterEvent enter(center(), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(window, &enter);
        QDropEvent dropped(center(), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(window, &dropped);
    }
    /// Opens the side panel on a tab and waits until it has slid in.
    bool openTab(int tab)
    {
        view->setProperty("sidePanelTab", tab);
        return QTest::qWaitFor(
            [this] { return item("sidePanel")->x() == window->width() - 280.0; });
    }
    /// The rows a list view shows, top to bottom.
    QList<QQuickItem*> rows(const char* listName) const
    {
        QList<QQuickItem*> found;
        for (QQuickItem* child :
             item(listName)->property("contentItem").value<QQuickItem*>()->childItems()) {
            if (child->isVisible() && child->property("index").isValid())
                found << child;
        }
        std::sort(found.begin(), found.end(),
                  [](QQuickItem* a, QQuickItem* b) { return a->y() < b->y(); });
        return found;
    }
    /// The playlist as drawn: "title" per row, with a "*" on the one marked current.
    QString playlistRows() const
    {
        QStringList texts;
        for (QQuickItem* row : rows("playlistList"))
            texts << row->property("title").toString() +
                         (row->property("isCurrent").toBool() ? u"*"_s : QString());
        return texts.join(u'|');
    }
    QPoint centerOf(QQuickItem* target) const
    {
        return target->mapToScene(target->boundingRect().center()).toPoint();
    }
    void click(QQuickItem* target) { click(centerOf(target)); }
    QString mpvProperty(const char* name) const
    {
        char* value = mpv_get_property_string(engine->decoder()->handle(), name);
        const QString text = QString::fromUtf8(value);
        mpv_free(value);
        return text;
    }
    /// What a screen reader finds on screen, in order.
    QString accessibleText() const
    {
        return accessibleNames(QAccessible::queryAccessibleInterface(window)).join(u'|');
    }
};

} // namespace

class UiTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        freshStart();
        failOnWarnings();
    }

    void everySymbolHasAThemeIcon()
    {
        QIcon::setThemeName(u"Adwaita"_s); // the player's theme where the desktop sets none
        for (const QString& symbol : SymbolIcons::symbols())
            QVERIFY2(QIcon::hasThemeIcon(SymbolIcons::name(symbol)), qPrintable(symbol));
        for (const OSDMessage& message :
             {OSDMessage::volume(0), OSDMessage::volume(0.5f), OSDMessage::seek(1, 2),
              OSDMessage::playbackRate(1), OSDMessage::muted(true), OSDMessage::text({}),
              OSDMessage::paused(), OSDMessage::playing()})
            QVERIFY2(SymbolIcons::symbols().contains(message.icon()), qPrintable(message.icon()));
    }

    void eachStateHasItsScreen()
    {
        RunningApp running;
        QVERIFY(running.start());

        // Idle, with nothing made that nobody asked for yet.
        QVERIFY(running.accessibleText().contains(u"Drop a video file here  \u00b7  Ctrl+O"_s));
        QCOMPARE(QGuiApplication::topLevelWindows().size(), 1);
        QVERIFY(!running.item("shortcutGuideCard"));
        for (const char* name : {"Open File", "Playlist", "Keyboard Shortcuts", "Video player"})
            QVERIFY2(running.accessibleText().contains(QLatin1String(name)), name);
        QVERIFY(!running.accessibleText().contains(u"Image viewer"_s));
        running.click("openFileButton");
        QObject* dialog = running.window->property("openDialog").value<QObject*>();
        QVERIFY(dialog && dialog->property("visible").toBool());
        QMetaObject::invokeMethod(dialog, "close");

        // A load that takes its time says so, a moment later, over the picture.
        QTemporaryDir dir;
        const QByteArray pipe = QFile::encodeName(dir.filePath(u"slow.mp4"_s));
        QCOMPARE(mkfifo(pipe.constData(), 0600), 0);
        running.engine->open(QUrl::fromLocalFile(QFile::decodeName(pipe)));
        QCOMPARE(running.engine->state().kind(), Kind::Loading);
        QVERIFY(!running.shows("loadingText"));
        QTRY_VERIFY(running.shows("loadingText"));
        QVERIFY(running.shows("videoView"));

        // Nothing comes through the pipe: an error, with the engine's message.
        ::close(::open(pipe.constData(), O_WRONLY));
        QTRY_COMPARE_WITH_TIMEOUT(running.engine->state().kind(), Kind::Error, 10000);
        QTRY_VERIFY(running.accessibleText().contains(u"Cannot play \u201cslow.mp4\u201d"_s));
        QVERIFY(!running.shows("loadingText"));

        running.play(u"still.png"_s);
        QVERIFY(running.shows("imageView"));
        QVERIFY(running.accessibleText().contains(u"Image viewer"_s));
    }

    void controlsFollowTheMouseAndClicks()
    {
        RunningApp running;
        QVERIFY(running.start());
        running.play(u"clip30.mp4"_s);

        running.moveMouse(running.center());
        QVERIFY(running.controlsShown());
        QCOMPARE(running.cursor(), Qt::ArrowCursor);
        QTRY_VERIFY(!running.controlsShown());
        QCOMPARE(running.cursor(), Qt::BlankCursor);
        QTRY_VERIFY(!running.shows("controls")); // faded out

        // Moving over a button of the controls counts as moving too.
        running.moveMouse(running.centerOf("menuButton"));
        QVERIFY(running.controlsShown());
        QObject* hideTimer = running.window->findChild<QObject*>(u"controlsHideTimer"_s);
        hideTimer->setProperty("running", false);
        running.moveMouse(running.centerOf("menuButton") + QPoint(2, 2));
        QVERIFY(hideTimer->property("running").toBool());
        QTRY_VERIFY(!running.controlsShown());

        // Paused: the controls stay, however long the mouse rests.
        running.engine->pause();
        const QPoint at = running.center();
        running.moveMouse(at);
        QTest::qWait(2500);
        QVERIFY(running.controlsShown());

        // A still window draws nothing, also with the pointer resting over it.
        QTest::qWait(500); // the last fades end
        QSignalSpy frames(running.window, &QQuickWindow::frameSwapped);
        QTest::qWait(1000);
        QCOMPARE(frames.size(), 0);

        // One click waits for a possible second one before it hides the controls.
        running.click(at);
        QVERIFY(running.controlsShown());
        QTRY_VERIFY(!running.controlsShown());
        QCOMPARE(running.cursor(), Qt::BlankCursor);
        running.click(at);
        QTRY_VERIFY(running.controlsShown());

        // Two clicks in quick succession switch full screen, and only that.
        running.click(at);
        running.click(at);
        QTRY_VERIFY(running.engine->windowState()->isFullscreen());
        QTest::qWait(400);
        QVERIFY(running.controlsShown());

        // Playing again, they go after the usual delay without any movement.
        running.engine->play();
        QTRY_VERIFY(!running.controlsShown());
    }

    void wheelKeysAndTheShortcutGuide()
    {
        RunningApp running;
        QVERIFY(running.start());
        running.window->requestActivate();
        QVERIFY(QTest::qWaitForWindowActive(running.window));
        PlaybackEngine& engine = *running.engine;

        // A notch is 5 %; a touchpad's smaller steps move it by as much less.
        running.wheel(running.center(), 120);
        QCOMPARE(engine.volume(), 0.55f);
        QTRY_VERIFY(running.accessibleText().contains(u"Volume: 55%"_s));
        running.wheel(running.center(), -24);
        QCOMPARE(engine.volume(), 0.54f);

        QTest::keyClick(running.window, Qt::Key_3, Qt::ControlModifier);
        QCOMPARE(running.sidePanelTab(), 2);
        QTest::keyClick(running.window, Qt::Key_6, Qt::ControlModifier);
        QCOMPARE(running.sidePanelTab(), 2);
        QTest::keyClick(running.window, Qt::Key_1, Qt::ControlModifier);
        QCOMPARE(running.sidePanelTab(), 0);
        QTRY_COMPARE(running.item("sidePanel")->x(), running.window->width() - 280.0);

        // Over the open panel the wheel stays with the panel.
        running.wheel(QPoint(running.window->width() - 100, 300), 120);
        QCOMPARE(engine.volume(), 0.54f);

        // Esc: the guide first, then the panel, then the window's own use (leaving full screen).
        running.app->toggleFullScreen();
        QTRY_VERIFY(engine.windowState()->isFullscreen());
        running.click("keyboardShortcutsButton");
        QVERIFY(running.guideShown());
        QTest::keyClick(running.window, Qt::Key_Escape);
        QVERIFY(!running.guideShown());
        QCOMPARE(running.sidePanelTab(), 0);
        QTest::keyClick(running.window, Qt::Key_Escape);
        QCOMPARE(running.sidePanelTab(), -1);
        QVERIFY(engine.windowState()->isFullscreen());
        QTest::keyClick(running.window, Qt::Key_Escape);
        QTRY_VERIFY(!engine.windowState()->isFullscreen());

        // The shortcut guide lists every key as it is bound.
        running.click("keyboardShortcutsButton");
        QTRY_VERIFY(running.shows("shortcutGuideCard"));
        QVERIFY(running.accessibleText().contains(u"Rotate Video|Ctrl+K"_s));
        QVERIFY(running.accessibleText().contains(u"Seek Forward (Large)|Shift+Right"_s));

        // A key changed in the settings shows at once (R with the stored Shift bit).
        running.app->keyBindings()->updateBinding(PlayerAction::rotateVideo, 15, 0x20000);
        QVERIFY(running.accessibleText().contains(u"Rotate Video|Shift+R"_s));

        // A click on the card keeps it; one beside it closes it, as does its own button.
        running.click("shortcutGuideCard");
        QVERIFY(running.guideShown());
        running.click(QPoint(10, running.window->height() - 10));
        QVERIFY(!running.guideShown());
        running.view->setProperty("shortcutGuideShown", true);
        QTRY_VERIFY(running.shows("shortcutGuideClose"));
        running.click("shortcutGuideClose");
        QVERIFY(!running.guideShown());

        // The idle screen's playlist button opens the panel on the playlist, then closes it.
        running.click("playlistButton");
        QCOMPARE(running.sidePanelTab(), 0);
        running.click("playlistButton");
        QCOMPARE(running.sidePanelTab(), -1);
    }

    void dropsOpenMediaAndAddSubtitles()
    {
        RunningApp running;
        QVERIFY(running.start());
        PlaybackEngine& engine = *running.engine;
        PlaylistManager& playlist = *engine.playlist();
        const QUrl subtitle = fixtureUrl(u"embedded-subtitles.srt"_s);
        const QUrl clip10 = fixtureUrl(u"clip10.mp4"_s), clip30 = fixtureUrl(u"clip30.mp4"_s);

        // Subtitles with no video to go to are not played.
        running.drop({subtitle});
        QTRY_VERIFY(running.accessibleText().contains(u"Open a video to add subtitles to"_s));
        QCOMPARE(engine.state().kind(), Kind::Idle);

        running.drop({QUrl::fromLocalFile(fixturePath({}))}); // its videos, clip10.mp4 first
        QTRY_COMPARE(engine.currentURL(), clip10);
        QVERIFY(playlist.items().size() > 2);

        running.drop({clip30, clip10});
        QTRY_COMPARE(engine.currentURL(), clip30);
        QCOMPARE(playlist.items().size(), 2);

        running.drop({fixtureUrl(u"tracks.mkv"_s)}); // one file plays, the playlist stays
        QTRY_VERIFY(engine.currentURL().fileName() == u"tracks.mkv"_s && engine.state().isActive());
        QCOMPARE(playlist.items().size(), 2);

        running.drop({subtitle});
        QTRY_COMPARE(engine.tracks()->subtitleTracks().size(), 2);

        // A video with its subtitles: the video opens, then takes them.
        running.drop({subtitle, clip10});
        QTRY_COMPARE(engine.currentURL(), clip10);
        QTRY_COMPARE(engine.tracks()->subtitleTracks().size(), 1);
    }

    void seekBarDragsHoversAndPreviews()
    {
        RunningApp running;
        QVERIFY(running.start());
        running.play(u"clip30.mp4"_s);
        PlaybackEngine& engine = *running.engine;
        QQuickItem* bar = running.item("seekBar");
        const QRectF area = running.sceneRect(bar);
        const double y = area.center().y();
        auto at = [&](double fraction) {
            return QPointF(area.left() + fraction * area.width(), y).toPoint();
        };
        auto fractionOf = [&](QPoint point) { return (point.x() - area.left()) / area.width(); };
        running.moveMouse(running.center());

        // A drag: one scrub start, a scrub for the press and each move, one seek where it ends.
        QSignalSpy began(bar, SIGNAL(scrubBegan()));
        QSignalSpy scrubbed(bar, SIGNAL(scrub(double, double)));
        QSignalSpy sought(bar, SIGNAL(seek(double)));
        QTest::mousePress(running.window, Qt::LeftButton, {}, at(0.1));
        for (double fraction : {0.3, 0.5, 0.7}) {
            QTest::mouseMove(running.window, at(fraction));
            QCOMPARE(engine.currentTime(), fractionOf(at(fraction)) * 30); // the picture follows
        }
        QTest::qWait(2000); // a long drag keeps the controls, and holds the picture still
        QVERIFY(running.controlsShown());
        QVERIFY(!engine.decoder()->isPlaying());
        QTest::mouseRelease(running.window, Qt::LeftButton, {}, at(0.7));
        QCOMPARE(began.size(), 1);
        QCOMPARE(scrubbed.size(), 4);
        QCOMPARE(scrubbed.last().at(1).toDouble(), 30.0);
        QCOMPARE(sought.size(), 1);
        const double target = fractionOf(at(0.7)) * 30;
        QCOMPARE(sought.first().first().toDouble(), target);
        QTRY_VERIFY(engine.decoder()->isPlaying()); // it plays on from there
        QVERIFY(qAbs(engine.currentTime() - target) < 1.0);

        // Hovering: the bubble shows the time under the pointer, centred on it but kept whole
        // inside the bar at both ends; its picture arrives from the thumbnail generator.
        engine.pause();
        QQuickItem* bubble = running.item("previewBubble");
        auto bubbleCenter = [&] { return running.sceneRect(bubble).center().x() - area.left(); };
        running.moveMouse(at(0.5));
        QTRY_VERIFY(bubble->isVisible());
        QCOMPARE(running.text("previewTime"), Formats::time(fractionOf(at(0.5)) * 30));
        QCOMPARE(bubbleCenter(), at(0.5).x() - area.left());
        QTRY_VERIFY_WITH_TIMEOUT(
            !running.item("previewPicture")->property("showsPlaceholder").toBool(), 10000);
        QVERIFY(!running.shows("previewChapter")); // no chapters in this file
        QVERIFY(running.items("chapterTick").isEmpty());

        running.moveMouse(at(0.01));
        QCOMPARE(running.text("previewTime"), Formats::time(fractionOf(at(0.01)) * 30));
        QCOMPARE(bubbleCenter(), 120.0);
        running.moveMouse(at(0.995));
        QCOMPARE(running.text("previewTime"), Formats::time(fractionOf(at(0.995)) * 30));
        QCOMPARE(bubbleCenter(), area.width() - 120);

        running.moveMouse(running.center());
        QVERIFY(!bubble->isVisible());
        finishBackgroundWork();
    }

    void seekBarMarksBookmarksLoopsAndChapters()
    {
        RunningApp running;
        QVERIFY(running.start());
        running.window->requestActivate();
        QVERIFY(QTest::qWaitForWindowActive(running.window));
        running.play(u"three-chapters.mkv"_s);
        PlaybackEngine& engine = *running.engine;
        engine.pause();
        QQuickItem* bar = running.item("seekBar");
        QQuickItem* track = running.item("seekTrack");
        const QRectF area = running.sceneRect(bar);
        const double duration = engine.duration();
        QCOMPARE(duration, 20.0);

        // Bookmarks made with the B key, each a marker centred on its time, above the bar.
        for (double time : {4.0, 15.0}) {
            QCoro::waitFor(engine.seek(time));
            QTest::keyClick(running.window, Qt::Key_B);
        }
        QTRY_COMPARE(engine.bookmarkTimes(), QList<double>({4.0, 15.0}));
        const QList<QQuickItem*> markers = running.items("bookmarkMarker");
        QCOMPARE(markers.size(), 2);
        const double trackMiddle = running.sceneRect(track).center().y();
        for (int i = 0; i < 2; ++i) {
            const QRectF marker = running.sceneRect(markers[i]);
            QCOMPARE(marker.size(), QSizeF(7, 9));
            QCOMPARE(marker.left() - area.left(),
                     engine.bookmarkTimes()[i] / duration * area.width() - 3.5);
            QCOMPARE(marker.center().y(), trackMiddle - 6);
        }

        // The loop points, at their times.
        QCoro::waitFor(engine.seek(6));
        running.app->commands()->setLoopPointA();
        QVERIFY(running.shows("loopMarkerA") && !running.shows("loopMarkerB"));
        QCoro::waitFor(engine.seek(12));
        running.app->commands()->setLoopPointB();
        for (auto [name, time] : {std::pair{"loopMarkerA", 6.0}, std::pair{"loopMarkerB", 12.0}}) {
            QVERIFY(running.shows(name));
            QCOMPARE(running.sceneRect(running.item(name)).center().x() - area.left(),
                     time / duration * area.width());
        }
        const QRectF span = running.sceneRect(running.item("loopSpan"));
        QCOMPARE(span.left() - area.left(), 6.0 / duration * area.width());
        QCOMPARE(span.width(), 6.0 / duration * area.width());
        running.app->commands()->clearLoop();
        QVERIFY(!running.shows("loopMarkerA") && !running.shows("loopMarkerB") &&
                !running.shows("loopSpan"));

        // The chapters: a tick where each one after the first starts, its title in the preview.
        QTRY_COMPARE(engine.chapters().size(), 3);
        QList<double> ticks;
        for (QQuickItem* tick : running.items("chapterTick"))
            ticks << (running.sceneRect(tick).center().x() - area.left()) / area.width() * duration;
        QCOMPARE(ticks.size(), 2);
        std::sort(ticks.begin(), ticks.end());
        QVERIFY(qAbs(ticks[0] - 5.0) < 0.1 && qAbs(ticks[1] - 12.5) < 0.1);
        for (auto [time, title] : {std::pair{2.0, "Opening"}, std::pair{13.0, "Ending"}}) {
            running.moveMouse(
                QPointF(area.left() + time / duration * area.width(), area.center().y()).toPoint());
            QTRY_VERIFY(running.shows("previewChapter"));
            QCOMPARE(running.text("previewChapter"), QString::fromLatin1(title));
        }

        // Another file: its own (no) bookmarks and chapters.
        running.play(u"clip10.mp4"_s);
        QVERIFY(engine.bookmarkTimes().isEmpty());
        QTRY_VERIFY(engine.chapters().isEmpty());
        QVERIFY(running.items("bookmarkMarker").isEmpty());
        finishBackgroundWork();
    }

    void controlBarButtonsVolumeAndAccessibility()
    {
        RunningApp running;
        QVERIFY(running.start());
        running.play(u"clip30.mp4"_s);
        PlaybackEngine& engine = *running.engine;
        UserCommands& commands = *running.app->commands();
        running.moveMouse(running.center());
        auto label = [&](const char* name) {
            return running.item(name)->property("label").toString();
        };
        auto symbol = [&](const char* name) {
            return running.item(name)->property("symbol").toString();
        };

        // Play/pause goes through the same command as the key, with its message.
        QCOMPARE(label("playPauseButton"), u"Pause"_s);
        running.click("playPauseButton");
        QCOMPARE(engine.state().kind(), Kind::Paused);
        QCOMPARE(symbol("playPauseButton"), u"play.fill"_s);
        QCOMPARE(label("playPauseButton"), u"Play"_s);
        QTRY_COMPARE(running.text("osdText"), u"Paused"_s);

        QCOMPARE(label("rateButton"), u"Playback rate 1"_s);
        commands.setPlaybackRate(1.25f);
        QCOMPARE(label("rateButton"), u"Playback rate 1.2"_s);

        // The side panel's buttons open their tabs and say which is open.
        running.click("playlistBarButton");
        QCOMPARE(running.sidePanelTab(), 0);
        QCOMPARE(label("playlistBarButton"), u"Playlist active"_s);
        running.click("playlistBarButton");
        QCOMPARE(running.sidePanelTab(), -1);
        QCOMPARE(label("adjustmentsButton"), u"Adjustments"_s);
        engine.filters()->setFilter(u"brightness"_s, true, 0.2f);
        QCOMPARE(label("adjustmentsButton"), u"Adjustments active"_s);
        engine.filters()->resetAll();
        QCOMPARE(label("adjustmentsButton"), u"Adjustments"_s);

        // The volume's icon by its thresholds; muted or silent, the slash.
        QQuickItem* slider = running.item("volumeSlider");
        for (auto [volume, icon] :
             {std::pair{0.329f, "speaker.wave.1.fill"}, std::pair{0.33f, "speaker.wave.2.fill"},
              std::pair{0.66f, "speaker.wave.3.fill"}, std::pair{0.0f, "speaker.slash.fill"}}) {
            engine.setVolume(volume);
            QCOMPARE(symbol("muteButton"), QString::fromLatin1(icon));
        }
        engine.setVolume(0.8f);
        QCOMPARE(QAccessible::queryAccessibleInterface(slider)->text(QAccessible::Name),
                 u"Volume 80"_s);
        QCOMPARE(label("muteButton"), u"Mute"_s);
        running.click("muteButton");
        QVERIFY(engine.isMuted());
        QCOMPARE(symbol("muteButton"), u"speaker.slash.fill"_s);
        QCOMPARE(label("muteButton"), u"Unmute"_s);

        // The time, and the seek bar as a screen reader meets it: 5 s steps that stop at the
        // ends exactly, through the same seek as a drag.
        QCoro::waitFor(engine.seek(27));
        QCOMPARE(running.text("timeLabel"), u"00:27 / 00:30"_s);
        QAccessibleInterface* seekBar =
            QAccessible::queryAccessibleInterface(running.item("seekBar"));
        QCOMPARE(seekBar->text(QAccessible::Name), u"Seek bar"_s);
        QVERIFY(seekBar->valueInterface());
        QCOMPARE(seekBar->valueInterface()->currentValue().toString(), u"00:27 of 00:30"_s);
        QCOMPARE(seekBar->text(QAccessible::Description), u"00:27 of 00:30"_s);
        seekBar->actionInterface()->doAction(QAccessibleActionInterface::increaseAction());
        QCOMPARE(engine.currentTime(), 30.0);
        QCoro::waitFor(engine.seek(2));
        seekBar->actionInterface()->doAction(QAccessibleActionInterface::decreaseAction());
        QCOMPARE(engine.currentTime(), 0.0);
    }

    void controlBarFitsANarrowWindow()
    {
        RunningApp running;
        QVERIFY(running.start());
        running.play(u"clip30.mp4"_s);
        running.engine->pause();
        QQuickItem* bar = running.item("controlBar");
        // The narrowest window, then the same with the side panel taking 280 of its 480 px.
        running.window->resize(480, 360);
        for (int tab : {-1, 2}) {
            running.view->setProperty("sidePanelTab", tab);
            QTRY_COMPARE(bar->width(), tab < 0 ? 480.0 : 200.0);
            // Laid out at the next polish: what overlaps or sticks out, if anything.
            auto misfits = [&] {
                QMap<QString, QRectF> parts;
                for (const char* name :
                     {"playPauseButton", "rateButton", "timeLabel", "adjustmentsButton",
                      "bookmarksButton", "tracksButton", "playlistBarButton", "pipButton",
                      "muteButton", "volumeSlider"}) {
                    if (running.shows(name))
                        parts[QLatin1String(name)] = running.sceneRect(running.item(name));
                }
                QStringList found;
                const QRectF whole = running.sceneRect(bar);
                for (auto i = parts.cbegin(); i != parts.cend(); ++i) {
                    if (!whole.contains(*i))
                        found << i.key();
                    for (auto j = std::next(i); j != parts.cend(); ++j) {
                        if (i->intersects(*j))
                            found << i.key() + u'+' + j.key();
                    }
                }
                return found;
            };
            QTRY_COMPARE(misfits(), QStringList());
            // What matters most stays.
            QVERIFY(running.shows("playPauseButton") && running.shows("playlistBarButton") &&
                    running.shows("muteButton"));
            if (tab < 0)
                QVERIFY(running.shows("timeLabel") && running.shows("volumeSlider"));

            // The preview stays whole, beside the panel, at both ends of the bar.
            const QRectF seekArea = running.sceneRect(running.item("seekBar"));
            for (double fraction : {0.0, 1.0}) {
                running.moveMouse(QPointF(seekArea.left() + fraction * (seekArea.width() - 1),
                                          seekArea.center().y())
                                      .toPoint());
                QTRY_VERIFY(running.shows("previewBubble"));
                const QRectF bubble = running.sceneRect(running.item("previewBubble"));
                const QRectF whole = running.sceneRect(bar);
                QVERIFY(bubble.left() >= whole.left() && bubble.right() <= whole.right());
            }
            running.moveMouse(running.center() / 2);
        }
    }

    void osdDrawsVolumeAndSeekRows()
    {
        RunningApp running;
        QVERIFY(running.start());
        running.play(u"clip30.mp4"_s);
        running.engine->pause();
        UserCommands& commands = *running.app->commands();
        auto fill = [&](const char* bar) { return running.item(bar)->childItems().first(); };

        // 0.29 in single precision is just below 0.29: the row shows what the message says.
        commands.setVolume(0.29f);
        QTRY_VERIFY(running.shows("osdVolumeBar"));
        QCOMPARE(running.text("osdVolumePercent"), u"29%"_s);
        QCOMPARE(fill("osdVolumeBar")->width(), double(0.29f) * 80);

        commands.seekBy(15);
        QTRY_VERIFY(running.shows("osdSeekBar"));
        const OSDMessage seek = *running.engine->osd()->currentMessage();
        QCOMPARE(running.text("osdSeekCurrent"), u"00:15"_s);
        QCOMPARE(running.text("osdSeekDuration"), u"00:30"_s);
        QCOMPARE(fill("osdSeekBar")->width(), seek.current() / seek.duration() * 120);
        QVERIFY(!running.shows("osdVolumeBar"));

        // Any other message: icon and text. The capsule changes the pixels it covers, and fades
        // away with its message.
        QTRY_VERIFY_WITH_TIMEOUT(!running.shows("osdView"), 5000);
        running.engine->osd()->show(OSDMessage::text(u"Resumed at 00:12"_s), 5);
        QTRY_COMPARE(running.text("osdText"), u"Resumed at 00:12"_s);
        QTest::qWait(400);
        QQuickItem* osd = running.item("osdView");
        const QRect area = osd->mapRectToScene(osd->boundingRect()).toRect();
        const QImage withMessage = running.window->grabWindow();
        QTRY_VERIFY_WITH_TIMEOUT(!running.shows("osdView"), 7000);
        QVERIFY(running.window->grabWindow().copy(area) != withMessage.copy(area));
    }

    void panelTabsWithoutMedia()
    {
        RunningApp running;
        QVERIFY(running.start());

        QVERIFY(running.openTab(0));
        QVERIFY(running.accessibleText().contains(u"0 items|No items"_s));
        for (int tab : {1, 2, 4}) {
            running.click(QString::fromLatin1("sidePanelTab%1").arg(tab).toLatin1().constData());
            QCOMPARE(running.sidePanelTab(), tab);
            QTRY_VERIFY2(running.accessibleText().contains(u"No media loaded"_s),
                         qPrintable(running.accessibleText()));
        }
        running.click("sidePanelTab3");
        QTRY_VERIFY(running.accessibleText().contains(u"0 bookmarks"_s));
        QVERIFY(running.accessibleText().contains(u"No bookmarks|Press B to add"_s));
        QVERIFY(!running.accessibleText().contains(u"No media loaded"_s));
    }

    void playlistTabPlaysReordersAndDeletes()
    {
        RunningApp running;
        QVERIFY(running.start());
        running.window->requestActivate(); // for the Delete key
        QVERIFY(QTest::qWaitForWindowActive(running.window));
        PlaylistManager& playlist = *running.engine->playlist();
        QTemporaryDir dir;
        for (const char* name : {"ep10.mp4", "ep2.mp4", "ep1.mp4"})
            QVERIFY(QFile::copy(fixturePath(u"clip10.mp4"_s), dir.filePath(QLatin1String(name))));

        running.drop({QUrl::fromLocalFile(dir.path())});
        QTRY_COMPARE(running.engine->currentURL().fileName(), u"ep1.mp4"_s);
        QVERIFY(running.openTab(0));
        QTRY_COMPARE(running.playlistRows(), u"ep1*|ep2|ep10"_s);
        QVERIFY(running.accessibleText().contains(u"3 items"_s));
        QTRY_VERIFY(running.accessibleText().contains(u"00:10"_s)); // the duration, once known

        QTest::mouseDClick(running.window, Qt::LeftButton, {},
                           running.centerOf(running.rows("playlistList").at(1)));
        QTRY_COMPARE(running.engine->currentURL().fileName(), u"ep2.mp4"_s);
        QTRY_COMPARE(running.playlistRows(), u"ep1|ep2*|ep10"_s);
        QTRY_COMPARE(running.engine->state().kind(), Kind::Playing);
        running.engine->pause(); // no moving on to the next entry meanwhile

        // Dragged from the top to the bottom. The current index keeps its number, and the mark
        // follows it to the entry that slid into its place.
        const QList<QQuickItem*> rows = running.rows("playlistList");
        const QPoint from = running.centerOf(rows.at(0)), to = running.centerOf(rows.at(2));
        QTest::mousePress(running.window, Qt::LeftButton, {}, from);
        for (int step = 1; step <= 10; ++step)
            QTest::mouseMove(running.window, from + (to - from) * step / 10);
        QTest::mouseRelease(running.window, Qt::LeftButton, {}, to);
        QTRY_COMPARE(running.playlistRows(), u"ep2|ep10*|ep1"_s);
        QCOMPARE(playlist.currentIndex(), std::optional<int>(1));

        // A chosen row goes with the Delete key.
        running.click(running.rows("playlistList").at(0));
        QTest::keyClick(running.window, Qt::Key_Delete);
        QTRY_COMPARE(running.playlistRows(), u"ep10|ep1*"_s);
        QCOMPARE(playlist.items().size(), 2);
        QVERIFY(running.accessibleText().contains(u"2 items"_s));
    }

    void longPlaylistScrolls()
    {
        RunningApp running;
        QVERIFY(running.start());
        PlaylistManager& playlist = *running.engine->playlist();
        QVERIFY(running.openTab(0));
        // The view makes rows only for what it shows, the GUI thread keeps turning, and the wheel
        // over the list scrolls it, not the volume.
        QTemporaryDir big;
        for (int i = 0; i < 20000; ++i)
            QFile(big.filePath(QString::asprintf("f%05d.mp4", i))).open(QIODevice::WriteOnly);
        GuiHeartbeat heartbeat;
        QVERIFY(QCoro::waitFor(playlist.addFolder(QUrl::fromLocalFile(big.path()))));
        QTRY_VERIFY(running.accessibleText().contains(u"20000 items"_s));
        QQuickItem* list = running.item("playlistList");
        const double top = list->property("contentY").toDouble();
        for (int notch = 0; notch < 20; ++notch)
            running.wheel(running.centerOf("playlistList"), -120);
        QTRY_VERIFY(list->property("contentY").toDouble() > top + 200);
        QCOMPARE(running.engine->volume(), 0.5f);
        QMetaObject::invokeMethod(list, "positionViewAtEnd");
        QTRY_VERIFY(running.playlistRows().endsWith(u"f19999"_s));
        QVERIFY(running.rows("playlistList").size() < 60);
        QVERIFY2(heartbeat.longestStall() < GuiHeartbeat::allowance(250),
                 qPrintable(QString::number(heartbeat.longestStall())));
    }

    void filtersTabAdjustsAndResetsAll()
    {
        RunningApp running;
        QVERIFY(running.start());
        PlaybackEngine& engine = *running.engine;
        UserCommands& commands = *running.app->commands();
        const QUrl clip10 = fixtureUrl(u"clip10.mp4"_s), clip30 = fixtureUrl(u"clip30.mp4"_s);
        running.play(u"clip10.mp4"_s);
        QVERIFY(running.openTab(1));
        QTRY_VERIFY(running.shows("rotateLeftButton"));

        // A filter switched on and turned up in the panel reaches libmpv.
        const QString brightness = engine.filters()->filters().first().name;
        QCOMPARE(brightness, u"Brightness"_s);
        running.click("filterSwitch_Brightness");
        QVERIFY(engine.filters()->filters().first().isEnabled);
        QQuickItem* slider = running.item("filterSlider_Brightness");
        running.click(
            slider->mapToScene(QPointF(slider->width() - 4, slider->height() / 2)).toPoint());
        const float value = engine.filters()->filters().first().parameters.first().value;
        QVERIFY2(value > 0.8f, qPrintable(QString::number(value)));
        QCOMPARE(running.text("filterValue_Brightness"), QString::asprintf("%.1f", value));
        QTRY_COMPARE(running.mpvProperty("brightness"), QString::number(qRound(value * 100)));

        running.click("rotateLeftButton");
        QCOMPARE(engine.videoRotation(), 270);
        QCOMPARE(running.text("rotationValue"), u"270\u00b0"_s);
        running.click("rotateRightButton");
        QCOMPARE(engine.videoRotation(), 0);

        // The rest is further down: the wheel over the panel scrolls it there.
        for (int notch = 0; notch < 10; ++notch)
            running.wheel(running.centerOf("filtersScroll"), -120);
        QTRY_VERIFY(running.item("filtersScroll")->property("atYEnd").toBool());
        commands.setAudioDelay(-1.25);
        QCOMPARE(running.text("audioDelayValue"), u"-1.25s"_s);
        running.click("audioDelayResetButton");
        QCOMPARE(running.text("audioDelayValue"), u"0.00s"_s);

        // What the file was left with comes back with it...
        commands.setRotation(90);
        commands.setAudioDelay(0.3);
        QCoro::waitFor(engine.load(clip30));
        QCoro::waitFor(engine.load(clip10));
        QCOMPARE(engine.videoRotation(), 90);
        QCOMPARE(engine.audioDelay(), 0.3);
        QVERIFY(engine.filters()->filters() != FilterManager::defaultFilters());

        // ...until Reset All, at the bottom of the panel, which the wheel scrolls to.
        QVERIFY(running.openTab(1));
        QTRY_VERIFY(running.shows("resetAllButton"));
        for (int notch = 0; notch < 10; ++notch)
            running.wheel(running.centerOf("filtersScroll"), -120);
        QTRY_VERIFY(running.item("filtersScroll")->property("atYEnd").toBool());
        running.click("resetAllButton");
        QCOMPARE(engine.videoRotation(), 0);
        QCOMPARE(engine.audioDelay(), 0.0);
        QCOMPARE(engine.filters()->filters(), FilterManager::defaultFilters());
        QTRY_COMPARE(running.mpvProperty("video-rotate"), u"0"_s);
        QTRY_COMPARE(running.mpvProperty("audio-delay").toDouble(), 0.0);
        // (clip30 keeps its own delay, which a file without one would take over.)
        QCoro::waitFor(engine.load(fixtureUrl(u"clip60.mp4"_s)));
        QCoro::waitFor(engine.load(clip10));
        QCOMPARE(engine.videoRotation(), 0);
        QCOMPARE(engine.audioDelay(), 0.0);
        QCOMPARE(engine.filters()->filters(), FilterManager::defaultFilters());

        // Paused with the panel open, the window draws nothing once the panel is still.
        engine.pause();
        QTest::qWait(2500); // the on-screen display and the scroll bar fade out
        QSignalSpy frames(running.window, &QQuickWindow::frameSwapped);
        QTest::qWait(1000);
        QCOMPARE(frames.size(), 0);
    }

    void infoAndBookmarksTabs()
    {
        RunningApp running;
        QVERIFY(running.start());
        PlaybackEngine& engine = *running.engine;
        UserCommands& commands = *running.app->commands();
        running.play(u"clip10.mp4"_s);
        engine.pause();

        QVERIFY(running.openTab(2));
        for (const QString& line :
             {u"Title|clip10"_s, u"Codec|h264"_s, u"Resolution|640 \u00d7 360"_s,
              u"Frame Rate|30.000"_s, u"Channels|Mono"_s, u"Sample Rate|48 kHz"_s})
            QTRY_VERIFY2(running.accessibleText().contains(line), qPrintable(line));

        QVERIFY(running.openTab(3));
        QVERIFY(running.accessibleText().contains(u"No bookmarks"_s));
        QCoro::waitFor(engine.seek(6));
        commands.addBookmark();
        QCoro::waitFor(engine.seek(2));
        commands.addBookmark();
        auto times = [&] {
            QStringList texts;
            for (QQuickItem* row : running.rows("bookmarkList"))
                texts << row->property("timeText").toString() +
                             (row->property("hasPicture").toBool() ? u"+picture"_s : QString());
            return texts.join(u'|');
        };
        QTRY_COMPARE(times(), u"00:02+picture|00:06+picture"_s);
        QVERIFY(running.accessibleText().contains(u"2 bookmarks"_s));

        running.click(running.rows("bookmarkList").at(1));
        QTRY_COMPARE(qRound(engine.currentTime()), 6);
        running.click(
            running.rows("bookmarkList").at(0)->findChild<QQuickItem*>(u"deleteBookmarkButton"_s));
        QTRY_COMPARE(times(), u"00:06+picture"_s);

        // Only the open file's bookmarks show; Clear All takes them all.
        running.play(u"clip30.mp4"_s);
        QTRY_COMPARE(times(), QString());
        running.play(u"clip10.mp4"_s);
        QTRY_COMPARE(times(), u"00:06+picture"_s);
        running.click("clearBookmarksButton");
        QTRY_VERIFY(running.accessibleText().contains(u"No bookmarks|Press B to add"_s));
        QVERIFY(engine.bookmarks()->bookmarks(engine.currentURL()).isEmpty());
    }

    void tracksTabSelectsAddsAndRemoves()
    {
        RunningApp running;
        QVERIFY(running.start());
        PlaybackEngine& engine = *running.engine;
        running.play(u"clip10.mp4"_s);
        QVERIFY(running.openTab(4));
        QTRY_VERIFY(running.accessibleText().contains(u"No subtitle tracks"_s));
        QVERIFY(!running.accessibleText().contains(u"No audio tracks"_s));

        running.play(u"tracks.mkv"_s);
        QTRY_VERIFY(running.item("audioRow_2") && running.item("subtitleRow_1"));
        QVERIFY(running.accessibleText().contains(u"Commentary \u2014 JPN"_s));
        running.click("audioRow_2");
        QTRY_COMPARE(running.mpvProperty("aid"), u"2"_s);
        QTRY_VERIFY(running.item("audioRow_2")->property("active").toBool());
        QVERIFY(!running.item("audioRow_1")->property("active").toBool());
        running.click("subtitleOffRow");
        QTRY_COMPARE(running.mpvProperty("sid"), u"no"_s);
        running.click("subtitleRow_1");
        QTRY_COMPARE(running.mpvProperty("sid"), u"1"_s);

        running.click("addSubtitleButton");
        QObject* tab = running.item("tracksTab");
        QObject* dialog = tab->property("subtitleDialog").value<QObject*>();
        QVERIFY(dialog && dialog->property("visible").toBool());
        QCOMPARE(dialog->property("title").toString(), u"Select subtitle files"_s);
        QCOMPARE(dialog->property("fileMode").toInt(), 1); // several files
        QMetaObject::invokeMethod(dialog, "close");

        // What the dialog hands over is added, selected, and can be taken out again.
        const QList<QUrl> chosen = {fixtureUrl(u"embedded-subtitles.srt"_s)};
        QMetaObject::invokeMethod(tab, "addSubtitleFiles",
                                  Q_ARG(QVariant, QVariant::fromValue(chosen)));
        QTRY_VERIFY(running.item("subtitleRow_2"));
        QVERIFY(running.accessibleText().contains(u"External"_s));
        QTRY_COMPARE(running.mpvProperty("sid"), u"2"_s);
        running.click(
            running.item("subtitleRow_2")->findChild<QQuickItem*>(u"removeSubtitleButton"_s));
        QTRY_COMPARE(engine.tracks()->subtitleTracks().size(), 1);
        QTRY_VERIFY(!running.item("subtitleRow_2"));
        QVERIFY(!running.accessibleText().contains(u"External"_s));
    }
};

VELMAR_TEST_MAIN(UiTest)
#include "tst_ui.moc"
