import QtQuick
import Ferrobank

/// The drive at a glance: its state, the space saved, four figures, its health, and the settings. Until the
/// first status has been read there is only a spinner.
Item {
    id: dashboard

    required property DashboardPresenter presenter

    readonly property bool hasStatus: presenter.hasStatus

    // The room of the figures, before and after they are known.
    implicitHeight: figures.implicitHeight

    onHasStatusChanged: tellFigures()
    Component.onCompleted: {
        presenter.appeared();
        tellFigures();
    }
    Component.onDestruction: if (presenter) presenter.disappeared()

    function tellFigures(): void {
        if (hasStatus)
            presenter.figuresAppeared();
    }

    Loader {
        anchors.centerIn: parent
        active: !dashboard.hasStatus
        sourceComponent: Spinner {
            objectName: "statusSpinner"
            width: 28
            height: 28
            label: qsTr("Reading the drive's state")
        }
    }

    Column {
        id: figures

        width: parent.width
        visible: dashboard.hasStatus
        spacing: 20

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
