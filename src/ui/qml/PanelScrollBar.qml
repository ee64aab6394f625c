import QtQuick
import QtQuick.Controls

// The side panel's scroll bar: a thin light knob over the content, with no track, shown while
// the content moves or the pointer is over it (the style fades it), so the panel stays dark all
// over.
ScrollBar {
    id: bar

    policy: ScrollBar.AsNeeded
    visible: size > 0 && size < 1
    padding: 2
    background: Item {}
    contentItem: Rectangle {
        implicitWidth: bar.hovered || bar.pressed ? 8 : 5
        implicitHeight: implicitWidth
        radius: width / 2
        color: Qt.rgba(1, 1, 1, bar.pressed ? 0.55 : 0.35)
    }
}
