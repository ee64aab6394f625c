import QtQuick
import Velmar

// The main window's content: the video surface with the idle, loading, error and image screens
// laid over it, and the on-screen display on top.
Item {
    id: root

    required property PlaybackEngine engine
    readonly property int stateKind: engine.state.kind

    // Always present and visible, so that libmpv has its render context before the first file.
    MPVVideoView {
        objectName: "videoView"
        anchors.fill: parent
        engine: root.engine
        Accessible.name: "Video player"
    }

    StillImageView {
        anchors.fill: parent
        visible: root.stateKind === PlayerStateKind.ViewingImage
        image: root.engine.displayedImage
        Accessible.name: "Image viewer"
    }

    IdleScreen {
        anchors.fill: parent
        visible: root.stateKind === PlayerStateKind.Idle
    }

    Rectangle {
        anchors.fill: parent
        color: "black"
        visible: root.stateKind === PlayerStateKind.Loading

        Text {
            anchors.centerIn: parent
            text: "Loading..."
            color: "#d0d0d0"
            font.pixelSize: 16
        }
    }

    ErrorScreen {
        anchors.fill: parent
        visible: root.stateKind === PlayerStateKind.Error
        message: root.engine.state.message
    }

    OSDView {
        anchors.top: parent.top
        anchors.topMargin: 40
        anchors.horizontalCenter: parent.horizontalCenter
        message: root.engine.osd.currentMessage
    }
}
