import QtQuick
import Velmar

// The bottom of the controls: the seek bar across the top and, below it, play/pause, the
// playback rate and the time on the left, the side panel's buttons, picture in picture and
// the volume on the right.
//
// Buttons act through the user commands (so the on-screen display answers as it does for the
// keys) or open a side-panel tab; which one is listed in the README. On a narrow bar the volume
// slider shrinks and goes first; after that, the less used parts give way, so nothing ever
// overlaps or is cut.
Item {
    id: root

    required property PlaybackEngine engine
    required property UserCommands commands
    // The side panel's open tab (-1 for none), and the wish to toggle one.
    property int sidePanelTab: -1
    signal sidePanelRequested(int tab)

    readonly property bool playing: engine.state.kind === PlayerStateKind.Playing
    // A drag on the seek bar is under way: the controls stay while it lasts.
    readonly property bool interacting: seekBar.isDragging

    readonly property int spacing: 2
    readonly property real sliderMaxWidth: 90
    readonly property real sliderMinWidth: 48
    // Which optional parts the row has room for, and the slider's width. The parts are taken
    // in order of use while they fit; the slider gets what is left, if that is enough for it.
    readonly property var optionalParts: [timeLabel, bookmarksButton, tracksButton, pipButton,
                                          adjustmentsButton, rateButton]
    readonly property var layoutPlan: {
        let slack = rows.width - rows.gap - playButton.implicitWidth - playlistButton.implicitWidth
                    - volume.buttonWidth - 2 * spacing
        const shown = []
        for (const part of optionalParts) {
            const width = part.implicitWidth + spacing
            const fits = part.wanted && width <= slack
            if (fits)
                slack -= width
            shown.push(fits)
        }
        const slider = slack - spacing >= sliderMinWidth ? Math.min(slack - spacing, sliderMaxWidth)
                                                          : 0
        return { shown: shown, sliderWidth: slider }
    }

    // The playback position as the bar shows it. It stands still while the bar is hidden: a
    // hidden item that changes still costs its window a frame, and a window without the
    // video (picture in picture) would redraw for every video frame.
    property real shownProgress: 0
    property real shownTime: 0
    Binding on shownProgress {
        when: root.visible
        value: root.engine.progress
        restoreMode: Binding.RestoreNone
    }
    Binding on shownTime {
        when: root.visible
        value: root.engine.currentTime
        restoreMode: Binding.RestoreNone
    }

    implicitHeight: 72

    // Clicks on the bar's background stay here: they are not clicks on the picture.
    MouseArea {
        anchors.fill: parent
        acceptedButtons: Qt.AllButtons
    }

    Rectangle {
        anchors.fill: parent
        gradient: Gradient {
            GradientStop { position: 0; color: "transparent" }
            GradientStop { position: 0.35; color: Qt.rgba(0, 0, 0, 0.55) }
            GradientStop { position: 1; color: Qt.rgba(0, 0, 0, 0.75) }
        }
    }

    SeekBarMarks {
        id: marks
        engine: root.engine
    }

    SeekBar {
        id: seekBar
        objectName: "seekBar"
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.leftMargin: 16
        anchors.rightMargin: 16
        y: 8
        height: 20
        progress: root.shownProgress
        duration: root.engine.duration
        loopA: root.engine.abLoop.pointA
        loopB: root.engine.abLoop.pointB
        bookmarkTimes: marks.bookmarkTimes
        chapters: marks.chapters
        thumbnailGenerator: root.engine.thumbnails
        onScrubBegan: root.engine.scrubBegan()
        onScrub: seconds => root.engine.scrub(seconds)
        onSeek: seconds => root.engine.scrubEnded(seconds)
    }

    Item {
        id: rows
        readonly property real gap: 8
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.leftMargin: 10
        anchors.rightMargin: 10
        anchors.top: seekBar.bottom
        anchors.bottom: parent.bottom
        anchors.bottomMargin: 4

        Row {
            anchors.left: parent.left
            anchors.verticalCenter: parent.verticalCenter
            spacing: root.spacing

            BarButton {
                id: playButton
                objectName: "playPauseButton"
                symbol: root.playing ? "pause.fill" : "play.fill"
                label: root.playing ? "Pause" : "Play"
                onClicked: root.commands.togglePlayPause()
            }
            BarButton {
                id: rateButton
                readonly property bool wanted: true
                readonly property string rateText: Formats.rate(root.engine.playbackRate)
                objectName: "rateButton"
                visible: root.layoutPlan.shown[5]
                implicitWidth: 44
                text: rateText + "\u00d7"
                label: "Playback rate " + rateText
                onClicked: root.commands.cyclePlaybackRate()
            }
            Text {
                id: timeLabel
                readonly property bool wanted: true
                objectName: "timeLabel"
                anchors.verticalCenter: parent.verticalCenter
                visible: root.layoutPlan.shown[0]
                leftPadding: 6
                text: Formats.time(root.shownTime) + " / " + Formats.time(root.engine.duration)
                color: "white"
                // Equal-width digits, so the label does not jitter as the seconds run.
                font.family: "monospace"
                font.pixelSize: 12
                Accessible.role: Accessible.StaticText
                Accessible.name: text
            }
        }

        Row {
            anchors.right: parent.right
            anchors.verticalCenter: parent.verticalCenter
            spacing: root.spacing

            BarButton {
                id: adjustmentsButton
                readonly property bool wanted: true
                objectName: "adjustmentsButton"
                visible: root.layoutPlan.shown[4]
                symbol: "slider.horizontal.3"
                active: root.engine.filters.isActive
                label: root.engine.filters.isActive ? "Adjustments active" : "Adjustments"
                onClicked: root.sidePanelRequested(1)
            }
            BarButton {
                id: bookmarksButton
                readonly property bool wanted: true
                objectName: "bookmarksButton"
                visible: root.layoutPlan.shown[1]
                symbol: "bookmark.fill"
                label: "Bookmarks"
                active: root.sidePanelTab === 3
                onClicked: root.sidePanelRequested(3)
            }
            BarButton {
                id: tracksButton
                readonly property bool wanted: true
                objectName: "tracksButton"
                visible: root.layoutPlan.shown[2]
                symbol: "captions.bubble"
                label: "Track selection"
                active: root.sidePanelTab === 4
                onClicked: root.sidePanelRequested(4)
            }
            BarButton {
                id: playlistButton
                objectName: "playlistBarButton"
                symbol: "list.bullet"
                active: root.sidePanelTab === 0
                label: active ? "Playlist active" : "Playlist"
                onClicked: root.sidePanelRequested(0)
            }
            BarButton {
                id: pipButton
                readonly property bool wanted: root.engine.pip.isPossible
                objectName: "pipButton"
                visible: root.layoutPlan.shown[3]
                symbol: "pip.fill"
                active: root.engine.pip.isActive
                label: "Picture in picture"
                onClicked: root.engine.pip.toggle()
            }
            VolumeControl {
                id: volume
                readonly property real buttonWidth: 30
                // As tall as the buttons beside it, so that they all line up.
                height: 30
                volume: root.engine.volume
                muted: root.engine.isMuted
                commands: root.commands
                sliderWidth: root.layoutPlan.sliderWidth
            }
        }
    }
}
