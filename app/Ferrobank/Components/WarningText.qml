import QtQuick
import Ferrobank

/// A sentence that warns: in red, and with a sign for people who do not see red. Without the warning it is a quiet
/// remark in the same place.
Item {
    id: warning

    property alias text: words.text
    property alias font: words.font
    property bool warns: true
    readonly property color color: words.color

    implicitHeight: words.height

    SymbolImage {
        id: sign

        objectName: "warningSign"
        anchors.left: parent.left
        y: (metrics.height - height) / 2
        visible: warning.warns
        name: "exclamationmark.triangle.fill"
        color: Theme.red
        width: Math.round(15 * Theme.growth)
        height: width
    }

    FontMetrics {
        id: metrics

        font: words.font
    }

    SelectableText {
        id: words

        anchors.left: warning.warns ? sign.right : parent.left
        anchors.leftMargin: warning.warns ? 7 : 0
        anchors.right: parent.right
        color: warning.warns ? Theme.red : Theme.secondary
    }
}
