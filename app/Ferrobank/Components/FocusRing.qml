import QtQuick
import Ferrobank

/// Shows around its parent which control the keyboard is on.
RoundedBox {
    property bool shown: false
    /// Corner radius of the control.
    property real around: 7

    anchors.fill: parent
    anchors.margins: -3
    radius: around + 3
    color: "transparent"
    borderWidth: 2
    borderColor: Theme.focusRing
    visible: shown
}
