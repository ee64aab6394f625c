#pragma once

#include <QAbstractListModel>
#include <QPointer>
#include <QtQml/qqmlregistration.h>

class KeyBindingManager;

/// The key-binding editor's table: one row per action with its key in the desktop's notation
/// and the other actions bound to the same key, if any. Recording a key rebinds the row's action
/// through the manager, which saves it. GUI thread only.
class KeyBindingListModel : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(KeyBindingManager* manager READ manager WRITE setManager NOTIFY managerChanged)

public:
    enum Role { ActionNameRole = Qt::UserRole + 1, KeyTextRole, ConflictRole };

    using QAbstractListModel::QAbstractListModel;

    KeyBindingManager* manager() const { return m_manager; }
    void setManager(KeyBindingManager* manager);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    /// Binds the row's action to a pressed key. False (and nothing changes) for keys that cannot
    /// be bound, such as a modifier on its own.
    Q_INVOKABLE bool record(int row, int qtKey, int qtModifiers);
    Q_INVOKABLE void resetToDefaults();

Q_SIGNALS:
    void managerChanged();

private:
    QString conflictText(int row) const;

    QPointer<KeyBindingManager> m_manager;
};
