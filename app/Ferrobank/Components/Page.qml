import QtQuick
import Ferrobank

/// The frame of a screen: a title block, the content, and the buttons at the trailing edge.
Item {
    id: page

    /// No line is kept for an empty one.
    property string title: ""
    property string subtitle: ""
    default property alias content: body.data
    property alias buttons: actions.data

    /// The height that the content may take before the window outgrows the display.
    readonly property real roomForContent: Math.max(200, Theme.displayHeight - 2 * Theme.pagePadding
        - head.height - actions.height - 2 * blocks.spacing)

    /// What the page takes at least, so that a window need not shrink for it. The buttons stay at the bottom.
    property real minimumHeight: 0

    implicitHeight: blocks.implicitHeight

    Column {
        id: blocks

        width: parent.width
        spacing: 20

        Column {
            id: head

            width: parent.width
            visible: page.title !== ""
            spacing: 6

            HeadingText {
                objectName: "pageTitle"
                width: parent.width
                text: page.title
            }

            BodyText {
                objectName: "pageSubtitle"
                width: parent.width
                visible: page.subtitle !== ""
                text: page.subtitle
                color: Theme.secondary
            }
        }

        Item {
            id: body

            width: parent.width
            implicitHeight: Math.max(childrenRect.height, page.minimumHeight
                - (head.visible ? head.height + blocks.spacing : 0)
                - (actions.height > 0 ? actions.height + blocks.spacing : 0))
            visible: children.length > 0
        }

        // Side by side; in large text or long languages, where that is too wide, one below the other.
        Grid {
            id: actions

            readonly property int shown: {
                let count = 0;
                for (let index = 0; index < children.length; ++index)
                    count += children[index].visible && children[index].width > 0 ? 1 : 0;
                return count;
            }
            readonly property real sideBySide: {
                let sum = (shown - 1) * columnSpacing;
                for (let index = 0; index < children.length; ++index)
                    sum += children[index].visible ? children[index].width : 0;
                return sum;
            }

            objectName: "pageButtons"
            anchors.right: parent.right
            columns: sideBySide <= page.width ? Math.max(1, shown) : 1
            horizontalItemAlignment: Grid.AlignRight
            columnSpacing: 10
            rowSpacing: 8
        }
    }
}
