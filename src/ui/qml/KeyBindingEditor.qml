import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Velmar

// The key-binding table: click a key to record a new one (Escape cancels).
ColumnLayout {
    id: root

    property KeyBindingManager keyBindings
    property int recordingRow: -1

    spacing: 8

    KeyBindingListModel {
        id: bindingModel
        manager: root.keyBindings
    }

    ListView {
        id: list
        objectName: "keyBindingList"
        Layout.fillWidth: true
        Layout.fillHeight: true
        clip: true
        model: bindingModel
        ScrollBar.vertical: ScrollBar {}

        delegate: ItemDelegate {
            id: row
            required property int index
            required property string displayName
            required property string keyText
            required property string conflict
            readonly property bool recording: root.recordingRow === index

            width: ListView.view.width - 12
            height: 36
            focusPolicy: Qt.NoFocus

            contentItem: RowLayout {
                spacing: 12
                Label {
                    text: row.displayName
                    Layout.fillWidth: true
                    elide: Text.ElideRight
                }
                Label {
                    visible: row.conflict.length > 0
                    text: "\u26a0"
                    color: "#f0b429"
                    ToolTip.visible: conflictHover.hovered
                    ToolTip.text: row.conflict
                    HoverHandler { id: conflictHover }
                }
                Button {
                    text: row.recording ? "Press a key\u2026" : row.keyText
                    highlighted: row.recording
                    font.capitalization: Font.MixedCase
                    Layout.preferredWidth: 150
                    focusPolicy: Qt.NoFocus
                    onClicked: {
                        root.recordingRow = row.recording ? -1 : row.index
                        recorder.forceActiveFocus()
                    }
                }
            }
        }
    }

    // Takes the next key press while a row is recording.
    Item {
        id: recorder
        focus: root.recordingRow >= 0
        Keys.onPressed: event => {
            if (root.recordingRow < 0)
                return
            event.accepted = true
            if (event.key === Qt.Key_Escape) {
                root.recordingRow = -1
                return
            }
            if (bindingModel.record(root.recordingRow, event.key, event.modifiers))
                root.recordingRow = -1
        }
    }

    RowLayout {
        Layout.fillWidth: true
        Label {
            text: root.recordingRow >= 0 ? "Press the new key, or Escape to cancel."
                                         : "Click a key to change it."
            opacity: 0.7
            Layout.fillWidth: true
        }
        Button {
            text: "Reset to Defaults"
            font.capitalization: Font.MixedCase
            onClicked: {
                root.recordingRow = -1
                bindingModel.resetToDefaults()
            }
        }
    }
}
