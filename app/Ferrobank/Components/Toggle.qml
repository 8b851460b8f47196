import QtQuick
import QtQuick.Templates as T
import Ferrobank

/// A switch with its words before it and, where there is more to say, a caption under them.
T.Switch {
    id: toggle

    property string caption: ""

    font: Theme.body
    focusPolicy: Qt.TabFocus
    spacing: 16
    implicitWidth: implicitContentWidth + spacing + implicitIndicatorWidth
    implicitHeight: Math.max(words.implicitHeight + (caption === "" ? 0 : hint.implicitHeight + 2), implicitIndicatorHeight)

    Accessible.role: Accessible.CheckBox
    Accessible.name: toggle.text
    Accessible.description: toggle.enabled ? toggle.caption : qsTr("dimmed")
    Accessible.checkable: true
    Accessible.checked: toggle.checked
    Accessible.onToggleAction: toggle.flip()
    Accessible.onPressAction: toggle.flip()

    function flip(): void {
        if (toggle.enabled) {
            toggle.toggle();
            toggle.toggled();
        }
    }

    contentItem: Column {
        topPadding: toggle.caption === "" ? (toggle.availableHeight - words.implicitHeight) / 2 : 0
        rightPadding: toggle.mirrored ? 0 : toggle.indicator.width + toggle.spacing
        leftPadding: toggle.mirrored ? toggle.indicator.width + toggle.spacing : 0
        spacing: 2

        BodyText {
            id: words

            width: parent.width - parent.leftPadding - parent.rightPadding
            text: toggle.text
            font: toggle.font
            opacity: toggle.enabled ? 1 : 0.5
            Accessible.ignored: true
        }

        BodyText {
            id: hint

            width: parent.width - parent.leftPadding - parent.rightPadding
            visible: text !== ""
            text: toggle.caption
            font: Theme.callout
            color: Theme.secondary
            Accessible.ignored: true
        }
    }

    indicator: Rectangle {
        x: toggle.mirrored ? 0 : toggle.width - width
        y: Math.max(0, Math.min((toggle.height - height) / 2, 2))
        implicitWidth: 38
        implicitHeight: 22
        radius: height / 2
        color: toggle.checked ? Theme.accent : Theme.track
        opacity: toggle.enabled ? 1 : 0.5

        Behavior on color {
            enabled: !Theme.reducedMotion
            ColorAnimation { duration: 120 }
        }

        Rectangle {
            id: knob

            x: (toggle.mirrored ? 1 - toggle.position : toggle.position) * (parent.width - width - 4) + 2
            y: 2
            width: 18
            height: 18
            radius: 9
            color: "white"

            Behavior on x {
                enabled: !Theme.reducedMotion && !toggle.down
                NumberAnimation { duration: 120; easing.type: Easing.OutCubic }
            }
        }

        FocusRing {
            shown: toggle.visualFocus
            around: parent.radius
        }
    }
}
