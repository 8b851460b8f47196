import QtQuick
import Ferrobank

/// The onboarding's second page: what setup will do, the two choices, and what the system will show.
Page {
    id: page

    required property OnboardingPresenter presenter

    title: qsTr("Before setup")
    subtitle: qsTr("Setup changes a few things on this Mac. You choose which.")

    Column {
        width: parent.width
        spacing: 16

        BodyText {
            width: parent.width
            text: qsTr("The drive's background service starts when you log in, so ~/Ferrobank is there when you need it. The drive needs this.")
        }

        Toggle {
            objectName: "menuAtLogin"
            width: parent.width
            text: qsTr("Open the Ferrobank menu at login")
            checked: page.presenter.menuAtLogin
            onToggled: page.presenter.menuAtLogin = checked
        }

        Toggle {
            objectName: "installCLI"
            width: parent.width
            text: qsTr("Install the ferrobank command")
            caption: qsTr("Adds ferrobank to /usr/local/bin so Terminal can run it. macOS may ask for your password once.")
            checked: page.presenter.installCLI
            onToggled: page.presenter.installCLI = checked
        }

        Panel {
            objectName: "notices"
            width: parent.width
            visible: loginItem.visible || network.visible || password.visible
            height: notices.height + 32

            Column {
                id: notices

                x: 16
                y: 16
                width: parent.width - 32
                spacing: 12

                BodyText {
                    width: parent.width
                    text: qsTr("macOS will show a few things along the way:")
                    font: Theme.bodyMedium
                }

                // What a system does not show has no words there.
                Notice {
                    id: loginItem

                    objectName: "noticeLoginItem"
                    width: parent.width
                    visible: text !== ""
                    symbol: "bell.badge"
                    text: qsTr("A “Login Item Added” notification. That is Ferrobank registering so your drive mounts when you log in. Nothing to do.")
                }

                Notice {
                    id: network

                    objectName: "noticeNetwork"
                    width: parent.width
                    visible: text !== ""
                    symbol: "network"
                    text: qsTr("A prompt asking whether Ferrobank may access files on a network volume. Your drive is served from this Mac over a private connection that never leaves it. Click Allow.")
                }

                Notice {
                    id: password

                    objectName: "noticePassword"
                    width: parent.width
                    visible: page.presenter.installCLI
                    symbol: "key"
                    text: qsTr("A password prompt, if this Mac needs it to add the command. Cancel it to skip; you can install the command later from the Ferrobank menu.")
                }
            }
        }
    }

    buttons: PushButton {
        objectName: "allow"
        look: PushButton.Prominent
        defaultAction: true
        text: qsTr("Allow and Set Up")
        onClicked: page.presenter.allowAndSetUp()
    }
}
