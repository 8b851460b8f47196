import QtQuick
import Ferrobank

/// One figure and what it is.
Panel {
    id: tile

    required property string label
    required property string value

    implicitHeight: column.implicitHeight + 32

    Accessible.role: Accessible.Grouping
    Accessible.name: tile.label

    Column {
        id: column

        x: 16
        y: 16
        width: parent.width - 32
        spacing: 4

        BodyText {
            width: parent.width
            text: tile.label
            font: Theme.callout
            color: Theme.secondary
            Accessible.ignored: true
        }

        SelectableText {
            objectName: "value"
            width: parent.width
            text: tile.value
            // Text that is larger than usual by the desktop's wish may give way further: the tile cannot grow.
            font: Theme.fitted(Theme.title2Figure, tile.value, width, 0.8 / Math.max(1, Theme.textScale))
            wrapMode: TextEdit.NoWrap
            clip: contentWidth > width
        }
    }
}
