import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// A section title of the side panel, with an optional symbol before it.
RowLayout {
    id: root

    property string symbol
    property string title

    Layout.fillWidth: true
    Layout.topMargin: 10
    spacing: 6

    SymbolIcon {
        visible: root.symbol.length > 0
        symbol: root.symbol
        size: 14
        color: "#a0a0a0"
    }
    Label {
        Layout.fillWidth: true
        text: root.title
        color: "#a0a0a0"
        font.pixelSize: 12
        font.weight: Font.DemiBold
    }
}
