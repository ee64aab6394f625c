import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import QtQuick.Dialogs
import Velmar

// The open file's subtitle and audio tracks. A click selects a track (subtitles also "Off"); a
// subtitle loaded from a file can be taken out again, and more can be added from files.
Item {
    id: root

    required property PlaybackEngine engine
    required property UserCommands commands
    required property bool hasMedia

    // Made the first time it is asked for.
    property FileDialog subtitleDialog: null

    function showSubtitleDialog() {
        if (!subtitleDialog)
            subtitleDialog = subtitleDialogComponent.createObject(root)
        subtitleDialog.open()
    }

    function addSubtitleFiles(urls) {
        root.commands.addSubtitles(urls)
    }

    Component {
        id: subtitleDialogComponent
        FileDialog {
            objectName: "subtitleDialog"
            title: "Select subtitle files"
            fileMode: FileDialog.OpenFiles
            nameFilters: DesktopActions.subtitleNameFilters()
            onAccepted: root.addSubtitleFiles(selectedFiles)
        }
    }

    TrackListModel {
        id: internalSubtitles
        engine: root.engine
        group: TrackListModel.InternalSubtitles
    }
    TrackListModel {
        id: externalSubtitles
        engine: root.engine
        group: TrackListModel.ExternalSubtitles
    }
    TrackListModel {
        id: audioTracks
        engine: root.engine
        group: TrackListModel.Audio
    }

    // One selectable track, or the subtitles' "Off".
    component TrackRow: Rectangle {
        id: trackRow

        property string text
        property string detailText
        property bool active
        property bool removable
        signal chosen()
        signal removeRequested()

        Layout.fillWidth: true
        implicitHeight: detailText.length > 0 ? 44 : 32
        color: rowMouse.containsMouse ? Qt.rgba(1, 1, 1, 0.06) : "transparent"
        radius: 4
        Accessible.role: Accessible.RadioButton
        Accessible.name: text
        Accessible.checked: active

        MouseArea {
            id: rowMouse
            anchors.fill: parent
            hoverEnabled: true
            onClicked: trackRow.chosen()
        }
        RowLayout {
            anchors.fill: parent
            anchors.leftMargin: 6
            anchors.rightMargin: 2
            spacing: 8

            SymbolIcon {
                symbol: trackRow.active ? "checkmark.circle.fill" : "circle"
                color: trackRow.active ? "#4a90e2" : "#808080"
            }
            ColumnLayout {
                Layout.fillWidth: true
                spacing: 0
                Label {
                    text: trackRow.text
                    elide: Text.ElideRight
                    Layout.fillWidth: true
                }
                Label {
                    visible: trackRow.detailText.length > 0
                    text: trackRow.detailText
                    color: "#909090"
                    font.pixelSize: 11
                    elide: Text.ElideRight
                    Layout.fillWidth: true
                }
            }
            Label {
                visible: trackRow.active
                text: "Active"
                color: "#4a90e2"
                font.pixelSize: 11
            }
            ToolButton {
                visible: trackRow.removable
                objectName: "removeSubtitleButton"
                icon.name: SymbolIcons.name("xmark")
                icon.color: "#a0a0a0"
                icon.width: 12
                icon.height: 12
                implicitWidth: 28
                implicitHeight: 28
                Accessible.name: "Remove Subtitle"
                onClicked: trackRow.removeRequested()
            }
        }
    }

    component NoneLine: Label {
        color: "#808080"
        font.pixelSize: 12
        Layout.leftMargin: 6
    }

    PanelEmptyState {
        objectName: "tracksEmpty"
        anchors.centerIn: parent
        visible: !root.hasMedia
        symbol: "captions.bubble"
        text: "No media loaded"
    }

    Flickable {
        id: flick
        objectName: "tracksScroll"
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
            spacing: 2

            PanelSection {
                Layout.topMargin: 0
                symbol: "captions.bubble"
                title: "Subtitles"
            }
            NoneLine {
                visible: internalSubtitles.count + externalSubtitles.count === 0
                text: "No subtitle tracks"
            }
            TrackRow {
                objectName: "subtitleOffRow"
                visible: internalSubtitles.count + externalSubtitles.count > 0
                text: "Off"
                active: root.engine.tracks.currentSubtitleID === 0
                onChosen: root.commands.selectSubtitleTrack(0)
            }
            Label {
                visible: internalSubtitles.count > 0
                text: "Internal"
                color: "#808080"
                font.pixelSize: 11
                Layout.topMargin: 4
            }
            Repeater {
                model: internalSubtitles
                delegate: TrackRow {
                    required property var trackId
                    required property string label
                    required property string detail
                    required property bool isActive
                    text: label
                    detailText: detail
                    objectName: "subtitleRow_" + trackId
                    active: isActive
                    onChosen: root.commands.selectSubtitleTrack(trackId)
                }
            }
            Label {
                visible: externalSubtitles.count > 0
                text: "External"
                color: "#808080"
                font.pixelSize: 11
                Layout.topMargin: 4
            }
            Repeater {
                model: externalSubtitles
                delegate: TrackRow {
                    required property var trackId
                    required property string label
                    required property string detail
                    required property bool isActive
                    text: label
                    detailText: detail
                    objectName: "subtitleRow_" + trackId
                    active: isActive
                    removable: true
                    onChosen: root.commands.selectSubtitleTrack(trackId)
                    onRemoveRequested: root.commands.removeSubtitle(trackId)
                }
            }
            Button {
                objectName: "addSubtitleButton"
                text: "Add Subtitle File..."
                font.capitalization: Font.MixedCase
                flat: true
                icon.name: SymbolIcons.name("plus.circle")
                icon.color: "white"
                onClicked: root.showSubtitleDialog()
            }

            PanelSection {
                symbol: "waveform"
                title: "Audio"
            }
            NoneLine {
                visible: audioTracks.count === 0
                text: "No audio tracks"
            }
            Repeater {
                model: audioTracks
                delegate: TrackRow {
                    required property var trackId
                    required property string label
                    required property string detail
                    required property bool isActive
                    text: label
                    detailText: detail
                    objectName: "audioRow_" + trackId
                    active: isActive
                    onChosen: root.commands.selectAudioTrack(trackId)
                }
            }

            RowLayout {
                Layout.topMargin: 14
                spacing: 6
                SymbolIcon {
                    symbol: "keyboard"
                    size: 14
                    color: "#808080"
                }
                Label {
                    text: "J \u2014 cycle subtitle  Shift+J \u2014 cycle audio"
                    color: "#808080"
                    font.pixelSize: 11
                }
            }
        }
    }
}
