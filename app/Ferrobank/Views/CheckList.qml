// Components written inside a file see the ids around them; the linter of Qt 6.4 does not know that.
// qmllint disable unqualified
import QtQuick
import QtQuick.Templates as T
import Ferrobank

/// Rows of checks or setup tasks in the order of their model, which has the roles of CheckItemModel. Takes the
/// height of its rows up to `maximumHeight`, then scrolls; only rows in sight exist.
ListView {
    id: list

    property real maximumHeight: Infinity
    /// What the rows are, for people who do not see them.
    property string label: qsTr("Checks")
    /// Whether rows show the button for their remedy.
    property bool offersFixes: false

    signal fixWanted(int action)

    implicitHeight: Math.min(contentHeight, maximumHeight)
    height: implicitHeight
    spacing: 14
    cacheBuffer: 1200
    interactive: contentHeight > height
    boundsBehavior: Flickable.StopAtBounds
    clip: interactive
    // Room for what reaches beyond the first and last row: a button and its focus ring.
    topMargin: interactive ? 6 : 0
    bottomMargin: topMargin
    // A list that was at its beginning stays there when that moves.
    onTopMarginChanged: {
        if (contentY <= originY)
            contentY = originY - topMargin;
    }
    keyNavigationEnabled: false
    // A list that scrolls can be reached and scrolled by keyboard, whether or not its rows have buttons.
    activeFocusOnTab: interactive

    Keys.onUpPressed: scrollBy(-48)
    Keys.onDownPressed: scrollBy(48)
    Keys.onPressed: event => {
        event.accepted = event.key === Qt.Key_PageUp || event.key === Qt.Key_PageDown;
        if (event.accepted)
            scrollBy((event.key === Qt.Key_PageUp ? -0.9 : 0.9) * height);
    }

    function scrollBy(distance: real): void {
        contentY = Math.max(originY - topMargin,
            Math.min(originY + contentHeight + bottomMargin - height, contentY + distance));
    }

    Accessible.role: Accessible.List
    Accessible.name: list.label

    T.ScrollBar.vertical: ThinScrollBar {}

    delegate: CheckRow {
        required property int index

        width: ListView.view.width - (list.interactive ? 14 : 0)
        offersFixes: list.offersFixes
        onFixWanted: action => list.fixWanted(action)
        onFocused: list.positionViewAtIndex(index, ListView.Contain)
        onAnnouncement: words => announcer.say(words)
    }

    add: Transition {
        enabled: !Theme.reducedMotion

        NumberAnimation { property: "opacity"; from: 0; to: 1; duration: 150 }
    }

    FocusRing {
        parent: list
        shown: list.activeFocus
        around: 4
    }

    Announcer {
        id: announcer

        objectName: "announcer"
    }
}
