import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Velmar

// The open file's technical summary. Fields libmpv could not tell are left out.
Item {
    id: root

    required property PlaybackEngine engine
    readonly property var info: engine.mediaInfo

    // A label and its value, or nothing when the value is unknown.
    component InfoRow: RowLayout {
        id: infoRow

        property string label
        property var value

        Layout.fillWidth: true
        visible: value !== undefined && value !== ""
        spacing: 8

        Label {
            text: infoRow.label
            color: "#a0a0a0"
            Layout.preferredWidth: 84
            Layout.alignment: Qt.AlignTop
        }
        Label {
            objectName: "info_" + infoRow.label.replace(" ", "")
            text: infoRow.value === undefined ? "" : infoRow.value
            wrapMode: Text.Wrap
            Layout.fillWidth: true
        }
    }

    function known(value, format) {
        return value === undefined ? undefined : format(value)
    }

    PanelEmptyState {
        objectName: "infoEmpty"
        anchors.centerIn: parent
        visible: root.info === undefined
        symbol: "info.circle"
        text: "No media loaded"
    }

    Flickable {
        id: flick
        objectName: "infoScroll"
        anchors.fill: parent
        visible: root.info !== undefined
        clip: true
        contentHeight: content.implicitHeight + 24
        boundsBehavior: Flickable.StopAtBounds
        ScrollBar.vertical: PanelScrollBar {}

        ColumnLayout {
            id: content
            x: 12
            y: 12
            width: flick.width - 24
            spacing: 6

            InfoRow {
                label: "Title"
                value: root.engine.mediaTitle
            }

            RowLayout {
                Layout.fillWidth: true
                Layout.topMargin: 10
                SymbolIcon {
                    symbol: "folder"
                    size: 14
                    color: "#a0a0a0"
                }
                Label {
                    objectName: "infoFileName"
                    text: root.info ? root.info.filename : ""
                    color: "#a0a0a0"
                    font.pixelSize: 12
                    font.weight: Font.DemiBold
                    elide: Text.ElideMiddle
                    Layout.fillWidth: true
                }
                ToolButton {
                    objectName: "revealFileButton"
                    icon.name: SymbolIcons.name("arrow.up.forward.square")
                    icon.color: "white"
                    Accessible.name: "Show in File Manager"
                    ToolTip.text: "Show in File Manager"
                    ToolTip.visible: hovered
                    ToolTip.delay: 600
                    onClicked: DesktopActions.revealFile(root.engine.currentURL)
                }
            }
            InfoRow {
                label: "Size"
                value: root.info ? root.known(root.info.fileSize, v => Formats.fileSize(v)) : undefined
            }
            InfoRow {
                label: "Format"
                value: root.info ? root.info.container : undefined
            }
            InfoRow {
                label: "Created"
                value: root.info ? root.known(root.info.createdAt, v => Formats.dateTime(v)) : undefined
            }
            InfoRow {
                label: "Modified"
                value: root.info ? root.known(root.info.modifiedAt, v => Formats.dateTime(v)) : undefined
            }

            PanelSection {
                symbol: "film"
                title: "Video"
                visible: root.info !== undefined && root.info.videoCodec !== undefined
            }
            InfoRow {
                label: "Codec"
                value: root.info ? root.info.videoCodec : undefined
            }
            InfoRow {
                label: "Resolution"
                value: root.info && root.info.width !== undefined && root.info.height !== undefined
                       ? root.info.width + " \u00d7 " + root.info.height : undefined
            }
            InfoRow {
                label: "Frame Rate"
                value: root.info ? root.known(root.info.fps, fps => fps.toFixed(3)) : undefined
            }
            InfoRow {
                label: "Bitrate"
                value: root.info ? root.known(root.info.videoBitrate, v => Formats.bitrate(v)) : undefined
            }
            InfoRow {
                label: "Pixel Fmt"
                value: root.info ? root.info.pixelFormat : undefined
            }

            PanelSection {
                symbol: "waveform"
                title: "Audio"
                visible: root.info !== undefined && root.info.audioCodec !== undefined
            }
            InfoRow {
                label: "Codec"
                value: root.info ? root.info.audioCodec : undefined
            }
            InfoRow {
                label: "Channels"
                value: root.info ? root.known(root.info.audioChannels, v => Formats.channels(v)) : undefined
            }
            InfoRow {
                label: "Sample Rate"
                value: root.info ? root.known(root.info.audioSampleRate, v => Formats.sampleRate(v))
                                 : undefined
            }
            InfoRow {
                label: "Bitrate"
                value: root.info ? root.known(root.info.audioBitrate, v => Formats.bitrate(v)) : undefined
            }
        }
    }
}
