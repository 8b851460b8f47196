import QtQuick
import Ferrobank

/// What the files really take on disk as a share of their own sizes: the shorter the solid part, the more was
/// saved.
RoundedBox {
    id: bar

    /// From 0 to 1.
    required property real fraction

    implicitHeight: 10
    height: 10
    radius: 5
    color: Qt.rgba(Theme.bar.r, Theme.bar.g, Theme.bar.b, 0.2)

    Accessible.role: Accessible.ProgressBar
    Accessible.name: qsTr("Stored on disk")
    Accessible.description: qsTr("%1 %").arg(Math.round(bar.fraction * 100))

    RoundedBox {
        objectName: "solid"
        anchors.left: parent.left
        width: Math.max(8, bar.fraction * bar.width)
        height: parent.height
        radius: height / 2
        color: Theme.bar

        Behavior on width {
            enabled: !Theme.reducedMotion
            NumberAnimation { duration: 300; easing.type: Easing.OutCubic }
        }
    }
}
