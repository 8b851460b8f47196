import QtQuick
import Ferrobank

/// The words of a switch: what it switches and, under it, more about that.
Item {
    id: words

    required property string text
    required property string caption
    required property font font

    implicitWidth: Math.max(title.implicitWidth, hint.implicitWidth)
    implicitHeight: title.height + (hint.visible ? hint.height + 2 : 0)

    BodyText {
        id: title

        width: parent.width
        // Alone, the title stands level with the middle of the switch.
        y: hint.visible ? 0 : (words.height - height) / 2
        text: words.text
        font: words.font
        opacity: words.enabled ? 1 : 0.5
        Accessible.ignored: true
    }

    BodyText {
        id: hint

        width: parent.width
        y: title.height + 2
        visible: text !== ""
        text: words.caption
        font: Theme.callout
        color: Theme.secondary
        Accessible.ignored: true
    }
}
