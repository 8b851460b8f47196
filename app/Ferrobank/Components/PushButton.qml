import QtQuick
import QtQuick.Templates as T
import Ferrobank

/// A button. Return presses the one that has the focus, and where none has it the screen's default action, of which
/// there is at most one; Escape presses its cancel action, of which there is at most one, too.
T.Button {
    id: button

    enum Look { Bordered, Prominent, Destructive }

    property int look: PushButton.Bordered
    property bool defaultAction: false
    property bool cancelAction: false
    /// Lower, for a button beside a line of text.
    property bool compact: false
    /// Name of a symbol before the title; none when empty.
    property string symbol: ""

    readonly property bool filled: look !== PushButton.Bordered
    readonly property color ink: look === PushButton.Prominent ? Theme.onAccent
        : look === PushButton.Destructive ? Theme.onDanger : Theme.primary
    readonly property color fill: look === PushButton.Prominent ? Theme.accent
        : look === PushButton.Destructive ? Theme.danger : Theme.control

    font: filled ? Theme.bodyMedium : Theme.body
    focusPolicy: Qt.TabFocus
    horizontalPadding: compact ? 11 : 14
    verticalPadding: compact ? 3 : 5
    spacing: 6
    implicitHeight: Math.max(compact ? 26 : 30, implicitContentHeight + topPadding + bottomPadding)
    implicitWidth: Math.ceil(Math.max(compact ? 0 : 72, implicitContentWidth + leftPadding + rightPadding))
    opacity: enabled ? 1 : 0.5

    Accessible.role: Accessible.Button
    Accessible.name: button.text
    Accessible.description: button.enabled ? "" : qsTr("dimmed")
    Accessible.onPressAction: if (button.enabled) button.clicked()

    // Before the shortcut of another button gets it.
    Keys.onShortcutOverride: event => {
        event.accepted = event.key === Qt.Key_Return || event.key === Qt.Key_Enter;
    }
    Keys.onReturnPressed: button.clicked()
    Keys.onEnterPressed: button.clicked()

    Shortcut {
        sequences: ["Return", "Enter"]
        enabled: button.defaultAction && button.enabled && button.visible
        autoRepeat: false
        onActivated: button.clicked()
    }

    Shortcut {
        sequence: "Escape"
        enabled: button.cancelAction && button.enabled && button.visible
        autoRepeat: false
        onActivated: button.clicked()
    }

    contentItem: ButtonFace {
        symbol: button.symbol
        text: button.text
        font: button.font
        ink: button.ink
        spacing: button.spacing
    }

    background: RoundedBox {
        radius: 7
        color: button.fill
        borderWidth: button.filled ? 0 : 1
        borderColor: Theme.border

        RoundedBox {
            anchors.fill: parent
            visible: opacity > 0
            radius: parent.radius
            color: Theme.dark ? "white" : "black"
            opacity: button.down ? 0.12 : button.hovered ? 0.05 : 0
        }

        FocusRing {
            shown: button.visualFocus
            around: 7
        }
    }
}
