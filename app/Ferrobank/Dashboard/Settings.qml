import QtQuick
import Ferrobank

/// The few things one can set.
Panel {
    id: settings

    required property DashboardPresenter presenter

    implicitHeight: rows.implicitHeight
    height: implicitHeight

    Announcer {
        id: announcer
    }

    Column {
        id: rows

        width: parent.width

        SettingsRow {
            width: parent.width

            Toggle {
                objectName: "menuAtLogin"
                width: parent.width
                text: qsTr("Open the Ferrobank menu at login")
                checked: settings.presenter.menuOpensAtLogin
                onToggled: settings.presenter.menuOpensAtLogin = checked
            }
        }

        SettingsRow {
            id: command

            width: parent.width
            divided: true

            Column {
                anchors.verticalCenter: parent.verticalCenter
                width: parent.width - (install.visible ? install.width + command.spacing : 0)
                spacing: 2

                BodyText {
                    width: parent.width
                    text: qsTr("Command-line tool")
                }

                SelectableText {
                    objectName: "cliLink"
                    width: parent.width
                    visible: settings.presenter.cliInstalled
                    text: settings.presenter.cliLink
                    font: Theme.monospace
                    color: Theme.secondary
                }
            }

            PushButton {
                id: install

                objectName: "install"
                anchors.verticalCenter: parent.verticalCenter
                visible: !settings.presenter.cliInstalled
                enabled: !settings.presenter.cliInstalling
                text: qsTr("Install…")
                onClicked: settings.presenter.installCommandLineTool()
            }
        }

        SettingsRow {
            width: parent.width
            divided: true

            PushButton {
                objectName: "showLog"
                text: qsTr("Show Log")
                onClicked: settings.presenter.showLog()
            }

            PushButton {
                objectName: "uninstall"
                text: qsTr("Uninstall Ferrobank…")
                onClicked: settings.presenter.uninstall()
            }

            BodyText {
                objectName: "logNote"
                anchors.verticalCenter: parent.verticalCenter
                visible: text !== ""
                text: settings.presenter.logNote
                font: Theme.callout
                color: Theme.secondary
                onTextChanged: if (text !== "") announcer.say(text)
            }
        }
    }
}
