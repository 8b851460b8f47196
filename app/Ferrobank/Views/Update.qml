import QtQuick
import Ferrobank

/// The update window: one prompt of the updater, from the question to the bar to the result.
AppFrame {
    id: prompts

    required property UpdatePresenter presenter

    title: qsTr("Software Update")
    contentWidth: 480

    Page {
        width: parent.width
        height: implicitHeight
        title: prompts.presenter.headline
        subtitle: prompts.presenter.text

        Column {
            width: parent.width
            spacing: 16

            ProgressLine {
                objectName: "progress"
                width: parent.width
                visible: prompts.presenter.busy
                value: prompts.presenter.progress
                label: prompts.presenter.headline
            }

            ReleaseNotes {
                objectName: "notes"
                width: parent.width
                visible: prompts.presenter.notes !== ""
                text: prompts.presenter.notes
            }

            Toggle {
                objectName: "automatic"
                width: parent.width
                visible: prompts.presenter.automaticTitle !== ""
                text: prompts.presenter.automaticTitle
                checked: prompts.presenter.automatic
                onToggled: prompts.presenter.automatic = checked
            }

            About {
                width: parent.width
                visible: !prompts.presenter.busy
                text: prompts.presenter.about
                diagnostics: prompts.presenter.diagnostics
            }
        }

        buttons: Repeater {
            id: choices

            model: prompts.presenter.buttons

            PushButton {
                required property int index
                required property string modelData

                // A repeated item sees the ids around it, which the linter of this version does not know.
                // qmllint disable unqualified
                readonly property bool last: index === choices.count - 1

                objectName: "button" + index
                text: modelData
                look: last ? PushButton.Prominent : PushButton.Bordered
                defaultAction: last
                onClicked: prompts.presenter.press(index)
                // qmllint enable unqualified
            }
        }
    }

    Shortcut {
        sequence: "Escape"
        autoRepeat: false
        onActivated: prompts.close()
    }

    Announcer {
        id: announcer
    }

    Connections {
        target: prompts.presenter

        function onButtonsChanged(): void {
            announcer.say(prompts.presenter.headline + " " + prompts.presenter.text);
        }
    }
}
