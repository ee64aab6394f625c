import QtQuick
import QtQuick.Controls.impl
import Velmar

// An icon named by its symbol ("play.fill"), drawn from the desktop's icon theme in one colour.
IconImage {
    property string symbol
    property int size: 16

    name: symbol.length > 0 ? SymbolIcons.name(symbol) : ""
    color: "white"
    sourceSize: Qt.size(size, size)
}
