import QtQuick
import Ferrobank

/// The state of a check in a slot 18 wide, and in words for people who do not see it.
Item {
    id: icon

    required property int checkState

    readonly property bool running: CheckRowStyle.isRunning(checkState)
    readonly property string symbol: CheckRowStyle.symbol(checkState)

    width: 18
    height: 16

    Accessible.role: Accessible.Graphic
    Accessible.name: CheckRowStyle.word(icon.checkState)

    SymbolImage {
        objectName: "symbol"
        anchors.centerIn: parent
        visible: !icon.running
        name: icon.symbol
        color: Theme.symbolTints[CheckRowStyle.tint(icon.checkState)]
        width: 16
        height: 16
    }

    Loader {
        anchors.centerIn: parent
        active: icon.running
        sourceComponent: Spinner { Accessible.ignored: true }
    }
}
