// The started application over a real engine and real media, and the ways a test reaches into
// its window: items by name, synthesized mouse, wheel, key and drop events, and what a screen
// reader would read.
#pragma once

#include "app/AppDelegate.h"
#include "app/UserCommands.h"
#include "engine/MPVDecoder.h"
#include "engine/PlaybackEngine.h"
#include "features/bookmark/BookmarkManager.h"
#include "features/filter/FilterManager.h"
#include "features/osd/OSDManager.h"
#include "features/pip/PiPManager.h"
#include "features/playback/ABLoopManager.h"
#include "features/playlist/PlaylistManager.h"
#include "features/track/TrackManager.h"
#include "features/window/WindowState.h"
#include "infrastructure/keybinding/KeyBindingManager.h"
#include "infrastructure/mpv/MPVProperties.h"
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
#include <sys/stat.h>
#include <unistd.h>

namespace velmar::test {

using namespace Qt::StringLiterals;

/// The names a screen reader finds on screen, through Qt's accessibility interfaces.
inline QStringList accessibleNames(QAccessibleInterface* node)
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

/// The started application with its window drawn, silent, at half volume. Any error libmpv
/// logs fails the running test, unless the test expects some (broken files).
struct RunningApp
{
    std::unique_ptr<AppDelegate> app = std::make_unique<AppDelegate>(libraryPath());
    PlaybackEngine* engine = app->engine();
    QQuickWindow* window = nullptr;
    QQuickItem* view = nullptr;
    LibmpvErrorGuard libmpvErrors{engine->decoder()};

    ~RunningApp()
    {
        app.reset();
        libmpvErrors.check();
    }
    void expectLibmpvErrors() { libmpvErrors.expect(); }

    bool start(const QList<QUrl>& files = {})
    {
        engine->decoder()->setMPVString(MPVName::ao, u"null"_s);
        engine->decoder()->setMPVString(MPVName::hwdec, u"no"_s);
        if (!app->start(files) || !QTest::qWaitForWindowExposed(app->mainWindow()))
            return false;
        window = app->mainWindow();
        engine->setVolume(0.5f);
        QQuickItem* video = item("videoView");
        // With files to open, the interface over the video is made in the background.
        QQuickItem* loader = item("playerInterfaceLoader");
        constexpr int kReady = 1; // the loader's status once its item is complete
        if (!video || !loader ||
            !QTest::qWaitFor([loader] { return loader->property("status").toInt() == kReady; }))
            return false;
        view = item("playerView");
        return view &&
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
    /// The part of the window over the video: menus, dialogs, the player view.
    QObject* playerInterface() const { return item("playerInterface"); }
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
    /// Brings the controls up and keeps them there, however slowly the test goes on.
    void keepControlsShown()
    {
        moveMouse(center());
        window->findChild<QObject*>(u"controlsHideTimer"_s)->setProperty("running", false);
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

} // namespace velmar::test
