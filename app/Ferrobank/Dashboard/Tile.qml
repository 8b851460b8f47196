import QtQuick
import Ferrobank

/// One figure and what it is.
Panel {
    id: tile

    required property string label
    required property string value

    implicitHeight: column.implicitHeight + 32

    Accessible.role: Accessible.StaticText
    Accessible.name: qsTr("%1: %2").arg(tile.label).arg(tile.value)

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

        BodyText {
            id: figure

            objectName: "value"
            width: parent.width
            text: tile.value
            font: Theme.title2Figure
            wrapMode: Text.NoWrap
            fontSizeMode: Text.HorizontalFit
            minimumPixelSize: Math.ceil(metrics.height / 1.2 * 0.8)
            elide: Text.ElideRight
            Accessible.ignored: true
        }

        FontMetrics {
            id: metrics

            font: Theme.title2Figure
        }
    }
}
