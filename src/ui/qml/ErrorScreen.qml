import QtQuick

// Why the file could not be shown.
Rectangle {
    id: root

    property string message

    color: "black"

    Column {
        anchors.centerIn: parent
        width: Math.min(parent.width - 80, 640)
        spacing: 12

        SymbolIcon {
            objectName: "errorIcon"
            anchors.horizontalCenter: parent.horizontalCenter
            symbol: "exclamationmark.triangle"
            size: 44
            color: "#f0b429"
        }

        Text {
            width: parent.width
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            text: root.message
            color: "white"
            font.pixelSize: 16
            Accessible.role: Accessible.AlertMessage
            Accessible.name: text
        }
    }
}
