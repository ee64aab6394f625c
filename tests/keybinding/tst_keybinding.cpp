// Key bindings: the stored table and its repair, key presses on a real window reaching their
// actions, the repeat throttle, keys that must be left alone, and what each action does to a
// real engine playing a fixture.
#include "app/KeyDispatch.h"
#include "app/Player.h"
#include "engine/MPVDecoder.h"
#include "engine/PlaybackEngine.h"
#include "features/osd/OSDManager.h"
#include "features/playback/ABLoopManager.h"
#include "infrastructure/keybinding/KeyBindingManager.h"
#include "infrastructure/keybinding/QtKeyTranslation.h"
#include "infrastructure/preferences/Preferences.h"
#include "support/TestSupport.h"
#include "ui/SettingsModel.h"

#include <QCoroTask>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>

using namespace velmar::test;
using Kind = PlayerState::Kind;

namespace {

void storeBindings(const QByteArray& data)
{
    Preferences().setData(PreferenceKeys::keyBindings, data);
}

/// A main window that can take the keyboard focus, with a text field in it, and a binding
/// manager (without an engine) taking its keys.
struct KeyWindow
{
    QQmlEngine qml;
    QQuickWindow window;
    std::unique_ptr<QQuickItem> textField;
    KeyBindingManager manager;
    QSignalSpy triggered{&manager, &KeyBindingManager::actionTriggered};

    KeyWindow()
    {
        window.resize(320, 200);
        QQmlComponent component(&qml);
        component.setData("import QtQuick\nTextInput { width: 100; height: 20 }", QUrl());
        textField.reset(qobject_cast<QQuickItem*>(component.create()));
        textField->setParentItem(window.contentItem());
    }

    bool showActive()
    {
        manager.start(&window);
        window.show();
        window.requestActivate();
        return QTest::qWaitForWindowActive(&window);
    }

    void press(int key, Qt::KeyboardModifiers modifiers = {}, bool autoRepeat = false)
    {
        QKeyEvent event(QEvent::KeyPress, key, modifiers, QString(), autoRepeat);
        QGuiApplication::sendEvent(&window, &event);
    }
};

} // namespace

class KeyBindingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        freshStart();
        failOnWarnings();
    }

    void defaultTableAndItsTexts()
    {
        QSet<PlayerAction> actions; // one binding for each action
        for (const KeyBinding& binding : KeyBindings::defaults())
            actions.insert(binding.action);
        QCOMPARE(actions.size(), KeyBindings::defaults().size());

        QCOMPARE(
            (KeyBinding{PlayerAction::seekForwardLarge, 124, KeyModifier::shift}).displayString(),
            QStringLiteral("\u21e7\u2192"));
        const quint64 all =
            KeyModifier::command | KeyModifier::shift | KeyModifier::option | KeyModifier::control;
        QCOMPARE((KeyBinding{PlayerAction::rotateVideo, 40, all}).displayString(),
                 QStringLiteral("^\u2325\u21e7\u2318K"));
        QCOMPARE(keyCodeToString(49), QStringLiteral("Space"));
        QCOMPARE(keyCodeToString(36), QStringLiteral("Return"));
        QCOMPARE(keyCodeToString(122), QStringLiteral("Key122"));
        QCOMPARE(PlayerActions::fromRawValue(QStringLiteral("cycleAudioTrack")),
                 std::optional(PlayerAction::cycleAudioTrack));
        QCOMPARE(PlayerActions::fromRawValue(QStringLiteral("CycleAudioTrack")), std::nullopt);
    }

    void jsonFormRoundTripsAndRejectsIncompleteEntries()
    {
        const QByteArray json = KeyBindings::toJson(KeyBindings::defaults());
        const QJsonArray array = QJsonDocument::fromJson(json).array();
        QCOMPARE(array.size(), 28);
        const QJsonObject first = array.first().toObject();
        QCOMPARE(first.value(QStringLiteral("action")).toString(),
                 QStringLiteral("togglePlayPause"));
        QCOMPARE(first.value(QStringLiteral("keyCode")).toInt(), 49);
        QCOMPARE(first.value(QStringLiteral("modifiers")).toInt(), 0);
        QCOMPARE(KeyBindings::fromJson(json), std::optional(KeyBindings::defaults()));

        QVERIFY(!KeyBindings::fromJson("[{\"action\": \"toggleMute\", \"keyCode\": 46}]"));
        // A key number must be one: 12.5 is no key, and must not quietly become key 0.
        QVERIFY(!KeyBindings::fromJson(
            "[{\"action\": \"toggleMute\", \"keyCode\": 12.5, \"modifiers\": 0}]"));
        QVERIFY(!KeyBindings::fromJson("{\"action\": \"toggleMute\"}"));
        QVERIFY(!KeyBindings::fromJson("not json"));
    }

    void storedTableIsMergedWithMissingDefaults()
    {
        storeBindings("[{\"action\": \"toggleMute\", \"keyCode\": 4, \"modifiers\": 0}]");
        KeyBindingManager manager;
        QCOMPARE(manager.bindings().size(), 28);
        QCOMPARE(manager.bindings().first(), (KeyBinding{PlayerAction::toggleMute, 4, 0}));
        // The others follow in default order, the stored action not repeated.
        QList<KeyBinding> rest = KeyBindings::defaults();
        rest.removeIf([](const KeyBinding& b) { return b.action == PlayerAction::toggleMute; });
        QCOMPARE(manager.bindings().mid(1), rest);
    }

    void unreadableTableFallsBackToDefaultsAndStaysStored()
    {
        const QByteArray unknown =
            "[{\"action\": \"toggleMute\", \"keyCode\": 4, \"modifiers\": 0},"
            " {\"action\": \"launchRockets\", \"keyCode\": 5, \"modifiers\": 0}]";
        for (const QByteArray& stored : {unknown, QByteArray("\x01garbage")}) {
            storeBindings(stored);
            KeyBindingManager manager;
            QCOMPARE(manager.bindings(), KeyBindings::defaults());
            QCOMPARE(Preferences().dataValue(PreferenceKeys::keyBindings), stored);
        }
    }

    void changesAreSavedAndSurviveARestart()
    {
        auto onDisk = [] {
            QFile file(QSettings(QSettings::IniFormat, QSettings::UserScope,
                                 QStringLiteral("VelmarPlayer"), QStringLiteral("VelmarPlayer"))
                           .fileName());
            return file.open(QIODevice::ReadOnly) && file.readAll().contains("KeyBindings");
        };
        {
            KeyBindingManager manager;
            QSignalSpy changed(&manager, &KeyBindingManager::bindingsChanged);
            manager.updateBinding(PlayerAction::toggleMute, 0, KeyModifier::command);
            QCOMPARE(changed.size(), 1);
            // The file is written a moment later off the GUI thread, or when the manager goes.
            QVERIFY(!onDisk());
        }
        QVERIFY(onDisk());
        KeyBindingManager reloaded;
        const auto mute =
            std::find_if(reloaded.bindings().begin(), reloaded.bindings().end(),
                         [](auto& b) { return b.action == PlayerAction::toggleMute; });
        QCOMPARE(*mute, (KeyBinding{PlayerAction::toggleMute, 0, KeyModifier::command}));

        reloaded.resetToDefaults();
        QCOMPARE(KeyBindingManager().bindings(), KeyBindings::defaults());
        QCOMPARE(Preferences().dataValue(PreferenceKeys::keyBindings),
                 KeyBindings::toJson(KeyBindings::defaults()));
    }

    void everyDefaultKeyReachesItsAction()
    {
        KeyWindow keys;
        QVERIFY(keys.showActive());
        KeyBindingManager& manager = keys.manager;
        QSignalSpy& triggered = keys.triggered;

        for (const KeyBinding& binding : KeyBindings::defaults()) {
            const std::optional<int> qtKey = QtKeyTranslation::qtKey(binding.keyCode);
            QVERIFY2(qtKey, qPrintable(binding.displayString()));
            triggered.clear();
            QTest::keyClick(&keys.window, Qt::Key(*qtKey),
                            QtKeyTranslation::qtModifiers(binding.modifiers));
            QCOMPARE(triggered.size(), 1);
            QCOMPARE(triggered.first().first().value<PlayerAction>(), binding.action);
        }

        // Shifted punctuation arrives as its shifted character and still names the same key.
        manager.updateBinding(PlayerAction::setLoopB, 30, KeyModifier::shift);
        triggered.clear();
        QTest::keyClick(&keys.window, Qt::Key_BraceRight, Qt::ShiftModifier);
        QCOMPARE(triggered.size(), 1);
        QCOMPARE(triggered.first().first().value<PlayerAction>(), PlayerAction::setLoopB);

        // Keypad digits are keys of their own; an unbound one passes through.
        triggered.clear();
        QTest::keyClick(&keys.window, Qt::Key_5, Qt::KeypadModifier);
        QCOMPARE(triggered.size(), 0);
    }

    void heldSeekKeysAreThrottledOthersAreNot()
    {
        KeyWindow keys;
        QVERIFY(keys.showActive());
        QSignalSpy& triggered = keys.triggered;

        keys.press(Qt::Key_Right);
        keys.press(Qt::Key_Right, {}, true); // the first repeat passes
        for (int i = 0; i < 5; ++i)
            keys.press(Qt::Key_Right, {}, true);
        QCOMPARE(triggered.size(), 2);
        QTest::qWait(120);
        keys.press(Qt::Key_Right, {}, true);
        QCOMPARE(triggered.size(), 3);

        triggered.clear();
        for (int i = 0; i < 6; ++i)
            keys.press(Qt::Key_Up, {}, true);
        QCOMPARE(triggered.size(), 6);
    }

    void keysAreLeftAloneInTextFieldsAndOtherWindows()
    {
        KeyWindow keys;
        QVERIFY(keys.showActive());
        QSignalSpy& triggered = keys.triggered;

        keys.textField->forceActiveFocus();
        QTest::keyClick(&keys.window, Qt::Key_M);
        QCOMPARE(triggered.size(), 0);
        QCOMPARE(keys.textField->property("text").toString(), QStringLiteral("m"));

        keys.textField->setFocus(false);
        keys.window.contentItem()->forceActiveFocus();
        QTest::keyClick(&keys.window, Qt::Key_M);
        QCOMPARE(triggered.size(), 1);

        // An open menu of the player's own takes the keys: arrows move through it.
        QQmlComponent menuComponent(&keys.qml);
        menuComponent.setData("import QtQuick.Controls\nMenu { MenuItem { text: \"one\" }"
                              " MenuItem { text: \"two\" } }",
                              QUrl());
        std::unique_ptr<QObject> menu(menuComponent.create());
        QVERIFY(menu);
        menu->setProperty("parent", QVariant::fromValue(keys.window.contentItem()));
        QMetaObject::invokeMethod(menu.get(), "open");
        QTRY_VERIFY(menu->property("opened").toBool());
        QTest::keyClick(&keys.window, Qt::Key_Down);
        QTest::keyClick(&keys.window, Qt::Key_Space);
        QCOMPARE(triggered.size(), 1);
        QTRY_VERIFY(!menu->property("visible").toBool()); // Space chose the item
        menu.reset();

        QQuickWindow other;
        other.resize(200, 100);
        other.show();
        other.requestActivate();
        QVERIFY(QTest::qWaitForWindowActive(&other));
        keys.press(Qt::Key_M);
        QTest::keyClick(&other, Qt::Key_M);
        QCOMPARE(triggered.size(), 1);
    }

    void actionsActOnARealEngine()
    {
        TestPlayer player;
        PlaybackEngine& engine = player.engine();
        KeyDispatch& keys = player.player().keyDispatch();
        player.open(fixtureUrl(QStringLiteral("clip30.mp4")));

        keys.execute(PlayerAction::togglePlayPause);
        QCOMPARE(engine.state().kind(), Kind::Paused);
        QCOMPARE(player.osdText(), QStringLiteral("Paused"));

        // Seek steps set in the settings take effect on the very next press, before the file
        // has them; non-positive means default.
        QCoro::waitFor(engine.seek(2.0));
        SettingsModel settings;
        settings.setSeekSmallStep(12.0);
        keys.execute(PlayerAction::seekForwardSmall);
        QTRY_COMPARE_WITH_TIMEOUT(qRound(engine.currentTime()), 14, 5000);
        settings.setSeekSmallStep(0.0);
        keys.execute(PlayerAction::seekBackwardSmall);
        QTRY_COMPARE_WITH_TIMEOUT(qRound(engine.currentTime()), 9, 5000);
        settings.setSeekLargeStep(15.0);
        keys.execute(PlayerAction::seekForwardLarge);
        QTRY_COMPARE_WITH_TIMEOUT(qRound(engine.currentTime()), 24, 5000);

        keys.execute(PlayerAction::rotateVideo);
        QCOMPARE(engine.videoRotation(), 90);
        keys.execute(PlayerAction::audioDelayIncrease);
        QCOMPARE(player.osdText(), QStringLiteral("Audio delay: +0.10s"));
        keys.execute(PlayerAction::audioDelayReset);
        QCOMPARE(engine.adjustments()->audioDelay(), 0.0);
        QCOMPARE(player.osdText(), QStringLiteral("Audio delay: 0.0s"));

        keys.execute(PlayerAction::setLoopA);
        QVERIFY(engine.abLoop()->pointA().has_value());
        keys.execute(PlayerAction::clearLoop);
        QVERIFY(!engine.abLoop()->pointA().has_value());
        QCOMPARE(player.osdText(), QStringLiteral("Loop cleared"));

        keys.execute(PlayerAction::toggleMute);
        QVERIFY(engine.isMuted());
        keys.execute(PlayerAction::volumeDown);
        QVERIFY(qAbs(engine.volume() - 0.95f) < 1e-4f);

        QSignalSpy fullScreen(&keys, &KeyDispatch::fullScreenToggleRequested);
        keys.execute(PlayerAction::toggleFullScreen);
        QCOMPARE(fullScreen.size(), 1);
        keys.execute(PlayerAction::togglePlayPause);
        QCOMPARE(engine.state().kind(), Kind::Playing);
        QCOMPARE(player.osdText(), QStringLiteral("Playing"));
    }
};

VELMAR_TEST_MAIN(KeyBindingTest)
#include "tst_keybinding.moc"
