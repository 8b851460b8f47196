import QtQuick
import Ferrobank

/// Which version runs, and what a problem report needs of it.
Panel {
    id: about

    required property string text
    required property DiagnosticsCopy diagnostics

    height: Math.max(words.height, copy.height) + 20

    SelectableText {
        id: words

        objectName: "about"
        anchors.left: parent.left
        anchors.leftMargin: 16
        anchors.right: copy.left
        anchors.rightMargin: 12
        anchors.verticalCenter: parent.verticalCenter
        text: about.text
        color: Theme.secondary
    }

    CopyDiagnostics {
        id: copy

        anchors.right: parent.right
        anchors.rightMargin: 10
        anchors.verticalCenter: parent.verticalCenter
        compact: true
        diagnostics: about.diagnostics
    }
}
