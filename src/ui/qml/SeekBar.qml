import QtQuick
import QtQuick.Controls
import Velmar

// The seek bar: the played part, the file's chapters as ticks, its bookmarks and A-B loop
// points as markers, and, while the pointer is over it or drags it, a preview bubble with the
// picture and the time under the pointer.
//
// A drag holds the picture still (`scrubBegan`, once), shows every position it passes (`scrub`)
// and seeks where it is let go (`seek`); a plain click is a drag that does not move. Screen
// readers can step it 5 s either way, through the same seek.
Item {
    id: root

    property real progress: 0
    property real duration: 0
    // Seconds, or undefined while unset.
    property var loopA
    property var loopB
    property var bookmarkTimes: []
    // Each with `time` and `title`.
    property var chapters: []
    property ThumbnailGenerator thumbnailGenerator: null

    property bool isDragging: false
    property real dragProgress: 0
    property bool isHovering: false
    property real hoverProgress: 0

    signal seek(real seconds)
    signal scrubBegan()
    signal scrub(real seconds, real duration)

    readonly property real displayedProgress: isDragging ? dragProgress : progress
    readonly property real previewProgress: isDragging ? dragProgress : hoverProgress
    readonly property bool previewShown: (isHovering || isDragging) && thumbnailGenerator !== null
                                         && duration > 0
    readonly property real previewTime: duration * previewProgress
    // The picture is 240 wide, or as wide as the bar where the bar is narrower (a small window
    // with the side panel open). The bubble is centred on the pointer, but never past either end.
    readonly property real previewWidth: Math.min(240, width)
    readonly property real previewCenter: Math.min(Math.max(previewProgress * width,
                                                            previewWidth / 2),
                                                   width - previewWidth / 2)
    readonly property string previewChapterTitle: chapterTitleAt(previewTime)
    readonly property real trackHeight: 4

    function fractionAt(x) {
        return width > 0 ? Math.min(Math.max(x / width, 0), 1) : 0
    }
    function xOf(seconds) {
        return duration > 0 ? seconds / duration * width : 0
    }
    function chapterTitleAt(seconds) {
        let title = ""
        for (const chapter of chapters) {
            if (chapter.time > seconds)
                break
            title = chapter.title
        }
        return title
    }
    // Asking may store a picture at once, so the picture is set here rather than bound.
    function refreshPreview() {
        if (previewShown)
            picture.image = thumbnailGenerator.thumbnail(previewTime)
    }
    function dragChanged(x) {
        const fraction = fractionAt(x)
        // Qt repeats the last pointer event after a frame; the pointer has not moved then.
        if (isDragging && fraction === dragProgress)
            return
        if (!isDragging) {
            isDragging = true
            scrubBegan()
        }
        dragProgress = fraction
        scrub(dragProgress * duration, duration)
    }
    function dragEnded(x) {
        dragProgress = fractionAt(x)
        isDragging = false
        seek(dragProgress * duration)
    }
    function stepBy(seconds) {
        const position = displayedProgress * duration
        seek(Math.min(Math.max(position + seconds, 0), duration))
    }

    implicitHeight: 20

    onPreviewShownChanged: refreshPreview()
    onPreviewTimeChanged: refreshPreview()
    // Whenever a picture is stored the bubble asks again, so the right picture replaces a
    // neighbour's as soon as it exists.
    Connections {
        target: root.previewShown ? root.thumbnailGenerator : null
        function onCacheChanged() { root.refreshPreview() }
    }

    // What a screen reader reads as the slider's value; also its description, since not every
    // reader asks a slider for a value in words.
    readonly property string value: Formats.time(displayedProgress * duration) + " of "
                                    + Formats.time(duration)

    Accessible.role: Accessible.Slider
    Accessible.name: "Seek bar"
    Accessible.description: value
    Accessible.focusable: true
    Accessible.onIncreaseAction: stepBy(5)
    Accessible.onDecreaseAction: stepBy(-5)

    Item {
        id: track
        objectName: "seekTrack"
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        height: root.trackHeight

        Rectangle {
            anchors.fill: parent
            radius: height / 2
            color: Qt.rgba(1, 1, 1, 0.25)
        }
        Rectangle {
            objectName: "seekFill"
            width: root.displayedProgress * parent.width
            height: parent.height
            radius: height / 2
            color: "white"
        }
        // The loop's stretch, tinting the played part too.
        Rectangle {
            objectName: "loopSpan"
            visible: root.loopA !== undefined && root.loopB !== undefined && root.duration > 0
            x: visible ? root.xOf(root.loopA) : 0
            width: visible ? root.xOf(root.loopB) - x : 0
            height: parent.height
            color: Qt.rgba(0.2, 0.78, 0.35, 0.7)
        }
        Repeater {
            model: root.duration > 0 ? root.chapters : []
            delegate: Rectangle {
                required property var modelData
                objectName: "chapterTick"
                // The first chapter usually starts at 0, where a tick would say nothing.
                visible: modelData.time > 0 && modelData.time < root.duration
                x: Math.round(root.xOf(modelData.time)) - 1
                y: -1
                width: 2
                height: track.height + 2
                color: Qt.rgba(0, 0, 0, 0.7)
            }
        }
    }

    Repeater {
        model: root.duration > 0 ? root.bookmarkTimes : []
        delegate: Rectangle {
            required property real modelData
            objectName: "bookmarkMarker"
            x: root.xOf(modelData) - 3.5
            y: track.y + track.height / 2 - height / 2 - 6
            width: 7
            height: 9
            radius: 1.5
            color: "#ff9500"
        }
    }

    component LoopMarker: Rectangle {
        property var time
        visible: time !== undefined && root.duration > 0
        x: visible ? root.xOf(time) - width / 2 : 0
        y: track.y + track.height / 2 - height / 2
        width: 3
        height: 14
        radius: 1
        color: "#34c759"
    }
    LoopMarker { objectName: "loopMarkerA"; time: root.loopA }
    LoopMarker { objectName: "loopMarkerB"; time: root.loopB }

    MouseArea {
        id: pointer
        objectName: "seekArea"
        anchors.fill: parent
        hoverEnabled: true
        preventStealing: true
        cursorShape: Qt.PointingHandCursor
        onPressed: mouse => root.dragChanged(mouse.x)
        onPositionChanged: mouse => {
            if (pressed)
                root.dragChanged(mouse.x)
            else
                root.hoverProgress = root.fractionAt(mouse.x)
        }
        onReleased: mouse => root.dragEnded(mouse.x)
        onCanceled: if (root.isDragging) root.dragEnded(root.dragProgress * root.width)
        onContainsMouseChanged: {
            if (containsMouse)
                root.hoverProgress = root.fractionAt(mouseX)
            root.isHovering = containsMouse
        }
    }

    // The bubble: the picture (or its placeholder while none exists yet), the time, and the
    // chapter's title when the file has chapters.
    Rectangle {
        id: bubble
        objectName: "previewBubble"
        visible: root.previewShown
        width: root.previewWidth + 8
        height: column.height + 8
        x: root.previewCenter - width / 2
        y: -height - 10
        radius: 8
        color: Qt.rgba(0.08, 0.08, 0.09, 0.92)
        border.color: Qt.rgba(1, 1, 1, 0.15)

        Column {
            id: column
            x: 4
            y: 4
            spacing: 3

            ThumbnailPreviewView {
                id: picture
                objectName: "previewPicture"
                Accessible.role: Accessible.Graphic
                Accessible.name: "Preview " + Formats.time(root.previewTime)
                previewWidth: root.previewWidth
                minHeight: 60
                maxHeight: 180
                width: implicitWidth
                height: implicitHeight
            }
            Text {
                objectName: "previewChapter"
                width: root.previewWidth
                visible: text.length > 0
                text: root.previewChapterTitle
                horizontalAlignment: Text.AlignHCenter
                elide: Text.ElideRight
                color: "#d0d0d0"
                font.pixelSize: 12
            }
            Text {
                objectName: "previewTime"
                width: root.previewWidth
                text: Formats.time(root.previewTime)
                horizontalAlignment: Text.AlignHCenter
                color: "white"
                font.pixelSize: 13
                font.family: "monospace"
            }
        }
    }
}
