import QtQuick
import QtQuick.Controls
import Velmar

// What the window shows with nothing open: the name, how to open something, and the way to
// the playlist and the keyboard shortcuts.
Rectangle {
    id: root

    signal openFileRequested()
    signal playlistRequested()
    signal shortcutsRequested()

    color: "black"

    Column {
        anchors.centerIn: parent
        spacing: 14

        // The logo opens a file too: it is the largest thing on the screen.
        Button {
            objectName: "logoButton"
            anchors.horizontalCenter: parent.horizontalCenter
            flat: true
            display: AbstractButton.IconOnly
            icon.source: "qrc:/velmar/velmarplayer.svg"
            icon.color: "transparent"
            icon.width: 88
            icon.height: 88
            focusPolicy: Qt.NoFocus
            Accessible.name: "VelmarPlayer"
            Accessible.description: "Open a file"
            onClicked: root.openFileRequested()
        }

        Text {
            anchors.horizontalCenter: parent.horizontalCenter
            text: "VelmarPlayer"
            color: "white"
            font.pixelSize: 34
            font.weight: Font.DemiBold
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }

        Text {
            anchors.horizontalCenter: parent.horizontalCenter
            text: "Drop a video file here  \u00b7  Ctrl+O"
            color: Qt.rgba(1, 1, 1, 0.6)
            font.pixelSize: 15
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }

        Text {
            anchors.horizontalCenter: parent.horizontalCenter
            text: "Version " + Qt.application.version
            color: Qt.rgba(1, 1, 1, 0.35)
            font.pixelSize: 12
        }

        Row {
            anchors.horizontalCenter: parent.horizontalCenter
            topPadding: 18
            spacing: 12

            IdleButton {
                objectName: "openFileButton"
                text: "Open File"
                symbol: "folder"
                onClicked: root.openFileRequested()
            }
            IdleButton {
                objectName: "playlistButton"
                text: "Playlist"
                symbol: "list.bullet"
                onClicked: root.playlistRequested()
            }
            IdleButton {
                objectName: "keyboardShortcutsButton"
                text: "Keyboard Shortcuts"
                symbol: "keyboard"
                onClicked: root.shortcutsRequested()
            }
        }
    }

    component IdleButton: Button {
        property string symbol

        icon.name: SymbolIcons.name(symbol)
        icon.color: "white"
        font.capitalization: Font.MixedCase
        focusPolicy: Qt.NoFocus
        Accessible.name: text
    }
}
