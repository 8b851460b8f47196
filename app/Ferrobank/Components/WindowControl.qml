import QtQuick
import QtQuick.Templates as T
import Ferrobank

/// One of the window's own controls, in its top corner.
T.Button {
    id: control

    required property string symbol

    implicitWidth: 24
    implicitHeight: 24
    focusPolicy: Qt.TabFocus

    Accessible.role: Accessible.Button
    Accessible.name: control.text
    Accessible.onPressAction: if (control.enabled) control.clicked()

    Keys.onShortcutOverride: event => {
        event.accepted = event.key === Qt.Key_Return || event.key === Qt.Key_Enter;
    }
    Keys.onReturnPressed: control.clicked()
    Keys.onEnterPressed: control.clicked()

    contentItem: Item {
        SymbolImage {
            anchors.centerIn: parent
            name: control.symbol
            color: control.hovered || control.visualFocus ? Theme.primary : Theme.secondary
            width: 14
            height: 14
        }
    }

    background: RoundedBox {
        visible: opacity > 0
        radius: 12
        color: Theme.dark ? "white" : "black"
        opacity: control.down ? 0.16 : control.hovered ? 0.09 : 0

        Behavior on opacity {
            enabled: !Theme.reducedMotion
            NumberAnimation { duration: 100 }
        }
    }

    FocusRing {
        shown: control.visualFocus
        around: 12
        anchors.margins: -1
    }
}
