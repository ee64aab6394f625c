import QtQuick
import QtQuick.Controls
import QtQuick.Window
import Velmar

// The floating video window of picture in picture: frameless and above other windows, moved by
// dragging the picture, resized from its edges in the picture's proportions, with a strip of
// controls that shows while the pointer is over it. The video item itself is lent to
// "videoHost" by the picture-in-picture manager.
Window {
    id: pipWindow

    property PlaybackEngine engine
    property ControlStrip strip
    // Width over height, kept while resizing; 0 for a picture that had no size.
    property real aspectRatio: 0

    // Resizes from the frame `start` by the pointer's travel (dx, dy) along `edges`.
    function resizeFrom(start, edges, dx, dy) {
        const horizontal = edges & (Qt.LeftEdge | Qt.RightEdge)
        const vertical = edges & (Qt.TopEdge | Qt.BottomEdge)
        let w = start.width + ((edges & Qt.RightEdge) ? dx : (edges & Qt.LeftEdge) ? -dx : 0)
        let h = start.height + ((edges & Qt.BottomEdge) ? dy : (edges & Qt.TopEdge) ? -dy : 0)
        w = Math.max(minimumWidth, w)
        h = Math.max(minimumHeight, h)
        if (aspectRatio > 0) {
            // The edge being dragged leads; at a corner, the larger movement does.
            if (horizontal && (!vertical || Math.abs(dx) >= Math.abs(dy)))
                h = Math.round(w / aspectRatio)
            else
                w = Math.round(h * aspectRatio)
        }
        x = (edges & Qt.LeftEdge) ? start.x + start.width - w : start.x
        y = (edges & Qt.TopEdge) ? start.y + start.height - h : start.y
        width = w
        height = h
    }

    color: "black"
    title: engine && engine.mediaTitle.length > 0
           ? engine.mediaTitle + " \u2014 Picture in Picture" : "Picture in Picture"
    minimumWidth: 240
    minimumHeight: 135

    // First, so that the video draws below everything else in the window.
    Item {
        id: videoHost
        objectName: "videoHost"
        anchors.fill: parent
    }

    // Dragging the picture moves the window; the window manager does the moving, which also
    // works where a program may not place its own windows.
    DragHandler {
        target: null
        onActiveChanged: if (active) pipWindow.startSystemMove()
    }

    HoverHandler {
        id: hover
    }

    component ResizeEdge: MouseArea {
        required property int edges
        property rect startFrame
        property point pressedAt

        hoverEnabled: true
        cursorShape: (edges === (Qt.LeftEdge | Qt.TopEdge) || edges === (Qt.RightEdge | Qt.BottomEdge))
                     ? Qt.SizeFDiagCursor
                     : (edges === (Qt.RightEdge | Qt.TopEdge) || edges === (Qt.LeftEdge | Qt.BottomEdge))
                       ? Qt.SizeBDiagCursor
                       : (edges & (Qt.LeftEdge | Qt.RightEdge)) ? Qt.SizeHorCursor : Qt.SizeVerCursor
        onPressed: mouse => {
            startFrame = Qt.rect(pipWindow.x, pipWindow.y, pipWindow.width, pipWindow.height)
            pressedAt = mapToGlobal(mouse.x, mouse.y)
        }
        onPositionChanged: mouse => {
            if (!pressed)
                return
            const at = mapToGlobal(mouse.x, mouse.y)
            pipWindow.resizeFrom(startFrame, edges, at.x - pressedAt.x, at.y - pressedAt.y)
        }
    }

    readonly property int grip: 6
    ResizeEdge { edges: Qt.LeftEdge; x: 0; y: grip; width: grip; height: parent.height - 2 * grip }
    ResizeEdge { edges: Qt.RightEdge; x: parent.width - grip; y: grip; width: grip; height: parent.height - 2 * grip }
    ResizeEdge { edges: Qt.TopEdge; x: grip; y: 0; width: parent.width - 2 * grip; height: grip }
    ResizeEdge { edges: Qt.BottomEdge; x: grip; y: parent.height - grip; width: parent.width - 2 * grip; height: grip }
    ResizeEdge { edges: Qt.LeftEdge | Qt.TopEdge; x: 0; y: 0; width: grip; height: grip }
    ResizeEdge { edges: Qt.RightEdge | Qt.TopEdge; x: parent.width - grip; y: 0; width: grip; height: grip }
    ResizeEdge { edges: Qt.LeftEdge | Qt.BottomEdge; x: 0; y: parent.height - grip; width: grip; height: grip }
    ResizeEdge { edges: Qt.RightEdge | Qt.BottomEdge; x: parent.width - grip; y: parent.height - grip; width: grip; height: grip }

    // The way back: its own button, Esc, or the picture-in-picture key.
    RoundButton {
        objectName: "pipReturnButton"
        anchors { top: parent.top; right: parent.right; margins: 8 }
        width: 30
        height: 30
        visible: controls.visible
        opacity: controls.opacity
        focusPolicy: Qt.NoFocus
        contentItem: Label {
            text: "\u2715"
            color: "white"
            font.pixelSize: 14
            horizontalAlignment: Text.AlignHCenter
            verticalAlignment: Text.AlignVCenter
        }
        background: Rectangle {
            radius: 15
            color: parent.hovered ? "#e0303033" : "#cc1c1c1e"
        }
        Accessible.name: "Return video to the main window"
        ToolTip.visible: hovered
        ToolTip.delay: 600
        ToolTip.text: "Return to the main window"
        onClicked: pipWindow.engine.pip.exitPiP()
    }

    Shortcut {
        sequence: "Escape"
        onActivated: pipWindow.engine.pip.exitPiP()
    }
    Shortcut {
        sequence: "Media Stop"
        onActivated: pipWindow.engine.pip.actionStop()
    }

    Rectangle {
        id: controls
        objectName: "pipControlStrip"
        anchors { left: parent.left; right: parent.right; bottom: parent.bottom; margins: 8 }
        height: 36
        radius: 8
        color: "#cc1c1c1e"
        opacity: hover.hovered || seek.pressed ? 1 : 0
        visible: opacity > 0
        Behavior on opacity { NumberAnimation { duration: 150 } }

        Row {
            anchors { fill: parent; leftMargin: 4; rightMargin: 10 }
            spacing: 6

            ToolButton {
                objectName: "pipPlayPauseButton"
                anchors.verticalCenter: parent.verticalCenter
                icon.name: SymbolIcons.name(pipWindow.strip.isPlaying ? "pause.fill" : "play.fill")
                icon.color: "white"
                Accessible.name: pipWindow.strip.isPlaying ? "Pause" : "Play"
                onClicked: pipWindow.strip.isPlaying ? pipWindow.engine.pip.actionPause()
                                                     : pipWindow.engine.pip.actionPlay()
            }

            Slider {
                id: seek
                objectName: "pipSeekSlider"
                anchors.verticalCenter: parent.verticalCenter
                width: parent.width - x - time.width - parent.spacing
                from: 0
                to: 1
                Accessible.name: "Seek"
                onMoved: pipWindow.strip.seekSliderChanged(value)
                Component.onCompleted: value = pipWindow.strip.sliderValue

                // Follows the player, except under the user's hand.
                Connections {
                    target: pipWindow.strip
                    function onSynced() {
                        if (!seek.pressed)
                            seek.value = pipWindow.strip.sliderValue
                    }
                }
            }

            Label {
                id: time
                objectName: "pipTimeLabel"
                anchors.verticalCenter: parent.verticalCenter
                text: pipWindow.strip.timeText
                color: "white"
                font.pixelSize: 12
            }
        }
    }
}
