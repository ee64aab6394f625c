import QtQuick
import QtQuick.Controls
import Velmar

// The main window's content over the video, which lies below it. First the screen for the
// engine's state where that is not the video: an image, or the idle, loading and error screens.
// Over it the controls (the title at the top and the control bar at the bottom, shown and
// hidden together), the on-screen display, the side panel at the right edge and the shortcut
// guide.
//
// The mouse: any movement shows the controls and, while playing, hides them again 1.5 s after
// the last one, with the cursor. A click on the picture toggles the controls once it is clear
// that no second click follows; a double click toggles full screen instead. The wheel sets the
// volume, except over the side panel. Files dropped anywhere open.
Item {
    id: root
    objectName: "playerView"

    required property PlaybackEngine engine
    required property UserCommands commands
    required property AppDelegate app

    readonly property int stateKind: engine.state.kind
    readonly property bool playing: stateKind === PlayerStateKind.Playing

    property bool controlsShown: true
    // Hidden with the controls, until the mouse moves again.
    property bool cursorHidden: false
    // None (-1), or the side panel's tab 0–4.
    property int sidePanelTab: -1
    property bool shortcutGuideShown: false
    // Whether Esc has something to close here; otherwise it is the window's.
    readonly property bool closesOnEscape: shortcutGuideShown || sidePanelTab >= 0

    // The control bar's place at the bottom; it comes and goes with the title.
    readonly property alias controlBarSlot: controlBarSlot
    // One notch of a mouse wheel (120 units of Qt's angle delta) is 5 % of the volume;
    // touchpads report smaller steps, so they move it smoothly.
    readonly property real volumePerWheelNotch: 0.05

    // How long the next show or hide of the controls fades: it depends on what asked for it.
    property int controlsFadeDuration: 0

    signal openFileRequested()
    signal menuRequested(Item button)

    function setControlsShown(shown, fadeDuration) {
        controlsFadeDuration = fadeDuration
        controlsShown = shown
    }

    // Shows the controls and, only while playing, plans to hide them.
    function resetControlsTimer() {
        setControlsShown(true, 150)
        hideTimer.stop()
        if (playing)
            hideTimer.start()
    }

    function handleClick() {
        ++clickResolver.count
        if (clickResolver.count === 1) {
            clickResolver.restart()
            return
        }
        clickResolver.stop()
        clickResolver.count = 0
        app.toggleFullScreen()
    }

    function toggleSidePanel(tab) {
        sidePanelTab = sidePanelTab === tab ? -1 : tab
    }

    // Esc: the shortcut guide first, then the side panel.
    function closeTopOverlay() {
        if (shortcutGuideShown)
            shortcutGuideShown = false
        else
            sidePanelTab = -1
    }

    onShortcutGuideShownChanged: shortcutGuide.active = true
    // Made while a file given at start already plays: no state change will plan the hiding.
    Component.onCompleted: {
        if (playing)
            hideTimer.start()
    }
    onStateKindChanged: {
        // Compares the kind itself: `playing` may not have followed it yet.
        if (stateKind === PlayerStateKind.Playing) {
            if (controlsShown)
                hideTimer.restart()
            return
        }
        hideTimer.stop()
        // Nothing to watch: the controls come back (a pause leaves them as they are).
        if (stateKind !== PlayerStateKind.Paused)
            setControlsShown(true, 150)
    }

    Timer {
        id: hideTimer
        objectName: "controlsHideTimer"
        interval: 1500
        onTriggered: {
            // Not in the middle of a drag on the seek bar: that waits for its end.
            if (controlBar.interacting) {
                restart()
                return
            }
            root.setControlsShown(false, 400)
            root.cursorHidden = true
        }
    }

    // Waits out the double-click time before a single click toggles the controls.
    Timer {
        id: clickResolver

        property int count: 0

        interval: 250
        onTriggered: {
            count = 0
            root.setControlsShown(!root.controlsShown, 300)
            if (root.controlsShown) {
                root.resetControlsTimer()
            } else {
                hideTimer.stop()
                root.cursorHidden = true
            }
        }
    }

    // While the video plays in its floating window, this says where it went.
    Column {
        objectName: "pipPlaceholder"
        anchors.centerIn: parent
        spacing: 12
        visible: root.engine.pip.isActive

        Label {
            anchors.horizontalCenter: parent.horizontalCenter
            text: "Playing in picture in picture"
            color: "#a0a0a0"
            font.pixelSize: 15
        }
        Button {
            anchors.horizontalCenter: parent.horizontalCenter
            text: "Bring the Video Back"
            font.capitalization: Font.MixedCase
            onClicked: root.engine.pip.exitPiP()
        }
    }

    StillImageView {
        objectName: "imageView"
        anchors.fill: parent
        visible: root.stateKind === PlayerStateKind.ViewingImage
        image: root.engine.displayedImage
        Accessible.role: Accessible.Graphic
        Accessible.name: "Image viewer"
    }

    // A quick load shows its first frame without this; a slow one says so over the picture.
    Timer {
        id: loadingDelay
        interval: 500
        running: root.stateKind === PlayerStateKind.Loading
    }
    Text {
        objectName: "loadingText"
        anchors.centerIn: parent
        visible: root.stateKind === PlayerStateKind.Loading && !loadingDelay.running
        text: "Loading..."
        color: "#d0d0d0"
        style: Text.Outline
        styleColor: Qt.rgba(0, 0, 0, 0.6)
        font.pixelSize: 16
        Accessible.role: Accessible.StaticText
        Accessible.name: text
    }

    // The picture's clicks, wheel and cursor.
    MouseArea {
        objectName: "videoArea"
        anchors.fill: parent
        cursorShape: root.cursorHidden ? Qt.BlankCursor : Qt.ArrowCursor
        onClicked: root.handleClick()
        onWheel: wheel => {
            if (wheel.angleDelta.y !== 0)
                root.commands.adjustVolume(wheel.angleDelta.y / 120 * root.volumePerWheelNotch)
        }
    }

    IdleScreen {
        anchors.fill: parent
        visible: root.stateKind === PlayerStateKind.Idle && !root.app.hasFilesToOpen
        onOpenFileRequested: root.openFileRequested()
        onPlaylistRequested: root.toggleSidePanel(0)
        onShortcutsRequested: root.shortcutGuideShown = true
    }

    ErrorScreen {
        anchors.fill: parent
        visible: root.stateKind === PlayerStateKind.Error
        message: root.engine.state.message
    }

    Item {
        id: controls
        objectName: "controls"
        anchors.top: parent.top
        anchors.bottom: parent.bottom
        anchors.left: parent.left
        anchors.right: sidePanel.left
        opacity: root.controlsShown ? 1 : 0
        visible: opacity > 0

        Behavior on opacity {
            NumberAnimation { duration: root.controlsFadeDuration; easing.type: Easing.OutQuad }
        }

        TitleOverlay {
            anchors.top: parent.top
            anchors.left: parent.left
            anchors.right: parent.right
            title: root.engine.mediaTitle
            onMenuRequested: button => root.menuRequested(button)
        }

        Item {
            id: controlBarSlot
            objectName: "controlBarSlot"
            anchors.bottom: parent.bottom
            anchors.left: parent.left
            anchors.right: parent.right
            height: childrenRect.height

            ControlBar {
                id: controlBar
                objectName: "controlBar"
                anchors.left: parent.left
                anchors.right: parent.right
                // Only a file has a timeline to show; the idle screen and an image have none.
                visible: root.engine.state.isActive
                engine: root.engine
                commands: root.commands
                sidePanelTab: root.sidePanelTab
                onSidePanelRequested: tab => root.toggleSidePanel(tab)
            }
        }
    }

    OSDView {
        objectName: "osdView"
        anchors.top: parent.top
        anchors.topMargin: 64
        anchors.horizontalCenter: controls.horizontalCenter
        message: root.engine.osd.currentMessage
    }

    SidePanelSlot {
        id: sidePanel
        objectName: "sidePanel"
        engine: root.engine
        commands: root.commands
        tab: root.sidePanelTab
        onTabRequested: tab => root.sidePanelTab = tab
    }

    // Made the first time it is asked for, and kept for its fade-out.
    Loader {
        id: shortcutGuide
        objectName: "shortcutGuide"
        anchors.fill: parent
        active: false
        sourceComponent: ShortcutGuide {
            shown: root.shortcutGuideShown
            keyBindings: root.app.keyBindings
            onCloseRequested: root.shortcutGuideShown = false
        }
    }

    // Qt re-delivers a hover event after every frame with the pointer where it was; only a
    // pointer that really moved counts, or the controls would never hide during playback.
    HoverHandler {
        property real lastX: -1
        property real lastY: -1

        onPointChanged: {
            const position = point.scenePosition
            if (position.x === lastX && position.y === lastY)
                return
            lastX = position.x
            lastY = position.y
            root.cursorHidden = false
            root.resetControlsTimer()
        }
    }

    DropArea {
        anchors.fill: parent
        keys: ["text/uri-list"]
        onDropped: drop => {
            if (drop.hasUrls && root.app.dropURLs(drop.urls))
                drop.acceptProposedAction()
        }
    }

    Shortcut {
        sequence: "Escape"
        enabled: root.closesOnEscape
        onActivated: root.closeTopOverlay()
    }
    // Ctrl+1 to Ctrl+5 open the side panel's tabs.
    Instantiator {
        model: 5
        delegate: Shortcut {
            required property int index
            sequence: "Ctrl+" + (index + 1)
            onActivated: root.sidePanelTab = index
        }
    }
}
