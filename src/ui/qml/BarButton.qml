import QtQuick
import QtQuick.Controls
import Velmar

// A button of the control bar: an icon (or a short text), named for screen readers, with the
// same name as its tooltip. It never takes the keyboard focus, so keys stay with the player.
RoundButton {
    id: root

    property string symbol
    property string label
    // Highlighted while what it opens is open.
    property bool active: false

    implicitWidth: 30
    implicitHeight: 30
    padding: 0
    flat: true
    focusPolicy: Qt.NoFocus
    display: symbol.length > 0 ? AbstractButton.IconOnly : AbstractButton.TextOnly
    icon.name: symbol.length > 0 ? SymbolIcons.name(symbol) : ""
    icon.color: active ? "#ff9f0a" : "white"
    icon.width: 18
    icon.height: 18
    font.pixelSize: 12
    font.weight: Font.DemiBold
    palette.buttonText: "white"
    Accessible.name: label
    ToolTip.visible: hovered && label.length > 0
    ToolTip.text: label
    ToolTip.delay: 600
}
