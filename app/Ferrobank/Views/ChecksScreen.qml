import QtQuick
import Ferrobank

/// Runs the drive's checks, lists them and offers their remedies.
Page {
    id: screen

    required property ChecksPresenter presenter

    signal closeWanted()

    title: qsTr("Ferrobank checks")
    subtitle: qsTr("The parts of your setup that keep the drive working.")

    Component.onCompleted: presenter.appeared()

    CheckList {
        objectName: "checks"
        width: parent.width
        maximumHeight: screen.roomForContent
        model: screen.presenter.checks
        offersFixes: true
        onFixWanted: action => screen.presenter.fix(action)
    }

    buttons: [
        Item {
            visible: screen.presenter.running
            width: 30
            height: runAgain.height

            Spinner {
                objectName: "checksSpinner"
                anchors.right: parent.right
                anchors.verticalCenter: parent.verticalCenter
                label: qsTr("Running checks…")
            }
        },
        PushButton {
            id: runAgain

            objectName: "runAgain"
            visible: !screen.presenter.running
            text: qsTr("Run Again")
            onClicked: screen.presenter.runAgain()
        },
        PushButton {
            objectName: "done"
            visible: !screen.presenter.running
            look: PushButton.Prominent
            defaultAction: true
            text: qsTr("Done")
            onClicked: screen.closeWanted()
        }
    ]
}
