import QtQuick
import QtQuick.Controls
import QtQuick.Controls.Material

// A menu item that shows its keyboard shortcut at the right, in the desktop's notation.
MenuItem {
    id: item

    property string shortcutText: ""

    contentItem: Item {
        implicitWidth: label.implicitWidth + (shortcut.text.length > 0 ? shortcut.implicitWidth + 32 : 0)
        implicitHeight: label.implicitHeight

        Text {
            id: label
            anchors.left: parent.left
            anchors.verticalCenter: parent.verticalCenter
            text: item.text
            font: item.font
            color: item.enabled ? item.Material.foreground : item.Material.hintTextColor
        }
        Text {
            id: shortcut
            anchors.right: parent.right
            anchors.verticalCenter: parent.verticalCenter
            text: item.shortcutText
            font: item.font
            color: item.Material.hintTextColor
        }
    }
}
