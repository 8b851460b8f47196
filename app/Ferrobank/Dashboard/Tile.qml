import QtQuick
import Ferrobank

/// One figure and what it is. In a tile taller than it needs to be the figure stays at the bottom, level with its
/// neighbours'.
Panel {
    id: tile

    required property string label
    required property string value
    /// The size on which the tiles of a row agree.
    property font figureFont: Theme.title2Figure
    readonly property real room: width - 32

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

    FigureText {
        id: figure

        objectName: "value"
        x: 16
        y: parent.height - height - 16
        width: parent.width - 32
        text: Theme.elided(tile.value, tile.figureFont, tile.room)
        font: tile.figureFont
        Accessible.name: tile.value
    }
}
