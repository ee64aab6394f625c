#include "KeyBindingManager.h"

#include "core/engine/PlaybackEngine.h"
#include "infrastructure/preferences/Preferences.h"
#include "QtKeyTranslation.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QQuickItem>
#include <QQuickWindow>
#include <QSet>

namespace {

constexpr qint64 kSeekRepeatIntervalMs = 100;

bool isTextInput(const QQuickItem* item)
{
    return item && (item->inherits("QQuickTextInput") || item->inherits("QQuickTextEdit"));
}

} // namespace

KeyBindingManager::KeyBindingManager(QObject* parent)
    : QObject(parent)
{
    m_clock.start();
    const Preferences preferences;
    const auto stored = preferences.contains(storageKey)
                            ? KeyBindings::fromJson(preferences.dataValue(storageKey))
                            : std::nullopt;
    if (!stored) {
        m_bindings = KeyBindings::defaults();
        return;
    }
    m_bindings = *stored;
    QSet<PlayerAction> present;
    for (const KeyBinding& binding : m_bindings)
        present.insert(binding.action);
    for (const KeyBinding& binding : KeyBindings::defaults()) {
        if (!present.contains(binding.action))
            m_bindings << binding;
    }
}

void KeyBindingManager::setEngine(PlaybackEngine* engine)
{
    m_engine = engine;
}

void KeyBindingManager::start(QQuickWindow* mainWindow)
{
    if (m_mainWindow == mainWindow)
        return;
    stop();
    m_mainWindow = mainWindow;
    if (m_mainWindow)
        m_mainWindow->installEventFilter(this);
}

void KeyBindingManager::stop()
{
    if (m_mainWindow)
        m_mainWindow->removeEventFilter(this);
    m_mainWindow = nullptr;
}

bool KeyBindingManager::eventFilter(QObject* watched, QEvent* event)
{
    // The type test comes first: the window also sends events while it is being destroyed,
    // when it can no longer be looked at as a window.
    if (event->type() == QEvent::KeyPress && watched == m_mainWindow &&
        handleKeyEvent(*static_cast<QKeyEvent*>(event))) {
        event->accept();
        return true;
    }
    return QObject::eventFilter(watched, event);
}

void KeyBindingManager::updateBinding(PlayerAction action, quint16 keyCode, quint64 modifiers)
{
    for (KeyBinding& binding : m_bindings) {
        if (binding.action == action) {
            binding.keyCode = keyCode;
            binding.modifiers = modifiers;
            Q_EMIT bindingsChanged();
            break;
        }
    }
    save();
}

void KeyBindingManager::resetToDefaults()
{
    m_bindings = KeyBindings::defaults();
    Q_EMIT bindingsChanged();
    save();
}

void KeyBindingManager::save()
{
    Preferences().setData(storageKey, KeyBindings::toJson(m_bindings));
}

bool KeyBindingManager::handleKeyEvent(const QKeyEvent& event)
{
    // Only the player window takes keys, and never from a text field being edited.
    if (!m_mainWindow || QGuiApplication::focusWindow() != m_mainWindow)
        return false;
    if (isTextInput(m_mainWindow->activeFocusItem()))
        return false;

    const std::optional<quint16> keyCode =
        QtKeyTranslation::keyCode(event.key(), event.modifiers());
    if (!keyCode)
        return false;
    const quint64 modifiers = QtKeyTranslation::modifierBits(event.modifiers());
    const auto match = std::find_if(m_bindings.begin(), m_bindings.end(), [&](const KeyBinding& b) {
        return b.keyCode == *keyCode && b.modifiers == modifiers;
    });
    if (match == m_bindings.end())
        return false;

    if (event.isAutoRepeat() && PlayerActions::isSeek(match->action)) {
        const qint64 now = m_clock.elapsed();
        if (m_lastSeekMs >= 0 && now - m_lastSeekMs < kSeekRepeatIntervalMs)
            return true; // swallowed: a held key must not queue up seeks
        m_lastSeekMs = now;
    }
    Q_EMIT actionTriggered(match->action);
    executeAction(match->action);
    return true;
}
