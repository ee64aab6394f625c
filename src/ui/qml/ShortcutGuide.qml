import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Velmar

// Every keyboard shortcut, grouped, in a card over the dimmed window. Closed by Esc (the
// player view's key), a click beside the card, or its close button.
Item {
    id: root

    property bool shown
    property KeyBindingManager keyBindings

    signal closeRequested()

    opacity: shown ? 1 : 0
    visible: opacity > 0
    // Fading out, it no longer takes the clicks meant for what is under it.
    enabled: shown

    Behavior on opacity {
        NumberAnimation { duration: 200; easing.type: Easing.OutQuad }
    }

    ShortcutGuideModel {
        id: guide
        manager: root.keyBindings
    }

    Rectangle {
        anchors.fill: parent
        color: Qt.rgba(0, 0, 0, 0.55)
    }

    MouseArea {
        anchors.fill: parent
        onClicked: root.closeRequested()
        onWheel: wheel => wheel.accepted = true
    }

    Rectangle {
        id: card
        objectName: "shortcutGuideCard"
        anchors.centerIn: parent
        width: Math.min(parent.width - 48, 1040)
        height: Math.min(parent.height - 48, header.height + sections.implicitHeight + 56)
        radius: 14
        color: Qt.rgba(0.12, 0.12, 0.13, 0.97)
        border.color: Qt.rgba(1, 1, 1, 0.12)
        Accessible.role: Accessible.Dialog
        Accessible.name: "Keyboard Shortcuts"

        // Clicks on the card stay on it.
        MouseArea {
            anchors.fill: parent
        }

        RowLayout {
            id: header
            anchors.left: parent.left
            anchors.right: parent.right
            anchors.top: parent.top
            anchors.margins: 16
            anchors.leftMargin: 24

            Label {
                text: "Keyboard Shortcuts"
                font.pixelSize: 18
                font.weight: Font.DemiBold
                Layout.fillWidth: true
            }
            RoundButton {
                objectName: "shortcutGuideClose"
                flat: true
                focusPolicy: Qt.NoFocus
                icon.name: SymbolIcons.name("xmark")
                icon.color: "white"
                Accessible.name: "Close"
                onClicked: root.closeRequested()
            }
        }

        Flickable {
            id: flickable
            anchors.fill: parent
            anchors.margins: 24
            anchors.topMargin: header.height + 32
            contentHeight: sections.implicitHeight
            clip: true
            boundsBehavior: Flickable.StopAtBounds
            ScrollBar.vertical: ScrollBar {}

            Flow {
                id: sections

                // Three columns where they fit, so that the whole list fits a usual window.
                readonly property int columns: width > 860 ? 3 : 2

                width: flickable.width
                spacing: 24

                Repeater {
                    model: guide.sections

                    Column {
                        required property var modelData

                        width: (sections.width - (sections.columns - 1) * sections.spacing)
                               / sections.columns
                        spacing: 6

                        Label {
                            text: modelData.title
                            font.weight: Font.DemiBold
                            opacity: 0.6
                            bottomPadding: 2
                        }
                        Repeater {
                            model: modelData.entries

                            RowLayout {
                                required property var modelData

                                width: parent.width
                                Label {
                                    text: modelData.name
                                    elide: Text.ElideRight
                                    Layout.fillWidth: true
                                }
                                Label {
                                    text: modelData.keys
                                    font.family: "monospace"
                                    opacity: 0.8
                                }
                            }
                        }
                    }
                }
            }
        }
    }
}
