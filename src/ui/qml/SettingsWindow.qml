import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Velmar

// Preferences in four tabs. Every control writes its preference as it changes.
ApplicationWindow {
    id: root

    property KeyBindingManager keyBindings

    function showAndRaise() {
        show()
        raise()
        requestActivate()
    }

    title: "Settings"
    width: 560
    height: 480
    minimumWidth: 480
    minimumHeight: 400

    SettingsModel {
        id: settings
    }

    header: TabBar {
        id: tabs
        TabButton { text: "General"; font.capitalization: Font.MixedCase }
        TabButton { text: "Playback"; font.capitalization: Font.MixedCase }
        TabButton { text: "Appearance"; font.capitalization: Font.MixedCase }
        TabButton { text: "Key Bindings"; font.capitalization: Font.MixedCase }
    }

    StackLayout {
            anchors.fill: parent
            anchors.margins: 16
            currentIndex: tabs.currentIndex

            ColumnLayout {
                spacing: 8
                SectionTitle { text: "Playback Behavior" }
                Switch {
                    text: "Resume playback from last position"
                    checked: settings.resumePlayback
                    onToggled: settings.resumePlayback = checked
                }
                Switch {
                    text: "Auto-play when opening a file"
                    checked: settings.autoPlayOnOpen
                    onToggled: settings.autoPlayOnOpen = checked
                }
                Switch {
                    text: "Prevent sleep during playback"
                    checked: settings.preventSleep
                    onToggled: settings.preventSleep = checked
                }
                Item { Layout.fillHeight: true }
            }

            ColumnLayout {
                spacing: 8
                SectionTitle { text: "Audio" }
                SliderRow {
                    label: "Default Volume"
                    from: 0; to: 1; stepSize: 0
                    value: settings.defaultVolume
                    valueText: Math.floor(value * 100) + "%"
                    onMoved: newValue => settings.defaultVolume = newValue
                }
                SectionTitle { text: "Seeking" }
                SliderRow {
                    label: "Small Step"
                    from: 1; to: 30; stepSize: 1
                    value: settings.seekSmallStep
                    valueText: Math.floor(value) + "s"
                    onMoved: newValue => settings.seekSmallStep = newValue
                }
                SliderRow {
                    label: "Large Step"
                    from: 10; to: 120; stepSize: 5
                    value: settings.seekLargeStep
                    valueText: Math.floor(value) + "s"
                    onMoved: newValue => settings.seekLargeStep = newValue
                }
                SectionTitle { text: "Decoding" }
                Switch {
                    text: "Hardware decoding (VA-API / NVDEC)"
                    checked: settings.hardwareDecoding
                    onToggled: settings.hardwareDecoding = checked
                }
                Item { Layout.fillHeight: true }
            }

            ColumnLayout {
                spacing: 8
                SectionTitle { text: "Control Bar" }
                SliderRow {
                    label: "Opacity"
                    from: 0.3; to: 1; stepSize: 0
                    value: settings.controlBarOpacity
                    valueText: Math.floor(value * 100) + "%"
                    onMoved: newValue => settings.controlBarOpacity = newValue
                }
                SliderRow {
                    label: "Auto-hide Delay"
                    from: 1; to: 10; stepSize: 0.5
                    value: settings.controlsAutoHideDelay
                    valueText: settings.formatSeconds(value)
                    onMoved: newValue => settings.controlsAutoHideDelay = newValue
                }
                SectionTitle { text: "OSD" }
                SliderRow {
                    label: "Display Duration"
                    from: 0.5; to: 5; stepSize: 0.5
                    value: settings.osdDuration
                    valueText: settings.formatSeconds(value)
                    onMoved: newValue => settings.osdDuration = newValue
                }
                Item { Layout.fillHeight: true }
            }

            KeyBindingEditor {
                keyBindings: root.keyBindings
            }
    }

    component SectionTitle: Label {
        Layout.topMargin: 6
        font.bold: true
    }
}
