// Components written inside a file see the ids around them; the linter of Qt 6.4 does not know that.
// qmllint disable unqualified
import QtQuick
import Ferrobank

/// The outcome of the checks in one line, and the way to them.
Item {
    id: health

    required property DashboardPresenter presenter

    implicitHeight: Math.max(words.implicitHeight, run.height)

    Item {
        id: slot

        anchors.left: parent.left
        anchors.verticalCenter: parent.verticalCenter
        anchors.leftMargin: 16
        width: Math.round(24 * Theme.growth)
        height: width

        Loader {
            anchors.centerIn: parent
            active: health.presenter.healthRunning
            sourceComponent: Spinner {
                objectName: "healthSpinner"
                label: health.presenter.healthText
                width: Math.round(16 * Theme.growth)
                height: width
            }
        }

        SymbolImage {
            objectName: "healthSymbol"
            anchors.centerIn: parent
            visible: !health.presenter.healthRunning
            name: health.presenter.healthSymbol
            color: Theme.symbolTints[health.presenter.healthTint]
            width: slot.width - 2
            height: width
        }
    }

    Column {
        id: words

        anchors.left: slot.right
        anchors.leftMargin: 10
        anchors.right: run.left
        anchors.rightMargin: 16
        anchors.verticalCenter: parent.verticalCenter
        spacing: 2

        BodyText {
            objectName: "healthText"
            width: parent.width
            text: health.presenter.healthText
        }

        SelectableText {
            objectName: "healthNote"
            width: parent.width
            visible: text !== ""
            text: health.presenter.healthNote
            font: Theme.callout
            color: Theme.secondary
        }
    }

    PushButton {
        id: run

        objectName: "runChecks"
        anchors.right: parent.right
        anchors.rightMargin: 16
        anchors.verticalCenter: parent.verticalCenter
        text: qsTr("Run Checks")
        onClicked: health.presenter.runChecks()
    }
}
