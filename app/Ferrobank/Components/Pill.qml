import QtQuick
import Ferrobank

/// A symbol and a word on a ground of their own colour.
RoundedBox {
    id: pill

    required property string symbol
    required property string text
    required property color tint

    implicitWidth: face.implicitWidth + 20
    implicitHeight: Math.max(word.implicitHeight, symbolImage.height) + 6
    radius: height / 2
    color: Qt.rgba(tint.r, tint.g, tint.b, 0.15)

    Accessible.role: Accessible.StaticText
    Accessible.name: pill.text

    Row {
        id: face

        anchors.centerIn: parent
        spacing: 5

        SymbolImage {
            id: symbolImage

            anchors.verticalCenter: parent.verticalCenter
            name: pill.symbol
            color: pill.tint
            width: Math.round(14 * Theme.growth)
            height: width
        }

        Text {
            id: word

            anchors.verticalCenter: parent.verticalCenter
            text: pill.text
            font: Theme.calloutMedium
            color: pill.tint
            textFormat: Text.PlainText
            Accessible.ignored: true
        }
    }
}
