import QtQuick
import Ferrobank

/// The button that copies what a problem report needs, and says when it has.
PushButton {
    id: button

    required property DiagnosticsCopy diagnostics

    objectName: "copyDiagnostics"
    enabled: !diagnostics.busy
    text: justCopied.running ? qsTr("Copied") : qsTr("Copy Diagnostics")
    onClicked: diagnostics.copy()

    Timer {
        id: justCopied

        interval: 2500
    }

    Connections {
        target: button.diagnostics

        function onCopied(): void {
            justCopied.restart();
            announcer.say(qsTr("The diagnostics are on the clipboard."));
        }
    }

    Announcer {
        id: announcer
    }
}
