import QtQuick
import Ferrobank

/// The onboarding's fourth page: the health checks.
Page {
    id: page

    required property OnboardingPresenter presenter

    title: qsTr("Checking your drive")
    subtitle: qsTr("Ferrobank checks the parts of your setup that keep the drive working.")

    CheckList {
        objectName: "checks"
        width: parent.width
        maximumHeight: page.roomForContent
        model: page.presenter.checks
        offersFixes: true
        onFixWanted: action => page.presenter.fix(action)
    }

    buttons: [
        PushButton {
            objectName: "runAgain"
            visible: !page.presenter.checksPassed
            defaultAction: true
            text: qsTr("Run Again")
            onClicked: page.presenter.runChecksAgain()
        },
        PushButton {
            objectName: "continue"
            visible: page.presenter.checksPassed
            look: PushButton.Prominent
            defaultAction: true
            text: qsTr("Continue")
            onClicked: page.presenter.leaveVerify()
        }
    ]
}
