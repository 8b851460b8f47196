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

    implicitWidth: 38
    implicitHeight: 22
    radius: height / 2
    color: checked ? Theme.accent : Theme.track
    opacity: enabled ? 1 : 0.5

    Behavior on color {
        enabled: !Theme.reducedMotion

        ColorAnimation { duration: 120 }
    }

    RoundedBox {
        x: (track.mirrored ? 1 - track.position : track.position) * (parent.width - width - 4) + 2
        y: 2
        width: 18
        height: 18
        radius: 9
        color: "white"

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
