// Components written inside a file see the ids around them; the linter of Qt 6.4 does not know that.
// qmllint disable unqualified property
import QtQuick
import QtQuick.Templates as T
import Ferrobank

/// Rows of checks or setup tasks in the order of their model, which has the roles of CheckItemModel. Takes the
/// height of its rows up to `maximumHeight`, then scrolls; only rows in sight exist.
FocusScope {
    id: list

    property alias model: view.model
    property real maximumHeight: Infinity
    /// What the rows are, for people who do not see them.
    property string label: qsTr("Checks")
    /// Whether rows show the button for their remedy.
    property bool offersFixes: false
    /// Whether there are more rows than the list may be high.
    property bool scrolls: false
    /// The part that scrolls, and the rows in it.
    readonly property ListView view: view

    /// All buttons are as wide as the widest.
    property real fixWidth: 0

    signal fixWanted(int action)

    height: implicitHeight

    // A list that scrolls can be reached and scrolled by keyboard, whether or not its rows have buttons.
    activeFocusOnTab: scrolls

    Keys.onUpPressed: scrollBy(-48)
    Keys.onDownPressed: scrollBy(48)
    Keys.onPressed: event => {
        event.accepted = event.key === Qt.Key_PageUp || event.key === Qt.Key_PageDown;
        if (event.accepted)
            scrollBy((event.key === Qt.Key_PageUp ? -0.9 : 0.9) * height);
    }

    onMaximumHeightChanged: fit()

    Accessible.role: Accessible.List
    Accessible.name: list.label

    // Set and not bound: the rows' height follows the height of the view in turn, and a binding would end where
    // that comes back to it.
    function fit(): void {
        scrolls = view.contentHeight > maximumHeight;
        implicitHeight = Math.min(view.contentHeight, maximumHeight);
    }

    function measureFixes(): void {
        let widest = 0;
        const rows = view.contentItem.children;
        for (let index = 0; index < rows.length; ++index)
            widest = Math.max(widest, rows[index].fixNeed ?? 0);
        fixWidth = widest;
    }

    function scrollBy(distance: real): void {
        view.contentY = Math.max(view.originY - view.topMargin,
            Math.min(view.originY + view.contentHeight + view.bottomMargin - view.height, view.contentY + distance));
    }

    ListView {
        id: view

        anchors.fill: parent
        spacing: 14
        // Rows exist as far as the list may reach, however high it is at the moment: what they need is known and
        // not guessed.
        displayMarginEnd: list.scrolls ? 0 : Math.min(list.maximumHeight, 10000)
        interactive: list.scrolls
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
        onContentHeightChanged: list.fit()
        keyNavigationEnabled: false

        // Beside the rows, so that they are as wide with it as without.
        T.ScrollBar.vertical: ThinScrollBar {
            parent: list
            x: list.LayoutMirroring.enabled ? -width - 4 : list.width + 4
            height: list.height
        }

        // No transition of the view's own: a row that moves while one runs would be given its place by the
        // transition, which does not know of places.
        delegate: CheckRow {
            required property int index

            width: ListView.view.width
            offersFixes: list.offersFixes
            fixWidth: list.fixWidth
            onFixNeedChanged: list.measureFixes()
            Component.onCompleted: list.measureFixes()
            onFixWanted: action => list.fixWanted(action)
            onFocused: view.positionViewAtIndex(index, ListView.Contain)
            onAnnouncement: words => announcer.say(words)
            ListView.onAdd: appear()
        }
    }

    EdgeFade {
        anchors.fill: parent
        over: view
    }

    FocusRing {
        objectName: "listRing"
        shown: list.activeFocus && list.Window.activeFocusItem === list
        around: 4
    }

    Announcer {
        id: announcer

        objectName: "announcer"
    }
}
