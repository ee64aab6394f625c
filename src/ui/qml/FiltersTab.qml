import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Velmar

// The picture adjustments, the rotation and the audio delay of the open file.
Item {
    id: root

    required property PlaybackEngine engine
    required property UserCommands commands
    required property bool hasMedia

    AdjustmentListModel {
        id: adjustments
        engine: root.engine
    }

    PanelEmptyState {
        objectName: "filtersEmpty"
        anchors.centerIn: parent
        visible: !root.hasMedia
        symbol: "slider.horizontal.3"
        text: "No media loaded"
    }

    Flickable {
        id: flick
        objectName: "filtersScroll"
        anchors.fill: parent
        visible: root.hasMedia
        clip: true
        contentHeight: content.implicitHeight + 24
        boundsBehavior: Flickable.StopAtBounds
        ScrollBar.vertical: PanelScrollBar {}

        ColumnLayout {
            id: content
            x: 12
            y: 12
            width: flick.width - 24
            spacing: 4

            Label {
                text: "Filters"
                font.pixelSize: 14
                font.weight: Font.DemiBold
            }

            Repeater {
                model: adjustments
                delegate: ColumnLayout {
                    id: filterRow

                    required property int index
                    required property string name
                    required property bool isEnabled
                    required property double value
                    required property double minimum
                    required property double maximum
                    required property string valueText

                    Layout.fillWidth: true
                    spacing: 0

                    RowLayout {
                        Layout.fillWidth: true
                        Switch {
                            id: toggle
                            objectName: "filterSwitch_" + filterRow.name
                            Accessible.name: filterRow.name
                            onToggled: adjustments.setFilter(filterRow.index, checked, slider.value)
                            Binding on checked { value: filterRow.isEnabled }
                        }
                        Label {
                            text: filterRow.name
                            Layout.fillWidth: true
                            color: filterRow.isEnabled ? "white" : "#a0a0a0"
                        }
                        Label {
                            objectName: "filterValue_" + filterRow.name
                            text: filterRow.valueText
                            color: "#a0a0a0"
                            font.family: "monospace"
                        }
                    }
                    Slider {
                        id: slider
                        objectName: "filterSlider_" + filterRow.name
                        Layout.fillWidth: true
                        from: filterRow.minimum
                        to: filterRow.maximum
                        opacity: filterRow.isEnabled ? 1 : 0.5
                        Accessible.name: filterRow.name
                        onMoved: adjustments.setFilter(filterRow.index, true, value)
                        Binding on value { value: filterRow.value }
                    }
                }
            }

            PanelSection { title: "Rotation" }
            RowLayout {
                Layout.fillWidth: true
                Button {
                    objectName: "rotateLeftButton"
                    text: "\u21ba"
                    flat: true
                    Accessible.name: "Rotate Left"
                    onClicked: root.commands.rotate(false)
                }
                Label {
                    objectName: "rotationValue"
                    text: adjustments.rotation + "\u00b0"
                    horizontalAlignment: Text.AlignHCenter
                    Layout.fillWidth: true
                }
                Button {
                    objectName: "rotateRightButton"
                    text: "\u21bb"
                    flat: true
                    Accessible.name: "Rotate Right"
                    onClicked: root.commands.rotate(true)
                }
                Button {
                    objectName: "rotationResetButton"
                    text: "Reset"
                    font.capitalization: Font.MixedCase
                    flat: true
                    enabled: adjustments.rotation !== 0
                    onClicked: root.commands.setRotation(0)
                }
            }

            PanelSection { title: "Audio Sync" }
            RowLayout {
                Layout.fillWidth: true
                Slider {
                    id: delaySlider
                    objectName: "audioDelaySlider"
                    Layout.fillWidth: true
                    from: -5
                    to: 5
                    stepSize: 0.05
                    snapMode: Slider.SnapAlways
                    Accessible.name: "Audio Sync"
                    onMoved: root.commands.setAudioDelay(Math.round(value * 100) / 100)
                    Binding on value { value: adjustments.audioDelay }
                }
                Label {
                    objectName: "audioDelayValue"
                    text: adjustments.audioDelayText
                    color: "#a0a0a0"
                    font.family: "monospace"
                    horizontalAlignment: Text.AlignRight
                    Layout.preferredWidth: 52
                }
            }
            Button {
                objectName: "audioDelayResetButton"
                text: "Reset"
                font.capitalization: Font.MixedCase
                flat: true
                enabled: adjustments.audioDelay !== 0
                onClicked: root.commands.resetAudioDelay()
            }

            Button {
                objectName: "resetAllButton"
                Layout.topMargin: 10
                Layout.fillWidth: true
                text: "Reset All"
                font.capitalization: Font.MixedCase
                onClicked: adjustments.resetAll()
            }
            Label {
                Layout.fillWidth: true
                text: "Adjustments are saved per file"
                color: "#808080"
                font.pixelSize: 11
                horizontalAlignment: Text.AlignHCenter
            }
        }
    }
}
