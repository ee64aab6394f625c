#pragma once

#include <QObject>
#include <QPointer>
#include <QtQml/qqmlregistration.h>
#include <QVariantList>

class KeyBindingManager;
Q_MOC_INCLUDE("infrastructure/keybinding/KeyBindingManager.h")

/// What the shortcut guide lists: every action with its current key in the desktop's notation
/// ("Ctrl+K"), grouped by what it acts on, then the window's fixed keys. Follows the bindings
/// as they change. GUI thread only.
class ShortcutGuideModel : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(KeyBindingManager* manager READ manager WRITE setManager NOTIFY managerChanged)
    /// [{title, entries: [{name, keys}]}], in the order shown.
    Q_PROPERTY(QVariantList sections READ sections NOTIFY sectionsChanged)

public:
    using QObject::QObject;

    KeyBindingManager* manager() const { return m_manager; }
    void setManager(KeyBindingManager* manager);
    QVariantList sections() const;

Q_SIGNALS:
    void managerChanged();
    void sectionsChanged();

private:
    QPointer<KeyBindingManager> m_manager;
};
