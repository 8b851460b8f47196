import QtQuick
import Ferrobank

/// The space saved, large.
Panel {
    id: hero

    required property DashboardPresenter presenter

    implicitHeight: column.implicitHeight + 40
    height: implicitHeight
    radius: 14

    Column {
        id: column

        x: 20
        y: 20
        width: parent.width - 40
        spacing: 10

        HeadingText {
            width: parent.width
            text: qsTr("Space saved")
            font: Theme.headline
            color: Theme.secondary
        }

        BodyText {
            objectName: "nothingSaved"
            width: parent.width
            visible: hero.presenter.nothingSaved
            text: qsTr("Nothing saved yet")
            font: Theme.heroQuiet
        }

        BodyText {
            width: parent.width
            visible: hero.presenter.nothingSaved
            text: qsTr("Clones and copies of the same files are stored once.")
            color: Theme.secondary
        }

        BodyText {
            objectName: "saved"
            width: parent.width
            visible: !hero.presenter.nothingSaved
            text: hero.presenter.saved
            font: Theme.hero
            wrapMode: Text.NoWrap
            fontSizeMode: Text.HorizontalFit
            minimumPixelSize: 20
        }

        SavingsBar {
            objectName: "savingsBar"
            width: parent.width
            visible: !hero.presenter.nothingSaved
            fraction: hero.presenter.fraction
        }

        BodyText {
            objectName: "savingSentence"
            width: parent.width
            visible: !hero.presenter.nothingSaved
            text: hero.presenter.savingSentence
            color: Theme.secondary
        }
    }
}
