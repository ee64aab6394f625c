// The control bar and its seek bar in the real main window: dragging, hovering and previews,
// the marks on the timeline, the buttons and how the bar fits a narrow window.
#include "RunningApp.h"
#include "support/TestSupport.h"

#include <QtQml/qqmlextensionplugin.h>

Q_IMPORT_QML_PLUGIN(VelmarPlugin)

using namespace velmar::test;
using namespace Qt::StringLiterals;
using Kind = PlayerState::Kind;

class ControlBarTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        freshStart();
        failOnWarnings();
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
        QTRY_COMPARE(running.items("bookmarkMarker").size(), 2);
        QList<double> markedTimes;
        const double trackMiddle = running.sceneRect(track).center().y();
        for (QQuickItem* item : running.items("bookmarkMarker")) {
            const QRectF marker = running.sceneRect(item);
            QCOMPARE(marker.size(), QSizeF(7, 9));
            QCOMPARE(marker.center().y(), trackMiddle - 6);
            markedTimes << (marker.left() + 3.5 - area.left()) / area.width() * duration;
        }
        std::sort(markedTimes.begin(), markedTimes.end());
        QVERIFY(qAbs(markedTimes[0] - 4.0) < 1e-6 && qAbs(markedTimes[1] - 15.0) < 1e-6);

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
        QTRY_COMPARE(running.items("chapterTick").size(), 2);
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
        QTRY_VERIFY(running.items("chapterTick").isEmpty());
        QVERIFY(running.items("bookmarkMarker").isEmpty());
        finishBackgroundWork();
    }

    void followingPlaybackDrawsNoFramesOfItsOwn()
    {
        RunningApp running;
        QVERIFY(running.start());
        running.play(u"clip10.mp4"_s); // 30 frames a second
        running.keepControlsShown();
        QTRY_VERIFY(running.mpvProperty("time-pos").toDouble() > 0.5);

        // The time and the played part move on every tick of the position, but they change
        // together with the picture: the window draws no more frames than the video has.
        std::atomic<int> frames = 0;
        QObject counter;
        QObject::connect(
            running.window, &QQuickWindow::frameSwapped, &counter, [&frames] { ++frames; },
            Qt::DirectConnection);
        const double start = running.mpvProperty("time-pos").toDouble();
        const QString timeBefore = running.text("timeLabel");
        QTest::qWait(2000);
        const int drawn = frames.exchange(0);
        const double videoFrames = (running.mpvProperty("time-pos").toDouble() - start) * 30;
        QVERIFY(running.text("timeLabel") != timeBefore);
        QVERIFY2(videoFrames > 10, qPrintable(QString::number(videoFrames)));
        QVERIFY2(drawn <= videoFrames + 3,
                 qPrintable(u"%1 frames for %2 video frames"_s.arg(drawn).arg(videoFrames)));

        // With the video in picture in picture and the controls hidden, the main window has
        // nothing moving left, and draws nothing while playback goes on in the other window.
        running.engine->pip()->enterPiP();
        QVERIFY(running.engine->pip()->isActive());
        QMetaObject::invokeMethod(running.view, "setControlsShown", Q_ARG(QVariant, false),
                                  Q_ARG(QVariant, 0));
        const double inPiP = running.mpvProperty("time-pos").toDouble();
        QVERIFY(waitForStillScene(running.window, 1500, 4000)); // well before the clip ends
        QVERIFY(running.mpvProperty("time-pos").toDouble() > inPiP + 1);
        running.engine->pip()->exitPiP();
    }

    void controlBarButtonsVolumeAndAccessibility()
    {
        RunningApp running;
        QVERIFY(running.start());
        running.play(u"clip30.mp4"_s);
        PlaybackEngine& engine = *running.engine;
        UserCommands& commands = *running.app->commands();
        running.keepControlsShown();
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
};

VELMAR_TEST_MAIN(ControlBarTest)
#include "tst_controlbar.moc"
