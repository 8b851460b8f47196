import QtQuick
import Ferrobank

/// The drive's name, state and place, and the way to its files.
Column {
    id: header

    required property DashboardPresenter presenter

    spacing: 14

    Item {
        width: parent.width
        height: Math.max(icon.height, names.height)

        SymbolImage {
            id: icon

            anchors.left: parent.left
            anchors.verticalCenter: parent.verticalCenter
            name: "application"
            width: Math.round(52 * Theme.growth)
            height: width
        }

        Column {
            id: names

            anchors.left: icon.right
            anchors.leftMargin: 14
            anchors.right: show.left
            anchors.rightMargin: 16
            anchors.verticalCenter: parent.verticalCenter
            spacing: 4

            HeadingText {
                width: parent.width
                text: qsTr("Ferrobank")
                font: Theme.titleBold
            }

            Item {
                width: parent.width
                height: Math.max(pill.height, mountpoint.height)

                Pill {
                    id: pill

                    objectName: "state"
                    anchors.left: parent.left
                    y: 0
                    symbol: header.presenter.stateSymbol
                    text: header.presenter.stateWord
                    tint: Theme.tints[header.presenter.stateTint]
                }

                SelectableText {
                    id: mountpoint

                    objectName: "mountpoint"
                    anchors.left: pill.right
                    anchors.leftMargin: 8
                    anchors.right: parent.right
                    y: lineCount > 1 ? 3 : (pill.height - height) / 2
                    text: header.presenter.mountpoint
                    font: Theme.callout
                    color: Theme.secondary
                }
            }
        }

        PushButton {
            id: show

            objectName: "showInFinder"
            anchors.right: parent.right
            anchors.verticalCenter: parent.verticalCenter
            symbol: "folder"
            text: qsTr("Show in Finder")
            onClicked: header.presenter.showInFinder()
        }
    }

    WarningText {
        objectName: "attachError"
        width: parent.width
        visible: text !== ""
        text: header.presenter.attachError
    }
}
