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
    leftPadding: mirrored ? implicitIndicatorWidth + spacing : 0
    rightPadding: mirrored ? 0 : implicitIndicatorWidth + spacing
    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: Math.max(implicitContentHeight, implicitIndicatorHeight)

    Accessible.role: Accessible.CheckBox
    Accessible.name: toggle.text
    Accessible.description: toggle.enabled ? toggle.caption
        : toggle.caption === "" ? qsTr("dimmed") : qsTr("dimmed: %1").arg(toggle.caption)
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

    contentItem: ToggleWords {
        text: toggle.text
        caption: toggle.caption
        font: toggle.font
    }

    indicator: SwitchTrack {
        x: toggle.mirrored ? 0 : toggle.width - width
        y: Math.max(0, Math.min((toggle.height - height) / 2, 2))
        checked: toggle.checked
        position: toggle.position
        dragged: toggle.down
        mirrored: toggle.mirrored
        focused: toggle.visualFocus
    }
}
