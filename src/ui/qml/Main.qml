import QtQuick
import QtQuick.Controls
import QtQuick.Dialogs
import QtQuick.Window
import Velmar

Window {
    id: window

    required property PlaybackEngine engine
    required property AppDelegate app

    width: 1280
    height: 720
    minimumWidth: 480
    minimumHeight: 270
    visible: true
    color: "black"
    title: engine.mediaTitle.length > 0 ? engine.mediaTitle + " \u2014 VelmarPlayer" : "VelmarPlayer"

    // Closing the player window ends the player, even with the settings window still open.
    onClosing: Qt.quit()

    PlayerView {
        anchors.fill: parent
        engine: window.engine
    }

    DropArea {
        anchors.fill: parent
        keys: ["text/uri-list"]
        onDropped: drop => {
            if (drop.hasUrls) {
                window.app.openURLs(drop.urls)
                drop.acceptProposedAction()
            }
        }
    }

    MouseArea {
        anchors.fill: parent
        acceptedButtons: Qt.RightButton
        onClicked: mouse => playerMenu.popup(mouse.x, mouse.y)
    }

    TapHandler {
        acceptedButtons: Qt.LeftButton
        onDoubleTapped: window.app.toggleFullScreen()
    }

    HoverHandler {
        id: hover
        onPointChanged: menuButtonTimer.restart()
    }

    Timer {
        id: menuButtonTimer
        interval: 3000
    }

    RoundButton {
        objectName: "menuButton"
        anchors.top: parent.top
        anchors.right: parent.right
        anchors.margins: 12
        width: 36
        height: 36
        icon.name: "open-menu-symbolic"
        icon.color: "white"
        opacity: hover.hovered && (menuButtonTimer.running || hovered) || playerMenu.visible ? 1 : 0
        visible: opacity > 0
        Accessible.name: "Menu"
        ToolTip.visible: hovered
        ToolTip.text: "Menu"
        ToolTip.delay: 600
        onClicked: playerMenu.popup(this, width - playerMenu.width, height + 4)

        Behavior on opacity {
            NumberAnimation { duration: 200 }
        }
    }

    PlayerMenu {
        id: playerMenu
        objectName: "playerMenu"
        app: window.app
        onOpenFileRequested: openDialog.open()
        onOpenFolderRequested: folderDialog.open()
        onSettingsRequested: settingsWindow.showAndRaise()
    }

    FileDialog {
        id: openDialog
        title: "Open"
        fileMode: FileDialog.OpenFiles
        nameFilters: window.app.openNameFilters
        onAccepted: window.app.openURLs(selectedFiles)
    }

    FolderDialog {
        id: folderDialog
        title: "Open Folder"
        onAccepted: window.app.openURLs([selectedFolder])
    }

    SettingsWindow {
        id: settingsWindow
        transientParent: window
        keyBindings: window.engine.keyBindings
    }

    Shortcut {
        sequence: "Ctrl+O"
        onActivated: openDialog.open()
    }
    Shortcut {
        sequence: "Ctrl+F"
        onActivated: window.app.toggleFullScreen()
    }
    Shortcut {
        sequence: "Ctrl+,"
        onActivated: settingsWindow.showAndRaise()
    }
    Shortcut {
        sequence: "Ctrl+Q"
        onActivated: Qt.quit()
    }
    Shortcut {
        sequence: "Escape"
        enabled: window.engine.windowState.isFullscreen
        onActivated: window.app.toggleFullScreen()
    }
}
