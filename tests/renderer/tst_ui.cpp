// The real main window (Main.qml) over a real engine: each engine state shows its screen, and
// the on-screen display draws its message over the video.
#include "app/AppDelegate.h"
#include "core/engine/MPVDecoder.h"
#include "core/engine/PlaybackEngine.h"
#include "features/osd/OSDManager.h"
#include "support/TestSupport.h"

#include <QQuickItem>
#include <QtQml/qqmlextensionplugin.h>

Q_IMPORT_QML_PLUGIN(VelmarPlugin)

using namespace velmar::test;

namespace {

/// Share of pixels in the rectangle that are bright (text, icons, the OSD capsule).
double brightShare(const QImage& image, const QRect& area)
{
    int bright = 0;
    for (int y = area.top(); y <= area.bottom(); ++y)
        for (int x = area.left(); x <= area.right(); ++x)
            bright += qGray(image.pixel(x, y)) > 110 ? 1 : 0;
    return double(bright) / (area.width() * area.height());
}

QString visibleTexts(QQuickItem* item)
{
    QStringList texts;
    for (QQuickItem* child : item->childItems()) {
        if (!child->isVisible())
            continue;
        const QVariant text = child->property("text");
        if (text.isValid() && !text.toString().isEmpty())
            texts << text.toString();
        const QString inner = visibleTexts(child);
        if (!inner.isEmpty())
            texts << inner;
    }
    return texts.join(QLatin1Char('|'));
}

} // namespace

class UiTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void screensFollowTheEngineAndTheOSDDraws()
    {
        auto app = std::make_unique<AppDelegate>();
        PlaybackEngine* engine = app->engine();
        engine->decoder()->setMPVString("ao", QStringLiteral("null"));
        QVERIFY(app->start({}));
        QQuickWindow* window = app->mainWindow();
        QVERIFY(QTest::qWaitForWindowExposed(window));
        QCOMPARE(window->minimumSize(), QSize(480, 270));
        QCOMPARE(window->color(), QColor(Qt::black));

        QVERIFY(visibleTexts(window->contentItem())
                    .contains(QStringLiteral("Drop a video file here  \u00b7  Ctrl+O")));
        QVERIFY(!visibleTexts(window->contentItem()).contains(QStringLiteral("Loading...")));

        loadAndWait(*engine, fixtureUrl(QStringLiteral("empty.mp4")));
        QTRY_COMPARE_WITH_TIMEOUT(engine->state().kind(), PlayerState::Kind::Error, 5000);
        QTRY_VERIFY(visibleTexts(window->contentItem())
                        .contains(QStringLiteral("Cannot play \u201cempty.mp4\u201d")));

        loadAndWait(*engine, fixtureUrl(QStringLiteral("clip10.mp4")));
        QCOMPARE(engine->state().kind(), PlayerState::Kind::Playing);
        engine->pause();
        QTRY_VERIFY(!visibleTexts(window->contentItem()).contains(QStringLiteral("Drop a video")));
        QTest::qWait(1700); // let any start-up message fade

        const int width = window->width();
        const QRect osdArea(width / 2 - 150, 30, 300, 50);
        engine->osd()->show(OSDMessage::text(QStringLiteral("Resumed at 00:12")), 5.0);
        QTRY_VERIFY(
            visibleTexts(window->contentItem()).contains(QStringLiteral("Resumed at 00:12")));
        QTest::qWait(400);
        // The capsule and its text sit over the video's top bars; they change those pixels.
        const QImage withMessage = window->grabWindow();
        QTRY_VERIFY_WITH_TIMEOUT(!engine->osd()->currentMessage().has_value(), 6000);
        QTest::qWait(500);
        const QImage withoutMessage = window->grabWindow();
        QVERIFY(withMessage.copy(osdArea) != withoutMessage.copy(osdArea));
        QVERIFY(brightShare(withoutMessage, QRect(20, 20, 60, 40)) < 0.5); // blue corner block

        app.reset();
    }
};

VELMAR_TEST_MAIN(UiTest)
#include "tst_ui.moc"
