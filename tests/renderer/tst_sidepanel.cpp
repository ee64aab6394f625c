// The side panel's tabs in the real main window: the playlist, the adjustments, the file's
// information and bookmarks, and its tracks.
#include "RunningApp.h"
#include "support/TestSupport.h"

#include <QtQml/qqmlextensionplugin.h>

Q_IMPORT_QML_PLUGIN(VelmarPlugin)

using namespace velmar::test;
using namespace Qt::StringLiterals;
using Kind = PlayerState::Kind;

class SidePanelTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        freshStart();
        failOnWarnings();
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
        QCOMPARE(engine.adjustments()->audioDelay(), 0.3);
        QVERIFY(engine.filters()->filters() != FilterManager::defaultFilters());

        // ...until Reset All, at the bottom of the panel, which the wheel scrolls to.
        QVERIFY(running.openTab(1));
        QTRY_VERIFY(running.shows("resetAllButton"));
        for (int notch = 0; notch < 10; ++notch)
            running.wheel(running.centerOf("filtersScroll"), -120);
        QTRY_VERIFY(running.item("filtersScroll")->property("atYEnd").toBool());
        running.click("resetAllButton");
        QCOMPARE(engine.videoRotation(), 0);
        QCOMPARE(engine.adjustments()->audioDelay(), 0.0);
        QCOMPARE(engine.filters()->filters(), FilterManager::defaultFilters());
        QTRY_COMPARE(running.mpvProperty("video-rotate"), u"0"_s);
        QTRY_COMPARE(running.mpvProperty("audio-delay").toDouble(), 0.0);
        // (clip30 keeps its own delay, which a file without one would take over.)
        QCoro::waitFor(engine.load(fixtureUrl(u"clip60.mp4"_s)));
        QCoro::waitFor(engine.load(clip10));
        QCOMPARE(engine.videoRotation(), 0);
        QCOMPARE(engine.adjustments()->audioDelay(), 0.0);
        QCOMPARE(engine.filters()->filters(), FilterManager::defaultFilters());

        // Paused with the panel open, the window draws nothing once the panel is still.
        engine.pause();
        QVERIFY(waitForStillScene(running.window, 2000));
    }

    void infoAndBookmarksTabs()
    {
        RunningApp running;
        QVERIFY(running.start());
        PlaybackEngine& engine = *running.engine;
        UserCommands& commands = *running.app->commands();
        running.play(u"clip10.mp4"_s);

        QVERIFY(running.openTab(2));
        const QFileInfo file(fixturePath(u"clip10.mp4"_s));
        for (const QString& line :
             {u"Title|clip10"_s, u"Size|"_s + Formats::fileSize(file.size()), u"Format|mov,mp4"_s,
              u"Modified|"_s + Formats::dateTime(file.lastModified()), u"Codec|h264"_s,
              u"Resolution|640 \u00d7 360"_s, u"Frame Rate|30.000"_s, u"Pixel Fmt|yuv420p"_s,
              u"Channels|Mono"_s, u"Sample Rate|48 kHz"_s})
            QTRY_VERIFY2(running.accessibleText().contains(line), qPrintable(line));
        // libmpv knows the bit rates once it has read a while.
        QTRY_VERIFY_WITH_TIMEOUT(QRegularExpression(u"Bitrate\\|[1-9][0-9]* kbps.*Bitrate\\|"_s)
                                     .match(running.accessibleText())
                                     .hasMatch(),
                                 10000);
        engine.pause();

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
        running.play(u"pq.mkv"_s); // a picture without sound
        QTRY_VERIFY(running.accessibleText().contains(u"No audio tracks"_s));

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

VELMAR_TEST_MAIN(SidePanelTest)
#include "tst_sidepanel.moc"
