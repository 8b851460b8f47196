import QtQuick
import Ferrobank

/// A bar that fills from the leading edge; where nobody knows how far it is, a spinner in its place.
Item {
    id: line

    /// 0 to 1; below 0 for unknown.
    property real value: -1
    property string label: ""

    readonly property bool known: value >= 0

    implicitHeight: 16

    Accessible.role: Accessible.ProgressBar
    Accessible.name: line.label
    Accessible.description: line.known ? qsTr("%1 percent").arg(Math.round(line.value * 100)) : ""

    Spinner {
        visible: !line.known
        label: line.label
    }

    RoundedBox {
        anchors.verticalCenter: parent.verticalCenter
        width: parent.width
        height: 6
        radius: 3
        visible: line.known
        color: Theme.groove

        RoundedBox {
            x: line.LayoutMirroring.enabled ? parent.width - width : 0
            width: parent.width * Math.min(1, Math.max(0, line.value))
            height: parent.height
            radius: 3
            color: Theme.switchOn
        }
    }
}
