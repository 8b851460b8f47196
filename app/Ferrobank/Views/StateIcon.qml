// Components written inside a file see the ids around them; the linter of Qt 6.4 does not know that.
// qmllint disable unqualified
import QtQuick
import Ferrobank

/// The state of a check in a slot 18 wide, and in words for people who do not see it.
Item {
    id: icon

    required property int checkState

    readonly property bool running: CheckRowStyle.isRunning(checkState)
    readonly property string symbol: CheckRowStyle.symbol(checkState)

    readonly property real growth: Theme.growth

    width: Math.round(18 * growth)
    height: Math.round(16 * growth)

    Accessible.role: Accessible.Graphic
    Accessible.name: CheckRowStyle.word(icon.checkState)

    SymbolImage {
        objectName: "symbol"
        anchors.centerIn: parent
        visible: !icon.running
        name: icon.symbol
        color: Theme.symbolTints[CheckRowStyle.tint(icon.checkState)]
        width: icon.height
        height: width
    }

    Loader {
        anchors.centerIn: parent
        active: icon.running
        sourceComponent: Spinner {
            Accessible.ignored: true
            width: icon.height
            height: width
        }
    }
}
