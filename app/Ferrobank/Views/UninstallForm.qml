import QtQuick
import Ferrobank

/// The two questions before an uninstall, and what the answers mean.
Page {
    id: form

    required property UninstallPresenter presenter

    signal closeWanted()

    title: qsTr("Uninstall Ferrobank")
    subtitle: qsTr("This detaches the drive and stops Ferrobank from starting at login.")

    Column {
        width: parent.width
        spacing: 16

        Panel {
            width: parent.width
            height: questions.height

            Column {
                id: questions

                width: parent.width

                SettingsRow {
                    width: parent.width

                    Toggle {
                        objectName: "copiesFiles"
                        width: parent.width
                        text: qsTr("Copy my files to a folder first")
                        checked: form.presenter.copiesFiles
                        onToggled: form.presenter.copiesFiles = checked
                    }
                }

                SettingsRow {
                    id: folderRow

                    objectName: "folderRow"
                    width: parent.width
                    visible: form.presenter.copiesFiles
                    divided: true

                    SelectableText {
                        objectName: "folder"
                        anchors.verticalCenter: parent.verticalCenter
                        width: parent.width - choose.width - folderRow.spacing
                        text: form.presenter.folder
                        color: Theme.secondary
                    }

                    PushButton {
                        id: choose

                        objectName: "choose"
                        anchors.verticalCenter: parent.verticalCenter
                        text: qsTr("Choose…")
                        onClicked: form.presenter.chooseFolder()
                    }
                }

                SettingsRow {
                    width: parent.width
                    divided: true

                    Toggle {
                        objectName: "deletesData"
                        width: parent.width
                        text: qsTr("Delete the drive's data from this Mac")
                        checked: form.presenter.deletesData
                        onToggled: form.presenter.deletesData = checked
                    }
                }
            }
        }

        WarningText {
            objectName: "consequence"
            width: parent.width
            text: form.presenter.consequence
            warns: form.presenter.losesFiles
        }

        WarningText {
            objectName: "failure"
            width: parent.width
            visible: text !== ""
            text: form.presenter.failure
        }
    }

    buttons: [
        PushButton {
            objectName: "cancel"
            cancelAction: true
            text: qsTr("Cancel")
            onClicked: form.closeWanted()
        },
        PushButton {
            objectName: "uninstall"
            look: form.presenter.losesFiles ? PushButton.Destructive : PushButton.Prominent
            text: qsTr("Uninstall")
            onClicked: form.presenter.uninstall()
        }
    ]
}
