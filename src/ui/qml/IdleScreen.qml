import QtQuick

Rectangle {
    color: "black"

    Column {
        anchors.centerIn: parent
        spacing: 14

        Text {
            anchors.horizontalCenter: parent.horizontalCenter
            text: "VelmarPlayer"
            color: "white"
            font.pixelSize: 34
            font.weight: Font.DemiBold
        }

        Text {
            anchors.horizontalCenter: parent.horizontalCenter
            text: "Drop a video file here  \u00b7  Ctrl+O"
            color: Qt.rgba(1, 1, 1, 0.6)
            font.pixelSize: 15
        }

        Text {
            anchors.horizontalCenter: parent.horizontalCenter
            text: "Version " + Qt.application.version
            color: Qt.rgba(1, 1, 1, 0.35)
            font.pixelSize: 12
        }
    }
}
