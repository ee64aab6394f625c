// The video surface in a real window: the picture is the video the right way up, and a resize
// while paused redraws the same frame at the new size.
#include "core/engine/PlaybackEngine.h"
#include "support/TestSupport.h"

#include <QCoroTask>

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

} // namespace

class RenderTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void pictureIsTheVideoRightWayUpAndSurvivesAResize()
    {
        auto engine = makeSilentEngine();
        auto player = std::make_unique<PlayerWindow>(engine.get(), QSize(640, 360));
        QVERIFY(player->showAndWaitForRenderContext());
        loadAndWait(*engine, fixtureUrl(QStringLiteral("clip10.mp4")));
        QCOMPARE(engine->state().kind(), PlayerState::Kind::Playing);
        QTRY_VERIFY_WITH_TIMEOUT(engine->currentTime() > 0.5, 5000);
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
        engine.reset();
    }
};

VELMAR_TEST_MAIN(RenderTest)
#include "tst_render.moc"
