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

        SelectableText {
            objectName: "saved"
            width: parent.width
            visible: !hero.presenter.nothingSaved
            text: hero.presenter.saved
            font: Theme.fitted(Theme.hero, text, width, 0.4)
            wrapMode: TextEdit.NoWrap
        }

        SavingsBar {
            objectName: "savingsBar"
            width: parent.width
            visible: !hero.presenter.nothingSaved
            fraction: hero.presenter.fraction
        }

        SelectableText {
            objectName: "savingSentence"
            width: parent.width
            visible: !hero.presenter.nothingSaved
            text: hero.presenter.savingSentence
            color: Theme.secondary
        }
    }
}
