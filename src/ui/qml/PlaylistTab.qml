import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Velmar

// The playlist: a count line, then one row per entry. A double click plays a row; a row is
// dragged to a new place; the context menu or the Delete key takes the chosen row out.
Item {
    id: root

    required property PlaybackEngine engine
    readonly property alias model: playlistModel

    PlaylistListModel {
        id: playlistModel
        engine: root.engine
    }

    Label {
        id: countLine
        objectName: "playlistCount"
        anchors.top: parent.top
        anchors.left: parent.left
        anchors.margins: 12
        text: playlistModel.count + " items"
        color: "#a0a0a0"
        font.pixelSize: 12
    }

    ListView {
        id: list
        objectName: "playlistList"
        anchors.top: countLine.bottom
        anchors.topMargin: 6
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        clip: true
        model: playlistModel
        boundsBehavior: Flickable.StopAtBounds
        currentIndex: -1
        highlightMoveDuration: 0
        ScrollBar.vertical: PanelScrollBar {}

        // The row being dragged and the place it would take, or -1 while nothing is dragged.
        property int dragFrom: -1
        property int dropRow: -1

        Keys.onDeletePressed: playlistModel.remove(currentIndex)

        delegate: Rectangle {
            id: row

            required property int index
            required property string title
            required property string durationText
            required property bool isCurrent

            width: ListView.view.width
            height: 34
            color: ListView.isCurrentItem ? Qt.rgba(1, 1, 1, 0.12)
                   : rowMouse.containsMouse ? Qt.rgba(1, 1, 1, 0.05) : "transparent"
            Accessible.role: Accessible.ListItem
            Accessible.name: title

            // Where the dragged row would go: below this row when it comes from above.
            Rectangle {
                width: parent.width
                height: 2
                color: "#4a90e2"
                y: list.dragFrom < row.index ? parent.height - 2 : 0
                visible: list.dragFrom >= 0 && list.dropRow === row.index
                         && list.dragFrom !== row.index
            }

            RowLayout {
                anchors.fill: parent
                anchors.leftMargin: 12
                anchors.rightMargin: 12
                spacing: 8

                Label {
                    text: row.index + 1
                    color: "#808080"
                    font.pixelSize: 11
                    horizontalAlignment: Text.AlignRight
                    Layout.preferredWidth: 34
                }
                SymbolIcon {
                    visible: row.isCurrent
                    symbol: "speaker.wave.2.fill"
                    size: 12
                    color: "#4a90e2"
                }
                Label {
                    objectName: "playlistRowTitle"
                    text: row.title
                    elide: Text.ElideRight
                    font.weight: row.isCurrent ? Font.DemiBold : Font.Normal
                    Layout.fillWidth: true
                }
                Label {
                    text: row.durationText
                    color: "#a0a0a0"
                    font.pixelSize: 11
                    font.family: "monospace"
                }
            }

            MouseArea {
                id: rowMouse

                property real pressY: 0

                anchors.fill: parent
                hoverEnabled: true
                acceptedButtons: Qt.LeftButton | Qt.RightButton
                // A drag with the mouse moves the row; the wheel and the scroll bar scroll.
                preventStealing: true
                onPressed: mouse => {
                    list.currentIndex = row.index
                    list.forceActiveFocus()
                    pressY = mouse.y
                }
                onPositionChanged: mouse => {
                    if (!(mouse.buttons & Qt.LeftButton))
                        return
                    if (list.dragFrom < 0 && Math.abs(mouse.y - pressY) > 8)
                        list.dragFrom = row.index
                    if (list.dragFrom < 0)
                        return
                    const at = mapToItem(list.contentItem, mouse.x, mouse.y)
                    const over = list.indexAt(10, at.y)
                    list.dropRow = over >= 0 ? over : (at.y < 0 ? 0 : list.count - 1)
                }
                onReleased: {
                    if (list.dragFrom >= 0 && list.dropRow >= 0)
                        playlistModel.move(list.dragFrom, list.dropRow)
                    list.dragFrom = -1
                    list.dropRow = -1
                }
                // The wheel belongs to the list.
                onWheel: wheel => wheel.accepted = false
                onCanceled: {
                    list.dragFrom = -1
                    list.dropRow = -1
                }
                onClicked: mouse => {
                    if (mouse.button === Qt.RightButton)
                        rowMenu.popupFor(row.index)
                }
                onDoubleClicked: mouse => {
                    if (mouse.button === Qt.LeftButton)
                        playlistModel.play(row.index)
                }
            }
        }
    }

    Menu {
        id: rowMenu
        objectName: "playlistRowMenu"

        property int row: -1

        function popupFor(index) {
            row = index
            popup()
        }

        MenuItem {
            text: "Play"
            onTriggered: playlistModel.play(rowMenu.row)
        }
        MenuItem {
            text: "Remove from Playlist"
            onTriggered: playlistModel.remove(rowMenu.row)
        }
    }

    PanelEmptyState {
        objectName: "playlistEmpty"
        anchors.centerIn: parent
        visible: playlistModel.count === 0
        symbol: "list.bullet"
        text: "No items"
    }
}
