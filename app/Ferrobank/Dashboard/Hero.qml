import QtQuick
import Ferrobank

/// The space saved, large.
Panel {
    id: hero

    required property DashboardPresenter presenter
    readonly property bool quiet: presenter.hasStatus && presenter.nothingSaved
    /// With a figure, the bar and one line under it: the first saving does not push anything away.
    readonly property real usualHeight: heading.height + Math.ceil(heroMetrics.height) + bar.height + Math.ceil(lineMetrics.height)
        + 3 * column.spacing

    implicitHeight: Math.max(column.implicitHeight, usualHeight) + 40
    height: implicitHeight
    radius: 14

    FontMetrics {
        id: heroMetrics

        font: Theme.hero
    }

    FontMetrics {
        id: lineMetrics

        font: Theme.body
    }

    Column {
        id: column

        x: 20
        y: Math.max(20, Math.round((hero.height - height) / 2))
        width: parent.width - 40
        spacing: 10

        HeadingText {
            id: heading

            width: parent.width
            text: qsTr("Space saved")
            font: Theme.headline
            color: Theme.secondary
        }

        BodyText {
            objectName: "nothingSaved"
            width: parent.width
            visible: hero.quiet
            text: qsTr("Nothing saved yet")
            font: Theme.heroQuiet
        }

        BodyText {
            width: parent.width
            visible: hero.quiet
            text: qsTr("Clones and copies of the same files are stored once.")
            color: Theme.secondary
        }

        FigureText {
            objectName: "saved"
            width: parent.width
            visible: !hero.quiet
            text: hero.presenter.saved
            font: Theme.fitted(Theme.hero, [hero.presenter.saved], width, 0.4)
        }

        SavingsBar {
            id: bar

            objectName: "savingsBar"
            width: parent.width
            visible: !hero.quiet
            fraction: hero.presenter.fraction
        }

        SelectableText {
            objectName: "savingSentence"
            width: parent.width
            visible: !hero.quiet
            text: hero.presenter.savingSentence
            color: Theme.secondary
        }
    }
}
