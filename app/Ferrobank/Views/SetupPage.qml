import QtQuick
import Ferrobank

/// The onboarding's third page: the setup rows while the setup works.
Page {
    id: page

    required property OnboardingPresenter presenter

    title: qsTr("Set up your drive")

    CheckList {
        objectName: "setupTasks"
        width: parent.width
        maximumHeight: page.roomForContent
        model: page.presenter.setupTasks
        label: qsTr("Steps of the setup")
    }

    buttons: [
        PushButton {
            objectName: "openLoginItems"
            visible: page.presenter.offersLoginItems
            text: qsTr("Open Login Items")
            onClicked: page.presenter.openLoginItems()
        },
        PushButton {
            objectName: "openPrivacySettings"
            visible: page.presenter.offersPrivacySettings && text !== ""
            text: qsTr("Open Privacy Settings")
            onClicked: page.presenter.openPrivacySettings()
        },
        PushButton {
            objectName: "tryAgain"
            visible: page.presenter.offersTryAgain
            defaultAction: true
            text: qsTr("Try Again")
            onClicked: page.presenter.tryAgain()
        },
        PushButton {
            objectName: "continue"
            visible: page.presenter.offersContinue
            look: PushButton.Prominent
            defaultAction: true
            text: qsTr("Continue")
            onClicked: page.presenter.leaveSetup()
        }
    ]
}
