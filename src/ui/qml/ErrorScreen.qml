import QtQuick

Rectangle {
    id: root

    property string message

    color: "black"

    Column {
        anchors.centerIn: parent
        width: Math.min(parent.width - 80, 640)
        spacing: 12

        Text {
            anchors.horizontalCenter: parent.horizontalCenter
            text: "\u26a0"
            color: "#f0b429"
            font.pixelSize: 44
        }

        Text {
            width: parent.width
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            text: root.message
            color: "white"
            font.pixelSize: 16
        }
    }
}
