#include "KeyBindingManager.h"

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

/// Whether the item sits in an open popup (a menu, a dialog drawn in the window).
bool isInPopup(const QQuickItem* item)
{
    for (; item; item = item->parentItem()) {
        if (item->inherits("QQuickPopupItem"))
            return true;
    }
    return false;
}

} // namespace

KeyBindingManager::KeyBindingManager(QObject* parent)
    : QObject(parent)
{
    m_clock.start();
    const Preferences preferences;
    const auto stored =
        preferences.contains(PreferenceKeys::keyBindings)
            ? KeyBindings::fromJson(preferences.dataValue(PreferenceKeys::keyBindings))
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

void KeyBindingManager::start(QQuickWindow* mainWindow)
{
    if (m_mainWindow == mainWindow)
        return;
    stop();
    m_mainWindow = mainWindow;
    if (m_mainWindow)
        m_mainWindow->installEventFilter(this);
}

void KeyBindingManager::setFloatingWindow(QQuickWindow* window)
{
    if (m_floatingWindow)
        m_floatingWindow->removeEventFilter(this);
    m_floatingWindow = window;
    if (m_floatingWindow)
        m_floatingWindow->installEventFilter(this);
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
    if (event->type() == QEvent::KeyPress &&
        (watched == m_mainWindow || (m_floatingWindow && watched == m_floatingWindow)) &&
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
    m_writer.setValue(PreferenceKeys::keyBindings, KeyBindings::toJson(m_bindings));
}

bool KeyBindingManager::keysBelongToPlayer() const
{
    // Only the player's windows take keys, and never from a text field being edited or while
    // one of its menus or dialogs has the keyboard: arrows and Return navigate those.
    QWindow* focusWindow = QGuiApplication::focusWindow();
    QQuickWindow* window = !focusWindow                      ? nullptr
                           : focusWindow == m_mainWindow     ? m_mainWindow.get()
                           : focusWindow == m_floatingWindow ? m_floatingWindow.get()
                                                             : nullptr;
    if (!window)
        return false;
    const QQuickItem* focus = window->activeFocusItem();
    return !isTextInput(focus) && !isInPopup(focus);
}

bool KeyBindingManager::handleKeyEvent(const QKeyEvent& event)
{
    if (!keysBelongToPlayer())
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
    return true;
}
