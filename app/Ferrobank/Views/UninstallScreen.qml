// Components written inside a file see the ids around them; the linter of Qt 6.4 does not know that.
// qmllint disable unqualified
import QtQuick
import Ferrobank

/// Asks what becomes of the files, follows the uninstall, and says goodbye.
Item {
    id: screen

    required property UninstallPresenter presenter

    signal closeWanted()

    /// The height of the form, which its progress keeps: nothing jumps, and what follows may need it again.
    property real formHeight: 0

    implicitHeight: faces.implicitHeight

    Component.onCompleted: presenter.appeared()

    ScreenStack {
        id: faces

        width: parent.width
        screen: screen.presenter.face === UninstallPresenter.Form ? form
            : screen.presenter.face === UninstallPresenter.Progress ? progress : end
    }

    Component {
        id: form

        UninstallForm {
            onImplicitHeightChanged: screen.formHeight = implicitHeight
            presenter: screen.presenter
            onCloseWanted: screen.closeWanted()
        }
    }

    Component {
        id: progress

        Page {
            minimumHeight: screen.formHeight
            title: qsTr("Uninstalling Ferrobank")
            subtitle: screen.presenter.progress

            Spinner {
                objectName: "uninstallSpinner"
                width: 24
                height: 24
                label: qsTr("Uninstalling Ferrobank")
            }
        }
    }

    Component {
        id: end

        Page {
            title: qsTr("Ferrobank is uninstalled")
            subtitle: screen.presenter.outcome

            buttons: [
                PushButton {
                    objectName: "openCopiedFiles"
                    visible: screen.presenter.copiesFiles
                    text: qsTr("Open Copied Files")
                    onClicked: screen.presenter.openCopiedFiles()
                },
                PushButton {
                    objectName: "moveToTrash"
                    text: qsTr("Move Ferrobank to Trash")
                    onClicked: screen.presenter.moveToTrash()
                },
                PushButton {
                    objectName: "quit"
                    look: PushButton.Prominent
                    text: qsTr("Quit")
                    onClicked: screen.presenter.quit()
                }
            ]
        }
    }
}
