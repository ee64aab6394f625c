// Display-sleep inhibition through org.freedesktop.ScreenSaver: held exactly while playing.
// A stand-in screen saver answers on the private session bus the tests run in.
#include "core/engine/PlaybackEngine.h"
#include "support/TestSupport.h"

#include <QCoroTask>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QMutex>
#include <QThread>

using namespace velmar::test;
using Kind = PlayerState::Kind;

/// Records what the player asks of the desktop's screen saver. Lives on its own thread because
/// the player's calls block the GUI thread until they are answered.
class ScreenSaverStandIn : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.ScreenSaver")

public:
    QList<uint> held() const
    {
        QMutexLocker lock(&m_mutex);
        return m_held;
    }
    QStringList requests() const
    {
        QMutexLocker lock(&m_mutex);
        return m_requests;
    }

public Q_SLOTS:
    uint Inhibit(const QString& application, const QString& reason)
    {
        QMutexLocker lock(&m_mutex);
        m_requests << application + QLatin1Char('|') + reason;
        m_held << ++m_lastCookie;
        return m_lastCookie;
    }

    void UnInhibit(uint cookie)
    {
        QMutexLocker lock(&m_mutex);
        m_held.removeOne(cookie);
    }

private:
    mutable QMutex m_mutex; // the test reads what the service thread writes
    QList<uint> m_held;
    QStringList m_requests;
    uint m_lastCookie = 100;
};

class ScreenSaverTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void withoutAScreenSaverPlaybackGoesOn()
    {
        QVERIFY(QDBusConnection::sessionBus().isConnected());
        auto engine = makeSilentEngine();
        loadAndWait(*engine, fixtureUrl(QStringLiteral("audio-only.m4a")));
        QCOMPARE(engine->state().kind(), Kind::Playing);
        QVERIFY(!engine->sleepPreventer().isActive());
    }

    void heldWhilePlayingOnly()
    {
        QThread serviceThread;
        serviceThread.start();
        auto* standIn = new ScreenSaverStandIn;
        standIn->moveToThread(&serviceThread);
        QDBusConnection service =
            QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("saver"));
        QVERIFY(service.registerObject(QStringLiteral("/org/freedesktop/ScreenSaver"), standIn,
                                       QDBusConnection::ExportAllSlots));
        QVERIFY(service.registerService(QStringLiteral("org.freedesktop.ScreenSaver")));

        {
            auto engine = makeSilentEngine();
            loadAndWait(*engine, fixtureUrl(QStringLiteral("audio-only.m4a")));
            QCOMPARE(engine->state().kind(), Kind::Playing);
            QVERIFY(engine->sleepPreventer().isActive());
            QCOMPARE(standIn->held(), QList<uint>{engine->sleepPreventer().assertionID()});
            QCOMPARE(standIn->requests(),
                     QStringList{QStringLiteral("VelmarPlayer|VelmarPlayer video playback")});

            engine->pause();
            QVERIFY(!engine->sleepPreventer().isActive());
            QVERIFY(standIn->held().isEmpty());
            engine->play();
            QCOMPARE(standIn->held().size(), 1);

            // Reaching the end lets the display sleep again.
            QCoro::waitFor(engine->seek(11.8));
            QTRY_VERIFY_WITH_TIMEOUT(engine->isAtEnd(), 30000);
            QVERIFY(standIn->held().isEmpty());

            // A file libmpv rejects holds nothing either.
            engine->play();
            QCOMPARE(standIn->held().size(), 1);
            loadAndWait(*engine, fixtureUrl(QStringLiteral("truncated.mp4")));
            QTRY_COMPARE_WITH_TIMEOUT(engine->state().kind(), Kind::Error, 5000);
            QVERIFY(standIn->held().isEmpty());

            loadAndWait(*engine, fixtureUrl(QStringLiteral("audio-only.m4a")));
            QCOMPARE(standIn->held().size(), 1);
        }
        // An engine that goes away while playing releases its hold.
        QVERIFY(standIn->held().isEmpty());

        service.unregisterService(QStringLiteral("org.freedesktop.ScreenSaver"));
        QDBusConnection::disconnectFromBus(QStringLiteral("saver"));
        serviceThread.quit();
        serviceThread.wait();
        delete standIn;
    }
};

VELMAR_TEST_MAIN(ScreenSaverTest)
#include "tst_screensaver.moc"
