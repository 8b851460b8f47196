import QtQuick
import QtQuick.Templates as T
import Ferrobank

/// Release notes in a place of their own, which scrolls. Plain text: nothing in them loads or leads anywhere.
Panel {
    id: notes

    property alias text: words.text

    height: Math.min(words.height + 32, 220)

    Flickable {
        id: scroller

        anchors.fill: parent
        anchors.margins: 16
        contentHeight: words.height
        interactive: contentHeight > height
        boundsBehavior: Flickable.StopAtBounds
        clip: true
        activeFocusOnTab: interactive
        T.ScrollBar.vertical: ThinScrollBar {}

        Keys.onDownPressed: contentY = Math.max(0, Math.min(contentHeight - height, contentY + 40))
        Keys.onUpPressed: contentY = Math.max(0, contentY - 40)

        SelectableText {
            id: words

            objectName: "notesText"
            width: scroller.width - 8
            font: Theme.callout
        }

        FocusRing {
            shown: scroller.activeFocus
            around: 8
        }
    }
}
