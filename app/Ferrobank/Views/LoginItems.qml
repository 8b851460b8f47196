import QtQuick
import Ferrobank

/// The Login Items window: what of Ferrobank starts at login, and a switch for each.
AppFrame {
    id: items

    required property LoginItemsPresenter presenter

    title: qsTr("Login Items")
    contentWidth: 460

    onActiveChanged: if (active) presenter.refresh()

    Page {
        width: parent.width
        height: implicitHeight
        title: qsTr("Login Items")
        subtitle: qsTr("What Ferrobank starts when you log in.")

        Panel {
            width: parent.width
            height: services.height

            Column {
                id: services

                width: parent.width

                LoginItem {
                    objectName: "agent"
                    width: parent.width
                    row: items.presenter.agent
                    name: qsTr("Ferrobank drive")
                }

                LoginItem {
                    objectName: "menu"
                    width: parent.width
                    row: items.presenter.menu
                    name: qsTr("Ferrobank menu")
                    divided: true
                }
            }
        }

        buttons: [
            CopyDiagnostics { diagnostics: items.presenter.diagnostics },
            PushButton {
                objectName: "done"
                look: PushButton.Prominent
                defaultAction: true
                cancelAction: true
                text: qsTr("Done")
                onClicked: items.close()
            }
        ]
    }
}
