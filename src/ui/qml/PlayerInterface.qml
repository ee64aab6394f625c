import QtQuick
import QtQuick.Controls
import QtQuick.Dialogs
import Velmar

// Everything of the main window but the video: the player view over the picture, the menu, the
// dialogs and the settings window, picture in picture's floating window, and the window's own
// shortcuts.
Item {
    id: root
    objectName: "playerInterface"

    required property PlaybackEngine engine
    required property AppDelegate app
    required property UserCommands commands
    // Whether Esc has something to close in the player view; otherwise it is the window's.
    readonly property alias closesOnEscape: playerView.closesOnEscape

    // The dialogs and the settings window are made the first time they are asked for: most
    // sessions never open them, and each costs start-up time and memory.
    property FileDialog openDialog: null
    property FolderDialog folderDialog: null
    property SettingsWindow settingsWindow: null

    function showOpenDialog() {
        if (!openDialog)
            openDialog = openDialogComponent.createObject(root)
        openDialog.open()
    }

    function showFolderDialog() {
        if (!folderDialog)
            folderDialog = folderDialogComponent.createObject(root)
        folderDialog.open()
    }

    function showSettings() {
        if (!settingsWindow)
            settingsWindow = settingsComponent.createObject(root)
        settingsWindow.showAndRaise()
    }

    // The floating window of picture in picture, made each time it opens.
    Component {
        id: pipWindowComponent
        PiPWindow {
            engine: root.engine
            strip: root.app.controlStrip
        }
    }
    Component.onCompleted: engine.pip.windowComponent = pipWindowComponent

    PlayerView {
        id: playerView
        anchors.fill: parent
        engine: root.engine
        commands: root.commands
        app: root.app
        onOpenFileRequested: root.showOpenDialog()
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
        app: root.app
        onOpenFileRequested: root.showOpenDialog()
        onOpenFolderRequested: root.showFolderDialog()
        onSettingsRequested: root.showSettings()
    }

    Component {
        id: openDialogComponent
        FileDialog {
            title: "Open"
            fileMode: FileDialog.OpenFiles
            nameFilters: root.app.openNameFilters
            onAccepted: root.app.openURLs(selectedFiles)
        }
    }

    Component {
        id: folderDialogComponent
        FolderDialog {
            title: "Open Folder"
            onAccepted: root.app.openURLs([selectedFolder])
        }
    }

    Component {
        id: settingsComponent
        SettingsWindow {
            transientParent: root.Window.window
            keyBindings: root.app.keyBindings
        }
    }

    Shortcut {
        sequence: "Ctrl+O"
        onActivated: root.showOpenDialog()
    }
    Shortcut {
        sequence: "Ctrl+F"
        onActivated: root.app.toggleFullScreen()
    }
    Shortcut {
        sequence: "Ctrl+,"
        onActivated: root.showSettings()
    }
    Shortcut {
        sequence: "Ctrl+Q"
        onActivated: Qt.quit()
    }
    // Leaves full screen once the player view has nothing left to close.
    Shortcut {
        sequence: "Escape"
        enabled: root.engine.windowState.isFullscreen && !playerView.closesOnEscape
        onActivated: root.app.toggleFullScreen()
    }
}
