import QtQuick
import QtQuick.Layouts
import Velmar

// The on-screen message in a capsule, drawn by its kind: the volume as a level bar and a
// percentage, a seek as the position, the duration and a progress bar, anything else as its
// icon and text. Fades out when the message goes away, still drawing the last one meanwhile.
Item {
    id: root

    property var message

    readonly property bool shown: message !== undefined
    property var shownMessage
    readonly property int kind: shownMessage !== undefined ? shownMessage.kind : -1

    function remember() {
        if (message !== undefined)
            shownMessage = message
    }

    onMessageChanged: remember()
    Component.onCompleted: remember()

    implicitWidth: capsule.width
    implicitHeight: capsule.height
    opacity: shown ? 1 : 0
    visible: opacity > 0
    Accessible.role: Accessible.StaticText
    Accessible.name: shownMessage !== undefined ? shownMessage.text : ""

    Behavior on opacity {
        NumberAnimation { duration: 300; easing.type: Easing.OutQuad }
    }

    // A soft shadow: rings that fade outwards, a little below the capsule.
    Repeater {
        model: 3
        Rectangle {
            required property int index
            readonly property int spread: index + 1

            x: -spread
            y: 2 - spread
            width: capsule.width + 2 * spread
            height: capsule.height + 2 * spread
            radius: height / 2
            color: Qt.rgba(0, 0, 0, 0.09)
        }
    }

    Rectangle {
        id: capsule
        width: content.implicitWidth + 28
        height: content.implicitHeight + 16
        radius: height / 2
        color: Qt.rgba(0.11, 0.11, 0.12, 0.8)
        border.color: Qt.rgba(1, 1, 1, 0.14)
        border.width: 1

        RowLayout {
            id: content
            anchors.centerIn: parent
            spacing: 8

            SymbolIcon {
                visible: root.kind !== OSDMessageKind.Seek
                symbol: visible && root.shownMessage !== undefined ? root.shownMessage.icon : ""
                size: 16
            }

            // The volume.
            LevelBar {
                objectName: "osdVolumeBar"
                visible: root.kind === OSDMessageKind.Volume
                length: 80
                fraction: visible ? root.shownMessage.level : 0
            }
            Text {
                id: percent
                objectName: "osdVolumePercent"
                visible: root.kind === OSDMessageKind.Volume
                // Wide enough for "100%", so the row keeps its size as the digits change.
                Layout.minimumWidth: widest.advanceWidth
                horizontalAlignment: Text.AlignRight
                text: visible ? root.shownMessage.percent + "%" : ""
                color: Qt.rgba(1, 1, 1, 0.55)
                font.pixelSize: 12
                font.weight: Font.Medium

                TextMetrics {
                    id: widest
                    font: percent.font
                    text: "100%"
                }
            }

            // A seek.
            Text {
                objectName: "osdSeekCurrent"
                visible: root.kind === OSDMessageKind.Seek
                text: visible ? Formats.time(root.shownMessage.current) : ""
                color: "white"
                font.pixelSize: 14
                font.weight: Font.DemiBold
            }
            Text {
                visible: root.kind === OSDMessageKind.Seek
                text: "/"
                color: Qt.rgba(1, 1, 1, 0.3)
                font.pixelSize: 14
            }
            Text {
                objectName: "osdSeekDuration"
                visible: root.kind === OSDMessageKind.Seek
                text: visible ? Formats.time(root.shownMessage.duration) : ""
                color: "white"
                font.pixelSize: 14
                font.weight: Font.Medium
            }
            LevelBar {
                objectName: "osdSeekBar"
                visible: root.kind === OSDMessageKind.Seek
                length: 120
                fillOpacity: 0.7
                fraction: visible && root.shownMessage.duration > 0
                          ? root.shownMessage.current / root.shownMessage.duration : 0
            }

            // Everything else.
            Text {
                objectName: "osdText"
                visible: root.kind !== OSDMessageKind.Volume && root.kind !== OSDMessageKind.Seek
                text: visible && root.shownMessage !== undefined ? root.shownMessage.text : ""
                color: Qt.rgba(1, 1, 1, 0.9)
                font.pixelSize: 13
                font.weight: Font.Medium
            }
        }
    }

    // A capsule track with a white fill up to the fraction.
    component LevelBar: Rectangle {
        property real length
        property real fraction
        property real fillOpacity: 1

        implicitWidth: length
        implicitHeight: 4
        radius: height / 2
        color: Qt.rgba(1, 1, 1, 0.15)

        Rectangle {
            width: parent.width * Math.max(0, Math.min(1, parent.fraction))
            height: parent.height
            radius: height / 2
            color: Qt.rgba(1, 1, 1, parent.fillOpacity)
        }
    }
}
