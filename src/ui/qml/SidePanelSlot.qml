import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Velmar

// The side panel at the right edge: a header with one button per tab, then the chosen tab. It
// slides in when a tab is chosen and out when none is; the chosen tab is the player view's,
// everything shown comes from the engine. Whatever it shows keeps the wheel and the clicks over
// it, so neither reaches the video underneath; its lists scroll with the wheel.
Item {
    id: root

    required property PlaybackEngine engine
    required property UserCommands commands

    // None (-1), or the tab 0–4.
    property int tab: -1
    readonly property bool open: tab >= 0
    // The tab drawn, kept while the panel slides out.
    property int shownTab: -1
    // Filters and tracks need a file that plays (or waits, paused).
    readonly property bool hasMedia: engine.state.isActive
                                     || engine.state.kind === PlayerStateKind.Stopped

    readonly property var tabs: [
        { symbol: "list.bullet", title: "Playlist" },
        { symbol: "slider.horizontal.3", title: "Filters" },
        { symbol: "info.circle", title: "Info" },
        { symbol: "bookmark.fill", title: "Bookmarks" },
        { symbol: "captions.bubble", title: "Tracks" }
    ]

    // A header button asks the player view for its tab.
    signal tabRequested(int tab)

    onTabChanged: if (tab >= 0) shownTab = tab

    width: 280
    anchors.top: parent.top
    anchors.bottom: parent.bottom
    anchors.right: parent.right
    anchors.rightMargin: open ? 0 : -width
    visible: anchors.rightMargin > -width
    Accessible.role: Accessible.Pane
    Accessible.name: "Side panel"

    Behavior on anchors.rightMargin {
        NumberAnimation { duration: 250; easing.type: Easing.InOutQuad }
    }

    Rectangle {
        anchors.fill: parent
        color: Qt.rgba(0.09, 0.09, 0.1, 0.94)

        Rectangle {
            width: 1
            height: parent.height
            color: Qt.rgba(1, 1, 1, 0.1)
        }
    }

    MouseArea {
        anchors.fill: parent
        acceptedButtons: Qt.AllButtons
        onWheel: wheel => wheel.accepted = true
    }

    Row {
        id: header
        objectName: "sidePanelHeader"
        anchors.top: parent.top
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.topMargin: 6
        anchors.leftMargin: 1

        Repeater {
            model: root.tabs
            delegate: AbstractButton {
                id: tabButton

                required property int index
                required property var modelData
                readonly property bool selected: root.shownTab === index

                objectName: "sidePanelTab" + index
                width: (root.width - 1) / root.tabs.length
                height: 48
                hoverEnabled: true
                focusPolicy: Qt.NoFocus
                Accessible.role: Accessible.PageTab
                Accessible.name: modelData.title
                onClicked: root.tabRequested(index)

                contentItem: Column {
                    spacing: 3
                    topPadding: 6
                    SymbolIcon {
                        anchors.horizontalCenter: parent.horizontalCenter
                        symbol: tabButton.modelData.symbol
                        color: tabButton.selected ? "#4a90e2" : "#b0b0b0"
                    }
                    Label {
                        anchors.horizontalCenter: parent.horizontalCenter
                        text: tabButton.modelData.title
                        color: tabButton.selected ? "white" : "#a0a0a0"
                        font.pixelSize: 10
                    }
                }
                background: Rectangle {
                    color: tabButton.selected ? Qt.rgba(1, 1, 1, 0.08)
                           : tabButton.hovered ? Qt.rgba(1, 1, 1, 0.04) : "transparent"
                    radius: 4
                }
            }
        }
    }

    Rectangle {
        id: divider
        anchors.top: header.bottom
        anchors.topMargin: 6
        anchors.left: parent.left
        anchors.right: parent.right
        height: 1
        color: Qt.rgba(1, 1, 1, 0.08)
    }

    // Only the tab on show exists: a closed panel costs nothing, and each tab starts from what
    // the engine holds now.
    Loader {
        id: tabLoader
        objectName: "sidePanelTabContent"
        anchors.top: divider.bottom
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        anchors.leftMargin: 1
        active: root.visible && root.shownTab >= 0
        sourceComponent: {
            switch (root.shownTab) {
            case 0: return playlistTab
            case 1: return filtersTab
            case 2: return infoTab
            case 3: return bookmarksTab
            case 4: return tracksTab
            }
            return null
        }
    }

    Component {
        id: playlistTab
        PlaylistTab {
            objectName: "playlistTab"
            engine: root.engine
        }
    }
    Component {
        id: filtersTab
        FiltersTab {
            objectName: "filtersTab"
            engine: root.engine
            commands: root.commands
            hasMedia: root.hasMedia
        }
    }
    Component {
        id: infoTab
        InfoTab {
            objectName: "infoTab"
            engine: root.engine
        }
    }
    Component {
        id: bookmarksTab
        BookmarksTab {
            objectName: "bookmarksTab"
            engine: root.engine
            commands: root.commands
        }
    }
    Component {
        id: tracksTab
        TracksTab {
            objectName: "tracksTab"
            engine: root.engine
            commands: root.commands
            hasMedia: root.hasMedia
        }
    }
}
