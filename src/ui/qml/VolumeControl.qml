import QtQuick
import QtQuick.Controls
import Velmar

// The mute button with the volume's icon, and the volume slider beside it. Both act through
// the user commands, so the on-screen display says what changed as it does for the keys.
Row {
    id: root

    required property real volume
    required property bool muted
    required property UserCommands commands
    // The slider gives way (shrinks, then goes) when the bar is narrow; the button stays.
    property real sliderWidth: 90

    readonly property string volumeIcon: muted || volume === 0 ? "speaker.slash.fill"
                                         : volume < 0.33 ? "speaker.wave.1.fill"
                                         : volume < 0.66 ? "speaker.wave.2.fill"
                                         : "speaker.wave.3.fill"

    spacing: 2

    BarButton {
        objectName: "muteButton"
        anchors.verticalCenter: parent.verticalCenter
        symbol: root.volumeIcon
        label: root.muted ? "Unmute" : "Mute"
        onClicked: root.commands.toggleMute()
    }

    Slider {
        id: slider
        objectName: "volumeSlider"
        anchors.verticalCenter: parent.verticalCenter
        width: root.sliderWidth
        visible: width > 0
        from: 0
        to: 1
        stepSize: 0.05
        value: root.volume
        focusPolicy: Qt.NoFocus
        Accessible.name: "Volume " + Math.round(root.volume * 100)
        // Only the user's moves go back to the engine; the binding above follows it otherwise.
        onMoved: root.commands.setVolume(value)
    }
}
