import QtQuick
import QtQuick.Window
import Velmar

Window {
    id: window

    required property PlaybackEngine engine

    width: 1280
    height: 720
    minimumWidth: 480
    minimumHeight: 270
    visible: true
    color: "black"
    title: engine.mediaTitle.length > 0 ? engine.mediaTitle + " \u2014 VelmarPlayer" : "VelmarPlayer"

    PlayerView {
        anchors.fill: parent
        engine: window.engine
    }
}
