import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Velmar

// The open file's bookmarks, earliest first. A click seeks to one; its button deletes it.
Item {
    id: root

    required property PlaybackEngine engine
    required property UserCommands commands
    readonly property alias model: bookmarkModel

    BookmarkListModel {
        id: bookmarkModel
        engine: root.engine
    }

    RowLayout {
        id: header
        anchors.top: parent.top
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.margins: 12
        anchors.topMargin: 6

        Label {
            objectName: "bookmarkCount"
            text: bookmarkModel.count + " bookmarks"
            color: "#a0a0a0"
            font.pixelSize: 12
            Layout.fillWidth: true
        }
        Button {
            objectName: "clearBookmarksButton"
            text: "Clear All"
            font.capitalization: Font.MixedCase
            flat: true
            enabled: bookmarkModel.count > 0
            onClicked: bookmarkModel.clearAll()
        }
    }

    ListView {
        id: list
        objectName: "bookmarkList"
        anchors.top: header.bottom
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        clip: true
        model: bookmarkModel
        boundsBehavior: Flickable.StopAtBounds
        ScrollBar.vertical: PanelScrollBar {}

        delegate: Rectangle {
            id: row

            required property int index
            required property string name
            required property double time
            required property string timeText
            required property var picture
            required property bool hasPicture

            width: ListView.view.width
            height: 56
            color: rowMouse.containsMouse ? Qt.rgba(1, 1, 1, 0.06) : "transparent"
            Accessible.role: Accessible.ListItem
            Accessible.name: (name.length > 0 ? name + " " : "") + timeText

            MouseArea {
                id: rowMouse
                anchors.fill: parent
                hoverEnabled: true
                onClicked: root.commands.seekToBookmark(row.time)
            }

            RowLayout {
                anchors.fill: parent
                anchors.leftMargin: 12
                anchors.rightMargin: 6
                spacing: 10

                Rectangle {
                    Layout.preferredWidth: 72
                    Layout.preferredHeight: 40
                    color: "#202022"
                    radius: 3

                    StillImageView {
                        objectName: "bookmarkPicture"
                        anchors.fill: parent
                        visible: row.hasPicture
                        image: row.picture
                        Accessible.role: Accessible.Graphic
                        Accessible.name: "Bookmark picture"
                    }
                    SymbolIcon {
                        anchors.centerIn: parent
                        visible: !row.hasPicture
                        symbol: "bookmark.fill"
                        color: "#808080"
                    }
                }
                ColumnLayout {
                    Layout.fillWidth: true
                    spacing: 2
                    Label {
                        visible: row.name.length > 0
                        text: row.name
                        elide: Text.ElideRight
                        Layout.fillWidth: true
                    }
                    Label {
                        objectName: "bookmarkTime"
                        text: row.timeText
                        color: row.name.length > 0 ? "#a0a0a0" : "white"
                        font.family: "monospace"
                    }
                }
                ToolButton {
                    objectName: "deleteBookmarkButton"
                    icon.name: SymbolIcons.name("xmark")
                    icon.color: "#a0a0a0"
                    icon.width: 14
                    icon.height: 14
                    Accessible.name: "Delete Bookmark"
                    onClicked: bookmarkModel.remove(row.index)
                }
            }
        }
    }

    PanelEmptyState {
        objectName: "bookmarksEmpty"
        anchors.centerIn: parent
        visible: bookmarkModel.count === 0
        symbol: "bookmark"
        text: "No bookmarks"
        hint: "Press B to add"
    }
}
