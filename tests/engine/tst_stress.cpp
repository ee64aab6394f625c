// Thousands of pause toggles, seeks and scrubs while the video renders, then teardown:
// nothing may hang or crash, and the engine must end in a consistent state.
#include "core/engine/MPVDecoder.h"
#include "core/engine/PlaybackEngine.h"
#include "support/TestSupport.h"

#include <QCoroTask>
#include <QRandomGenerator>

using namespace velmar::test;

class StressTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void hammerTheEngineWhileRendering()
    {
        auto engine = makeSilentEngine();
        auto player = std::make_unique<PlayerWindow>(engine.get());
        QVERIFY(player->showAndWaitForRenderContext());
        loadAndWait(*engine, fixtureUrl(QStringLiteral("clip30.mp4")));
        QCOMPARE(engine->state().kind(), PlayerState::Kind::Playing);

        QRandomGenerator random(20261122);
        constexpr int kOperations = 3000;
        for (int i = 0; i < kOperations; ++i) {
            const double target = random.bounded(30.0);
            switch (random.bounded(6)) {
            case 0:
                engine->state().kind() == PlayerState::Kind::Playing ? engine->pause()
                                                                     : engine->play();
                break;
            case 1:
                engine->seek(target);
                break;
            case 2:
                engine->seekRelative(random.bounded(20.0) - 10.0);
                break;
            case 3:
                engine->scrubBegan();
                engine->scrub(target);
                break;
            case 4:
                engine->scrub(target);
                engine->scrubEnded(target);
                break;
            case 5:
                engine->decoder()->getTrackList();
                break;
            }
            if (i % 10 == 0)
                QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        }
        // Leave it playing and make sure it still answers and advances.
        engine->scrubEnded(1.0);
        QTest::qWait(300);
        if (engine->state().kind() != PlayerState::Kind::Playing)
            engine->play();
        QVERIFY(engine->state().isActive());
        QCOMPARE(engine->state().kind(), PlayerState::Kind::Playing);
        const double before = engine->currentTime();
        QTRY_VERIFY_WITH_TIMEOUT(engine->currentTime() != before, 5000);

        player.reset();
        engine.reset();
    }
};

VELMAR_TEST_MAIN(StressTest)
#include "tst_stress.moc"
