import QtQuick
import QtQuick.Controls

// The place of the side panel at the right edge. It slides in when a tab is chosen and out when
// none is; whatever it shows keeps the wheel and the clicks over it, so neither reaches the
// video underneath.
Item {
    id: root

    // None (-1), or the tab 0–4.
    property int tab: -1
    readonly property bool open: tab >= 0
    // The tab drawn, kept while the panel slides out.
    property int shownTab: -1

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
        onWheel: wheel => wheel.accepted = true
    }

    // Stands in for the panel's tabs until they exist: the chosen tab's title.
    Label {
        objectName: "sidePanelTitle"
        anchors.top: parent.top
        anchors.left: parent.left
        anchors.margins: 18
        text: ["Playlist", "Filters", "Info", "Bookmarks", "Tracks"][root.shownTab] ?? ""
        font.pixelSize: 16
        font.weight: Font.DemiBold
    }
}
