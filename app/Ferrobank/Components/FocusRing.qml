import QtQuick
import Ferrobank

/// Shows around its parent which control the keyboard is on.
Rectangle {
    property bool shown: false
    /// Corner radius of the control.
    property real around: 7

    anchors.fill: parent
    anchors.margins: -3
    radius: around + 3
    color: "transparent"
    border.width: 2
    border.color: Theme.focusRing
    visible: shown
}
