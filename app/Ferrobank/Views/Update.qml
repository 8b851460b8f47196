import QtQuick
import Ferrobank

/// The update window: one prompt of the updater, from the question to the bar to the result.
AppFrame {
    id: update

    required property UpdatePresenter presenter

    title: qsTr("Software Update")
    contentWidth: 480

    Page {
        width: parent.width
        height: implicitHeight
        title: update.presenter.headline
        subtitle: update.presenter.text

        Column {
            width: parent.width
            spacing: 16
            visible: update.presenter.busy || update.presenter.notes !== "" || update.presenter.automaticTitle !== ""

            ProgressLine {
                objectName: "progress"
                width: parent.width
                visible: update.presenter.busy
                value: update.presenter.progress
                label: update.presenter.headline
            }

            ReleaseNotes {
                objectName: "notes"
                width: parent.width
                visible: update.presenter.notes !== ""
                text: update.presenter.notes
            }

            Toggle {
                objectName: "automatic"
                width: parent.width
                visible: update.presenter.automaticTitle !== ""
                text: update.presenter.automaticTitle
                checked: update.presenter.automatic
                onToggled: update.presenter.automatic = checked
            }
        }

        buttons: Repeater {
            id: choices

            model: update.presenter.buttons

            PushButton {
                required property int index
                required property string modelData

                readonly property bool last: index === choices.count - 1

                objectName: "button" + index
                text: modelData
                look: last ? PushButton.Prominent : PushButton.Bordered
                defaultAction: last
                onClicked: update.presenter.press(index)
            }
        }
    }

    Shortcut {
        sequence: "Escape"
        autoRepeat: false
        onActivated: update.close()
    }

    Announcer {
        id: announcer
    }

    Connections {
        target: update.presenter

        function onButtonsChanged(): void {
            announcer.say(update.presenter.headline + " " + update.presenter.text);
        }
    }
}
