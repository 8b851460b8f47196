import QtQuick
import Ferrobank

/// One check or setup task: its state, its words and, where the list offers remedies, the button for its own.
Item {
    id: row

    required property string title
    required property int checkState
    required property string detail
    required property bool hasDetail
    required property string fix
    required property bool hasFix
    required property int action
    required property bool hasAction
    property bool offersFixes: false
    /// The width that the button has at least; the list's rows agree on it.
    property real fixWidth: 0
    /// The state has been seen: only a later one is news.
    property bool settled: false

    /// How wide the button would be by itself; 0 where there is none.
    readonly property real fixNeed: hasAction && offersFixes ? remedy.implicitWidth : 0
    readonly property string stateWord: CheckRowStyle.word(checkState)
    /// Middle of the icon, of the title's first line and of the button.
    readonly property real firstLine: icon.y + icon.height / 2

    signal fixWanted(int action)
    /// The keyboard came to the row's button.
    signal focused()
    signal announcement(string words)

    /// Lets the row come into sight softly.
    function appear(): void {
        if (!Theme.reducedMotion)
            appearance.start();
    }

    implicitHeight: Math.ceil(Math.max(words.y + words.implicitHeight, remedy.visible ? remedy.y + remedy.height : 0,
        icon.y + icon.height))

    NumberAnimation {
        id: appearance

        target: row
        property: "opacity"
        from: 0
        to: 1
        duration: 150
    }

    Component.onCompleted: settled = true
    onCheckStateChanged: if (settled) announcement(qsTr("%1: %2").arg(title).arg(CheckRowStyle.word(checkState)))

    Accessible.role: Accessible.ListItem
    Accessible.name: qsTr("%1: %2").arg(row.title).arg(row.stateWord)
    Accessible.description: row.detail + (row.hasDetail && row.hasFix ? " " : "") + row.fix

    StateIcon {
        id: icon

        objectName: "stateIcon"
        anchors.left: parent.left
        y: 3
        checkState: row.checkState
    }

    FontMetrics {
        id: metrics

        font: Theme.body
    }

    Column {
        id: words

        y: Math.round(row.firstLine - metrics.height / 2)
        anchors.left: icon.right
        anchors.leftMargin: 10
        anchors.right: remedy.visible ? remedy.left : parent.right
        anchors.rightMargin: remedy.visible ? 16 : 0
        spacing: 2

        BodyText {
            objectName: "rowTitle"
            width: parent.width
            text: row.title
        }

        SelectableText {
            objectName: "rowDetail"
            width: parent.width
            visible: row.hasDetail
            text: row.detail
            font: Theme.callout
            color: Theme.secondary
        }

        SelectableText {
            objectName: "rowAdvice"
            width: parent.width
            visible: row.hasFix
            text: row.fix
            font: Theme.callout
            color: Theme.secondary
        }
    }

    PushButton {
        id: remedy

        objectName: "rowFix"
        anchors.right: parent.right
        y: Math.round(row.firstLine - height / 2)
        visible: row.hasAction && row.offersFixes && text !== ""
        compact: true
        width: Math.max(implicitWidth, row.fixWidth)
        text: CheckRowStyle.fixTitle(row.action)
        onClicked: row.fixWanted(row.action)
        onActiveFocusChanged: if (activeFocus) row.focused()
    }
}
