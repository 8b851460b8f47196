import QtQuick
import Ferrobank

/// Work in progress, without an end in sight. Stands still where the desktop asks for reduced motion.
SpinnerDrawing {
    id: spinner

    /// What is in progress, for people who do not see it.
    property string label: qsTr("In progress")

    running: !Theme.reducedMotion
    color: Theme.secondary
    width: 16
    height: 16

    Accessible.role: Accessible.Animation
    Accessible.name: spinner.label
}
