import QtQuick
import Ferrobank

/// The onboarding's first page.
Item {
    id: page

    required property OnboardingPresenter presenter

    implicitHeight: column.implicitHeight

    Column {
        id: column

        width: parent.width
        topPadding: 8
        spacing: 14

        SymbolImage {
            anchors.horizontalCenter: parent.horizontalCenter
            name: "application"
            width: Math.round(96 * Theme.growth)
            height: width
            Accessible.role: Accessible.Graphic
            Accessible.name: qsTr("Ferrobank")
        }

        HeadingText {
            width: parent.width
            text: qsTr("Welcome to Ferrobank")
            font: Theme.title
            horizontalAlignment: Text.AlignHCenter
        }

        BodyText {
            anchors.horizontalCenter: parent.horizontalCenter
            width: Math.min(parent.width, 440)
            text: qsTr("Ferrobank is a drive at ~/Ferrobank that stores repeated data once, so clones, worktrees and build output take a fraction of the space. Finder, Terminal and your tools all use the same path.")
            horizontalAlignment: Text.AlignHCenter
        }

        BodyText {
            width: parent.width
            bottomPadding: 6
            text: qsTr("Setup takes about a minute.")
            color: Theme.secondary
            horizontalAlignment: Text.AlignHCenter
        }

        PushButton {
            objectName: "continue"
            anchors.horizontalCenter: parent.horizontalCenter
            look: PushButton.Prominent
            defaultAction: true
            text: qsTr("Continue")
            onClicked: page.presenter.leaveWelcome()
        }
    }
}
