import QtQuick
import QtQuick.Controls
import Velmar

// The player's commands, shown from a right click on the video and from the menu button.
Menu {
    id: root

    required property AppDelegate app
    property var recentEntries: []

    signal openFileRequested()
    signal openFolderRequested()
    signal settingsRequested()

    // Built afresh each time the menu opens, so the list follows the history.
    onAboutToShow: recentEntries = app.recentMenuEntries()

    ShortcutMenuItem {
        text: "Open..."
        shortcutText: "Ctrl+O"
        onTriggered: root.openFileRequested()
    }
    ShortcutMenuItem {
        text: "Open Folder..."
        onTriggered: root.openFolderRequested()
    }
    Menu {
        id: recentMenu
        objectName: "recentMenu"
        title: "Open Recent"

        Instantiator {
            model: root.recentEntries
            delegate: MenuItem {
                required property var modelData
                text: modelData.title
                enabled: modelData.enabled
                onTriggered: root.app.openRecentFile(modelData.url)
            }
            onObjectAdded: (index, object) => recentMenu.insertItem(index, object)
            onObjectRemoved: (index, object) => recentMenu.removeItem(object)
        }
    }
    MenuSeparator {}
    ShortcutMenuItem {
        text: "Toggle Full Screen"
        shortcutText: "Ctrl+F"
        onTriggered: root.app.toggleFullScreen()
    }
    MenuSeparator {}
    ShortcutMenuItem {
        text: "Settings..."
        shortcutText: "Ctrl+,"
        onTriggered: root.settingsRequested()
    }
    ShortcutMenuItem {
        text: "Quit"
        shortcutText: "Ctrl+Q"
        onTriggered: Qt.quit()
    }
}
