import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// A labelled slider with its value shown at the right.
RowLayout {
    id: root

    property string label
    property alias from: slider.from
    property alias to: slider.to
    property alias stepSize: slider.stepSize
    property real value
    property string valueText

    signal moved(real newValue)

    Layout.fillWidth: true
    spacing: 12

    Label {
        text: root.label
        Layout.preferredWidth: 130
    }
    Slider {
        id: slider
        Layout.fillWidth: true
        snapMode: stepSize > 0 ? Slider.SnapAlways : Slider.NoSnap
        value: root.value
        onMoved: root.moved(value)
        Accessible.name: root.label
    }
    Label {
        text: root.valueText
        horizontalAlignment: Text.AlignRight
        Layout.preferredWidth: 48
    }
}
