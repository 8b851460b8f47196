import QtQuick
import Ferrobank

/// The part of a switch that moves.
RoundedBox {
    id: track

    required property bool checked
    /// From 0, off, to 1, on; in between while it is dragged.
    required property real position
    required property bool dragged
    required property bool mirrored
    required property bool focused

    readonly property real growth: Theme.growth

    implicitWidth: Math.round(38 * growth)
    implicitHeight: Math.round(22 * growth)
    radius: height / 2
    color: checked ? Theme.switchOn : Theme.track
    opacity: enabled ? 1 : 0.5

    Behavior on color {
        enabled: !Theme.reducedMotion

        ColorAnimation { duration: 120 }
    }

    RoundedBox {
        x: (track.mirrored ? 1 - track.position : track.position) * (parent.width - width - 4) + 2
        y: 2
        width: track.height - 4
        height: width
        radius: width / 2
        color: track.checked ? Theme.onSwitch : "white"

        Behavior on x {
            enabled: !Theme.reducedMotion && !track.dragged

            NumberAnimation { duration: 120; easing.type: Easing.OutCubic }
        }
    }

    FocusRing {
        shown: track.focused
        around: track.radius
    }
}
