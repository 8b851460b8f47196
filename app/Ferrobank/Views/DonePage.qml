import QtQuick
import Ferrobank

/// The onboarding's last page.
Item {
    id: page

    required property OnboardingPresenter presenter

    implicitHeight: column.implicitHeight

    Column {
        id: column

        width: parent.width
        topPadding: 8
        spacing: 18

        SymbolImage {
            anchors.horizontalCenter: parent.horizontalCenter
            name: "checkmark.circle.fill"
            color: Theme.bar
            width: Math.round(64 * Theme.growth)
            height: width
        }

        HeadingText {
            width: parent.width
            text: qsTr("Ferrobank is ready")
            font: Theme.title
            horizontalAlignment: Text.AlignHCenter
        }

        BodyText {
            anchors.horizontalCenter: parent.horizontalCenter
            width: Math.min(parent.width, 440)
            text: qsTr("Your drive is at ~/Ferrobank and in Finder's sidebar under Locations. The Ferrobank menu in the menu bar shows its status and space saved, and can run these checks again.")
            horizontalAlignment: Text.AlignHCenter
        }

        PushButton {
            objectName: "openFerrobank"
            anchors.horizontalCenter: parent.horizontalCenter
            look: PushButton.Prominent
            defaultAction: true
            text: qsTr("Open Ferrobank")
            onClicked: page.presenter.openDashboard()
        }
    }
}
