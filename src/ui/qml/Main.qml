import QtQuick
import QtQuick.Controls
import QtQuick.Dialogs
import QtQuick.Window
import Velmar

Window {
    id: window

    required property PlaybackEngine engine
    required property AppDelegate app
    required property UserCommands commands

    // The dialogs and the settings window are made the first time they are asked for: most
    // sessions never open them, and each costs start-up time and memory.
    property FileDialog openDialog: null
    property FolderDialog folderDialog: null
    property SettingsWindow settingsWindow: null

    function showOpenDialog() {
        if (!openDialog)
            openDialog = openDialogComponent.createObject(window)
        openDialog.open()
    }

    function showFolderDialog() {
        if (!folderDialog)
            folderDialog = folderDialogComponent.createObject(window)
        folderDialog.open()
    }

    function showSettings() {
        if (!settingsWindow)
            settingsWindow = settingsComponent.createObject(window)
        settingsWindow.showAndRaise()
    }

    width: 1280
    height: 720
    minimumWidth: 480
    minimumHeight: 270
    visible: true
    color: "black"
    title: engine.mediaTitle.length > 0 ? engine.mediaTitle + " \u2014 VelmarPlayer" : "VelmarPlayer"

    // Closing the player window ends the player, even with the settings window still open.
    onClosing: Qt.quit()

    // The floating window of picture in picture, made each time it opens.
    Component {
        id: pipWindowComponent
        PiPWindow {
            engine: window.engine
            strip: window.app.controlStrip
        }
    }
    Component.onCompleted: engine.pip.windowComponent = pipWindowComponent

    PlayerView {
        id: playerView
        anchors.fill: parent
        engine: window.engine
        commands: window.commands
        app: window.app
        onOpenFileRequested: window.showOpenDialog()
        onMenuRequested: button => playerMenu.popup(button, button.width - playerMenu.width,
                                                    button.height + 4)
    }

    // A handler, not a mouse area: a mouse area on top would also decide the cursor, and the
    // cursor could no longer hide over the picture.
    TapHandler {
        acceptedButtons: Qt.RightButton
        onTapped: eventPoint => playerMenu.popup(eventPoint.position.x, eventPoint.position.y)
    }

    PlayerMenu {
        id: playerMenu
        objectName: "playerMenu"
        app: window.app
        onOpenFileRequested: window.showOpenDialog()
        onOpenFolderRequested: window.showFolderDialog()
        onSettingsRequested: window.showSettings()
    }

    Component {
        id: openDialogComponent
        FileDialog {
            title: "Open"
            fileMode: FileDialog.OpenFiles
            nameFilters: window.app.openNameFilters
            onAccepted: window.app.openURLs(selectedFiles)
        }
    }

    Component {
        id: folderDialogComponent
        FolderDialog {
            title: "Open Folder"
            onAccepted: window.app.openURLs([selectedFolder])
        }
    }

    Component {
        id: settingsComponent
        SettingsWindow {
            transientParent: window
            keyBindings: window.app.keyBindings
        }
    }

    Shortcut {
        sequence: "Ctrl+O"
        onActivated: window.showOpenDialog()
    }
    Shortcut {
        sequence: "Ctrl+F"
        onActivated: window.app.toggleFullScreen()
    }
    Shortcut {
        sequence: "Ctrl+,"
        onActivated: window.showSettings()
    }
    Shortcut {
        sequence: "Ctrl+Q"
        onActivated: Qt.quit()
    }
    // Leaves full screen once the player view has nothing left to close.
    Shortcut {
        sequence: "Escape"
        enabled: window.engine.windowState.isFullscreen && !playerView.closesOnEscape
        onActivated: window.app.toggleFullScreen()
    }
}
