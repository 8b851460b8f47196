import QtQuick
import Ferrobank

/// One service in the Login Items window.
SettingsRow {
    id: item

    required property LoginItemRow row
    required property string name

    Column {
        width: parent.width
        topPadding: 4
        bottomPadding: 4
        spacing: 6

        Toggle {
            objectName: "switch"
            width: parent.width
            enabled: item.row.available
            text: item.name
            caption: item.row.state
            checked: item.row.on
            onToggled: item.row.setOn(checked)
        }

        WarningText {
            objectName: "failure"
            width: parent.width
            visible: text !== ""
            text: item.row.failure
            font: Theme.callout
        }
    }
}
