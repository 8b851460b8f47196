import QtQuick
import Ferrobank

/// Symbol and title in the middle of a button.
Item {
    id: face

    required property string symbol
    required property string text
    required property font font
    required property color ink
    required property real spacing

    implicitWidth: line.implicitWidth
    implicitHeight: line.implicitHeight

    Row {
        id: line

        anchors.centerIn: parent
        spacing: face.spacing

        SymbolImage {
            anchors.verticalCenter: parent.verticalCenter
            visible: face.symbol !== ""
            name: face.symbol
            color: face.ink
            width: Math.round(15 * Theme.growth)
            height: width
        }

        Text {
            anchors.verticalCenter: parent.verticalCenter
            text: face.text
            font: face.font
            color: face.ink
            textFormat: Text.PlainText
            Accessible.ignored: true
        }
    }
}
