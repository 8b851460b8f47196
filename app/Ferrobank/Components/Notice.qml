import QtQuick
import Ferrobank

/// A symbol and a sentence beside it, shown whole however long it is.
Item {
    id: notice

    required property string symbol
    required property string text

    implicitHeight: Math.max(words.implicitHeight, icon.height)

    SymbolImage {
        id: icon

        anchors.left: parent.left
        y: (metrics.height - height) / 2
        name: notice.symbol
        color: Theme.accentText
        width: Math.round(18 * Theme.growth)
        height: width
    }

    FontMetrics {
        id: metrics

        font: words.font
    }

    BodyText {
        id: words

        anchors.left: icon.right
        anchors.leftMargin: 10
        anchors.right: parent.right
        text: notice.text
    }
}
