#include "KeyBindingListModel.h"

#include "infrastructure/keybinding/KeyBindingManager.h"
#include "infrastructure/keybinding/QtKeyTranslation.h"

void KeyBindingListModel::setManager(KeyBindingManager* manager)
{
    if (m_manager == manager)
        return;
    beginResetModel();
    if (m_manager)
        disconnect(m_manager, nullptr, this, nullptr);
    m_manager = manager;
    if (m_manager) {
        connect(m_manager, &KeyBindingManager::bindingsChanged, this,
                [this] { Q_EMIT dataChanged(index(0), index(rowCount() - 1)); });
    }
    endResetModel();
    Q_EMIT managerChanged();
}

int KeyBindingListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() || !m_manager ? 0 : int(m_manager->bindings().size());
}

QVariant KeyBindingListModel::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid) || !m_manager)
        return {};
    const KeyBinding& binding = m_manager->bindings().at(index.row());
    switch (role) {
    case Qt::DisplayRole:
        return PlayerActions::displayName(binding.action);
    case ActionNameRole:
        return PlayerActions::rawValue(binding.action);
    case KeyTextRole:
        return QtKeyTranslation::shortcutText(binding.keyCode, binding.modifiers);
    case ConflictRole:
        return conflictText(index.row());
    }
    return {};
}

QHash<int, QByteArray> KeyBindingListModel::roleNames() const
{
    return {{Qt::DisplayRole, "displayName"},
            {ActionNameRole, "actionName"},
            {KeyTextRole, "keyText"},
            {ConflictRole, "conflict"}};
}

bool KeyBindingListModel::record(int row, int qtKey, int qtModifiers)
{
    if (!m_manager || row < 0 || row >= rowCount())
        return false;
    const auto modifiers = Qt::KeyboardModifiers::fromInt(qtModifiers);
    const std::optional<quint16> keyCode = QtKeyTranslation::keyCode(qtKey, modifiers);
    if (!keyCode)
        return false;
    m_manager->updateBinding(m_manager->bindings().at(row).action, *keyCode,
                             QtKeyTranslation::modifierBits(modifiers));
    return true;
}

void KeyBindingListModel::resetToDefaults()
{
    if (m_manager)
        m_manager->resetToDefaults();
}

QString KeyBindingListModel::conflictText(int row) const
{
    const QList<KeyBinding>& bindings = m_manager->bindings();
    const KeyBinding& mine = bindings.at(row);
    QStringList others;
    for (int i = 0; i < bindings.size(); ++i) {
        const KeyBinding& other = bindings.at(i);
        if (i != row && other.keyCode == mine.keyCode && other.modifiers == mine.modifiers)
            others << PlayerActions::displayName(other.action);
    }
    return others.isEmpty() ? QString() : QStringLiteral("Also bound to ") + others.join(u", ");
}
