import QtQuick
import Ferrobank

/// The words of a switch: what it switches and, under it, more about that.
Item {
    id: words

    required property string text
    required property string caption
    required property font font

    implicitWidth: column.implicitWidth
    implicitHeight: column.implicitHeight

    Column {
        id: column

        width: parent.width
        // Alone, the title stands level with the middle of the switch.
        y: hint.visible ? 0 : (parent.height - height) / 2
        spacing: 2

        BodyText {
            width: parent.width
            text: words.text
            font: words.font
            opacity: words.enabled ? 1 : 0.5
            Accessible.ignored: true
        }

        BodyText {
            id: hint

            width: parent.width
            visible: text !== ""
            text: words.caption
            font: Theme.callout
            color: Theme.secondary
            Accessible.ignored: true
        }
    }
}
