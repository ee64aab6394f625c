import QtQuick
import QtQuick.Window
import Velmar

// The main window: the video, and the player's interface over it.
Window {
    id: window

    required property PlaybackEngine engine
    required property AppDelegate app
    required property UserCommands commands

    width: 1280
    height: 720
    minimumWidth: 480
    minimumHeight: 270
    visible: true
    color: "black"
    title: engine.mediaTitle.length > 0 ? engine.mediaTitle + " \u2014 VelmarPlayer" : "VelmarPlayer"

    // Closing the player window ends the player, even with the settings window still open.
    onClosing: Qt.quit()

    // The video comes first, and alone: with a file to open, the window shows the file's first
    // frame while the rest of the interface is still being made. It is always there and
    // visible, so that libmpv has its render context before the first file.
    MPVVideoView {
        id: video
        objectName: "videoView"
        anchors.fill: parent
        decoder: window.engine.decoder
        Accessible.role: Accessible.Animation
        Accessible.name: "Video player"
        // Screen readers meet it only where it shows a video.
        Accessible.ignored: !window.engine.state.isActive || window.engine.pip.isActive
        // Picture in picture lends this very item to its floating window.
        Component.onCompleted: window.engine.pip.videoView = video
    }

    // Seeks and frame steps while paused: draw the frame libmpv now has.
    Connections {
        target: window.engine
        function onNeedsFrameRefreshChanged() {
            if (!window.engine.needsFrameRefresh)
                return
            video.refresh()
            window.engine.acknowledgeFrameRefresh()
        }
    }

    // Everything over the picture. With a file being opened it is read, compiled and made in
    // the background and in small steps between frames; at once otherwise, since the idle
    // screen is all there is to see.
    Loader {
        id: playerInterface
        objectName: "playerInterfaceLoader"
        anchors.fill: parent
        Component.onCompleted: {
            // Decided once: a loader that turns synchronous half-way starts over, and loses
            // the properties given here.
            asynchronous = window.app.hasFilesToOpen
            setSource("PlayerInterface.qml", {
                engine: window.engine,
                commands: window.commands,
                app: window.app
            })
        }
    }
}
