import QtQuick
import Ferrobank

/// A modal message: what went wrong, or what the user is about to be asked for.
AppFrame {
    id: message

    required property MessagePresenter presenter

    title: qsTr("Ferrobank")
    contentWidth: 400
    flags: Qt.Dialog | Qt.FramelessWindowHint | Qt.WindowCloseButtonHint
    modality: Qt.ApplicationModal
    minimisable: false

    Page {
        width: parent.width
        height: implicitHeight

        Item {
            width: parent.width
            height: Math.max(icon.height, words.height)

            SymbolImage {
                id: icon

                anchors.left: parent.left
                name: "application"
                width: Math.round(48 * Theme.growth)
                height: width
            }

            SelectableText {
                id: words

                objectName: "message"
                anchors.left: icon.right
                anchors.leftMargin: 16
                anchors.right: parent.right
                y: Math.max(0, (icon.height - height) / 2)
                text: message.presenter.text
            }
        }

        buttons: [
            PushButton {
                objectName: "leave"
                visible: message.presenter.question
                cancelAction: true
                text: qsTr("Cancel")
                onClicked: message.close()
            },
            PushButton {
                objectName: "goOn"
                look: PushButton.Prominent
                defaultAction: true
                cancelAction: !message.presenter.question
                text: message.presenter.question ? qsTr("Continue") : qsTr("OK")
                onClicked: {
                    message.presenter.goesOn();
                    message.close();
                }
            }
        ]
    }
}
