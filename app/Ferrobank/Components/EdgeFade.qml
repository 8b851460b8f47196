// Components written inside a file see the ids around them; the linter of Qt 6.4 does not know that.
// qmllint disable unqualified
import QtQuick
import Ferrobank

/// Lets what scrolls fade into the ground where it goes on beyond its edge. Lies over the view and takes no clicks.
Item {
    id: fade

    required property Flickable over
    /// The ground on which the content stands, opaque.
    property color ground: Theme.window

    readonly property real above: over.contentY + over.topMargin - over.originY
    readonly property real below: over.contentHeight + over.originY + over.bottomMargin - over.contentY - over.height

    component Edge: Rectangle {
        property bool downwards: false

        width: parent.width
        height: Math.min(24, parent.height / 4)
        gradient: Gradient {
            GradientStop {
                position: 0
                color: Qt.alpha(fade.ground, downwards ? 0 : 1)
            }
            GradientStop {
                position: 1
                color: Qt.alpha(fade.ground, downwards ? 1 : 0)
            }
        }
    }

    Edge {
        objectName: "fadeAbove"
        visible: fade.over.interactive && fade.above > 1
    }

    Edge {
        objectName: "fadeBelow"
        anchors.bottom: parent.bottom
        visible: fade.over.interactive && fade.below > 1
        downwards: true
    }
}
