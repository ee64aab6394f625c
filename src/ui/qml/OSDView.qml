import QtQuick

// A capsule with the current on-screen message; fades out when the message goes away.
Rectangle {
    id: root

    property var message

    readonly property bool shown: message !== undefined
    // Keeps the last text while the capsule fades out after the message is gone.
    property string shownText: ""

    function remember() {
        if (message !== undefined)
            shownText = message.text
    }

    onMessageChanged: remember()
    Component.onCompleted: remember()

    width: label.implicitWidth + 28
    height: label.implicitHeight + 16
    radius: height / 2
    color: Qt.rgba(0.12, 0.12, 0.12, 0.82)
    border.color: Qt.rgba(1, 1, 1, 0.12)
    opacity: shown ? 1 : 0
    visible: opacity > 0

    Behavior on opacity {
        NumberAnimation { duration: 300; easing.type: Easing.OutQuad }
    }

    Text {
        id: label
        objectName: "osdText"
        anchors.centerIn: parent
        text: root.shownText
        color: Qt.rgba(1, 1, 1, 0.9)
        font.pixelSize: 14
        font.weight: Font.Medium
    }
}
