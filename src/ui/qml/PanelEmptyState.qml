import QtQuick
import QtQuick.Controls

// What a tab shows when it has nothing to list: an optional symbol, a line and an optional hint.
Column {
    id: root

    property string symbol
    property string text
    property string hint

    spacing: 8

    SymbolIcon {
        anchors.horizontalCenter: parent.horizontalCenter
        visible: root.symbol.length > 0
        symbol: root.symbol
        size: 32
        color: "#808080"
    }
    Label {
        anchors.horizontalCenter: parent.horizontalCenter
        text: root.text
        color: "#a0a0a0"
        font.pixelSize: 14
    }
    Label {
        anchors.horizontalCenter: parent.horizontalCenter
        visible: root.hint.length > 0
        text: root.hint
        color: "#707070"
        font.pixelSize: 12
    }
}
