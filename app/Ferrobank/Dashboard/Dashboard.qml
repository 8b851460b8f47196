// Components written inside a file see the ids around them; the linter of Qt 6.4 does not know that.
// qmllint disable unqualified
import QtQuick
import Ferrobank

/// The drive at a glance: its state, the space saved, four figures, its health, and the settings. Until the
/// first status has been read there is only a spinner.
Item {
    id: dashboard

    required property DashboardPresenter presenter

    implicitHeight: presenter.hasStatus ? figures.implicitHeight : 240

    Component.onCompleted: presenter.appeared()
    Component.onDestruction: if (presenter) presenter.disappeared()

    Loader {
        anchors.centerIn: parent
        active: !dashboard.presenter.hasStatus
        sourceComponent: Spinner {
            objectName: "statusSpinner"
            width: 28
            height: 28
            label: qsTr("Reading the drive's state")
        }
    }

    Loader {
        id: figures

        width: parent.width
        active: dashboard.presenter.hasStatus
        sourceComponent: Column {
            spacing: 20

            Component.onCompleted: dashboard.presenter.figuresAppeared()

            Header {
                width: parent.width
                presenter: dashboard.presenter
            }

            Hero {
                width: parent.width
                presenter: dashboard.presenter
            }

            Tiles {
                width: parent.width
                presenter: dashboard.presenter
            }

            Health {
                width: parent.width
                presenter: dashboard.presenter
            }

            Settings {
                width: parent.width
                presenter: dashboard.presenter
            }
        }
    }
}
