// The real main window's player view over a real engine and real media, driven with synthesized
// mouse, wheel, key and drop events, as far as the view decides what they do.
#include "RunningApp.h"
#include "support/TestSupport.h"

#include <QtQml/qqmlextensionplugin.h>

Q_IMPORT_QML_PLUGIN(VelmarPlugin)

using namespace velmar::test;
using namespace Qt::StringLiterals;
using Kind = PlayerState::Kind;

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
        for (const char* name : {"Open File", "Playlist", "Keyboard Shortcuts"})
            QVERIFY2(running.accessibleText().contains(QLatin1String(name)), name);
        // The video surface is there, ready for a file, but shows nothing to read yet.
        for (const char* name : {"Image viewer", "Video player"})
            QVERIFY2(!running.accessibleText().contains(QLatin1String(name)), name);
        running.click("openFileButton");
        QObject* dialog = running.playerInterface()->property("openDialog").value<QObject*>();
        QVERIFY(dialog && dialog->property("visible").toBool());
        QMetaObject::invokeMethod(dialog, "close");

        // A load that takes its time says so, a moment later, over the picture.
        QTemporaryDir dir;
        const QByteArray pipe = QFile::encodeName(dir.filePath(u"slow.mp4"_s));
        QCOMPARE(mkfifo(pipe.constData(), 0600), 0);
        running.engine->load(QUrl::fromLocalFile(QFile::decodeName(pipe)));
        QCOMPARE(running.engine->state().kind(), Kind::Loading);
        QVERIFY(!running.shows("loadingText"));
        QTRY_VERIFY(running.shows("loadingText"));
        QCOMPARE(running.text("loadingText"), u"Loading..."_s);
        QVERIFY(running.shows("videoView"));

        // Nothing comes through the pipe: an error, with the engine's message.
        running.expectLibmpvErrors();
        ::close(::open(pipe.constData(), O_WRONLY));
        QTRY_COMPARE_WITH_TIMEOUT(running.engine->state().kind(), Kind::Error, 10000);
        QTRY_VERIFY(running.accessibleText().contains(u"Cannot play \u201cslow.mp4\u201d"_s));
        QVERIFY(!running.shows("loadingText"));
        QCOMPARE(running.item("errorIcon")->property("symbol").toString(),
                 u"exclamationmark.triangle"_s);

        running.play(u"still.png"_s);
        QVERIFY(running.shows("imageView"));
        QVERIFY(running.accessibleText().contains(u"Image viewer"_s));
        QVERIFY(!running.accessibleText().contains(u"Video player"_s));
        running.play(u"clip10.mp4"_s);
        QVERIFY(running.accessibleText().contains(u"Video player"_s));
        QVERIFY(!running.accessibleText().contains(u"Image viewer"_s));
    }

    // Started on a file, the window goes from black to the video: the idle screen does not
    // flash by while the file is looked at and opened.
    void aFileGivenAtStartSkipsTheIdleScreen()
    {
        RunningApp running;
        QVERIFY(running.start({fixtureUrl(u"clip10.mp4"_s)}));
        QVERIFY(!running.shows("openFileButton"));
        QTRY_COMPARE(running.engine->state().kind(), Kind::Playing);
        QVERIFY(!running.shows("openFileButton"));
        QVERIFY(!running.app->property("hasFilesToOpen").toBool());
        // The controls go as in any playback, even when playback began before they were made.
        QTRY_VERIFY(!running.controlsShown());
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
        QVERIFY(waitForStillScene(running.window, 2000));

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

        // With the right-click menu open, the keys move through the menu and leave playback
        // alone; Esc closes the menu, not full screen.
        running.window->requestActivate();
        QVERIFY(QTest::qWaitForWindowActive(running.window));
        QTest::mouseClick(running.window, Qt::RightButton, {}, at);
        auto* menu = running.playerInterface()->findChild<QObject*>(u"playerMenu"_s);
        QTRY_VERIFY(menu->property("opened").toBool());
        const float volume = running.engine->volume();
        const double position = running.engine->currentTime();
        for (Qt::Key key : {Qt::Key_Down, Qt::Key_Down, Qt::Key_Up, Qt::Key_Right, Qt::Key_Left})
            QTest::keyClick(running.window, key);
        QCOMPARE(running.engine->volume(), volume);
        QVERIFY(qAbs(running.engine->currentTime() - position) < 2);
        QCOMPARE(menu->property("currentIndex").toInt(), 0);
        QTest::keyClick(running.window, Qt::Key_Escape);
        QTRY_VERIFY(!menu->property("opened").toBool());
        QVERIFY(running.engine->windowState()->isFullscreen());
        QCOMPARE(running.engine->state().kind(), Kind::Playing);
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

        // Ctrl+1 to Ctrl+5 open the tabs in order; Ctrl+6 is not the panel's.
        for (int tab : {2, 4, 1, 3, 0}) {
            QTest::keyClick(running.window, Qt::Key(Qt::Key_1 + tab), Qt::ControlModifier);
            QCOMPARE(running.sidePanelTab(), tab);
        }
        QTest::keyClick(running.window, Qt::Key_6, Qt::ControlModifier);
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
        QVERIFY(running.accessibleText().contains(u"Toggle Full Screen|Return, Ctrl+F"_s));
        QVERIFY(running.accessibleText().contains(u"PiP \uC804\uD658|Ctrl+P"_s));

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

        // Each drop cuts the load before it short, and libmpv may complain about a file it was
        // made to stop reading half-way.
        running.expectLibmpvErrors();
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
        QQuickItem* osd = running.item("osdView");
        QTRY_COMPARE(osd->opacity(), 1.0); // faded in
        const QRect area = osd->mapRectToScene(osd->boundingRect()).toRect();
        const QImage withMessage = running.window->grabWindow();
        QTRY_VERIFY_WITH_TIMEOUT(!running.shows("osdView"), 7000);
        QVERIFY(running.window->grabWindow().copy(area) != withMessage.copy(area));
    }
};

VELMAR_TEST_MAIN(UiTest)
#include "tst_ui.moc"
