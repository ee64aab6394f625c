import QtQuick
import QtQuick.Controls
import Velmar

// The top of the controls: the media title over a shade, and the menu button.
Item {
    id: root

    property string title

    signal menuRequested(Item button)

    implicitHeight: 60

    Rectangle {
        anchors.fill: parent
        visible: root.title.length > 0
        gradient: Gradient {
            GradientStop { position: 0; color: Qt.rgba(0, 0, 0, 0.6) }
            GradientStop { position: 1; color: "transparent" }
        }
    }

    Text {
        objectName: "mediaTitle"
        anchors.left: parent.left
        anchors.right: menuButton.left
        anchors.leftMargin: 18
        anchors.rightMargin: 12
        anchors.verticalCenter: menuButton.verticalCenter
        text: root.title
        elide: Text.ElideRight
        color: "white"
        font.pixelSize: 15
        font.weight: Font.DemiBold
        Accessible.role: Accessible.TitleBar
        Accessible.name: text
    }

    RoundButton {
        id: menuButton
        objectName: "menuButton"
        anchors.top: parent.top
        anchors.right: parent.right
        anchors.margins: 12
        width: 36
        height: 36
        flat: true
        focusPolicy: Qt.NoFocus
        icon.name: SymbolIcons.name("line.3.horizontal")
        icon.color: "white"
        Accessible.name: "Menu"
        ToolTip.visible: hovered
        ToolTip.text: "Menu"
        ToolTip.delay: 600
        onClicked: root.menuRequested(this)
    }
}
