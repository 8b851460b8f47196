import QtQuick
import Ferrobank

/// One row of a settings panel: its content side by side, vertically centred.
Item {
    id: settingsRow

    default property alias content: line.data
    readonly property alias spacing: line.spacing
    /// Whether a hairline parts it from the row above.
    property bool divided: false

    implicitHeight: Math.max(28, line.implicitHeight) + 16

    RoundedBox {
        visible: settingsRow.divided
        x: 16
        width: parent.width - 32
        height: 1
        color: Theme.hairline
    }

    Row {
        id: line

        anchors.left: parent.left
        anchors.right: parent.right
        anchors.leftMargin: 16
        anchors.rightMargin: 16
        anchors.verticalCenter: parent.verticalCenter
        spacing: 10
    }
}
