import QtQuick
import Ferrobank

/// One figure and what it is. In a tile taller than it needs to be the figure stays at the bottom, level with its
/// neighbours'.
Panel {
    id: tile

    required property string label
    required property string value

    implicitHeight: words.implicitHeight + 4 + figure.implicitHeight + 32

    Accessible.role: Accessible.Grouping
    Accessible.name: tile.label

    BodyText {
        id: words

        x: 16
        y: 16
        width: parent.width - 32
        text: tile.label
        font: Theme.callout
        color: Theme.secondary
        Accessible.ignored: true
    }

    SelectableText {
        id: figure

        objectName: "value"
        x: 16
        y: parent.height - height - 16
        width: parent.width - 32
        text: tile.value
        // Text that is larger than usual by the desktop's wish may give way further: the tile cannot grow.
        font: Theme.fitted(Theme.title2Figure, tile.value, width, 0.8 / Math.max(1, Theme.textScale))
        wrapMode: TextEdit.NoWrap
        clip: contentWidth > width
    }
}
