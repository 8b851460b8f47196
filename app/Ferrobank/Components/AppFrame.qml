import QtQuick
import QtQuick.Templates as T
import Ferrobank

/// The application's kind of window: no title bar, its own controls in the top corner, moved by its background,
/// as large as its content and never larger than the display: then the content gets narrower, and scrolls.
Window {
    id: frame

    required property int contentWidth
    default property alias content: holder.data
    /// Dialogs go with the window they belong to.
    property bool minimisable: true
    /// A message lies over the window and has to be answered first.
    property bool dimmed: false

    readonly property int padding: Theme.pagePadding

    readonly property int wantedWidth: Math.min(contentWidth + 2 * padding, Theme.displayWidth)
    readonly property int wantedHeight: Math.max(1, Math.min(holder.height + 2 * padding,
        Theme.displayHeight))

    flags: Qt.Window | Qt.FramelessWindowHint | Qt.WindowMinimizeButtonHint | Qt.WindowCloseButtonHint
    color: Theme.composited ? "transparent" : Theme.window

    onWantedWidthChanged: fit()
    onWantedHeightChanged: fit()
    Component.onCompleted: fit()
    onActiveFocusItemChanged: scroller.reveal(activeFocusItem)

    function fit(): void {
        WindowFit.apply(frame, wantedWidth, wantedHeight);
    }

    Shortcut {
        sequence: "Ctrl+W"
        onActivated: frame.close()
    }

    Shortcut {
        sequence: "PgUp"
        enabled: scroller.interactive
        onActivated: scroller.scrollBy(-0.9 * scroller.height)
    }

    Shortcut {
        sequence: "PgDown"
        enabled: scroller.interactive
        onActivated: scroller.scrollBy(0.9 * scroller.height)
    }

    Rectangle {
        anchors.fill: parent
        radius: Theme.composited ? 12 : 0
        color: Theme.window
        border.width: 1
        border.color: Theme.edge

        LayoutMirroring.enabled: Theme.mirrored
        LayoutMirroring.childrenInherit: true

        DragHandler {
            property bool moving: false

            target: null
            grabPermissions: PointerHandler.TakeOverForbidden
            // The window manager keeps the release of the button to itself, and what comes after looks like one more
            // drag of the same press. Only a new press may start a new move.
            onGrabChanged: transition => {
                if (transition === PointerDevice.GrabPassive)
                    moving = false;
            }
            onActiveChanged: {
                if (active && !moving) {
                    moving = true;
                    frame.startSystemMove();
                }
            }
        }

        Flickable {
            id: scroller

            anchors.fill: parent
            contentHeight: holder.height + 2 * frame.padding
            interactive: contentHeight > height
            boundsBehavior: Flickable.StopAtBounds
            clip: interactive
            T.ScrollBar.vertical: ThinScrollBar {
                parent: scroller.parent
                anchors.top: parent.top
                anchors.topMargin: frame.padding + 4
                anchors.bottom: parent.bottom
                anchors.bottomMargin: 12
                anchors.right: parent.right
                anchors.rightMargin: 3
            }

            function scrollBy(distance: real): void {
                contentY = Math.max(0, Math.min(contentHeight - height, contentY + distance));
            }

            function reveal(item: Item): void {
                if (!interactive || !item) {
                    return;
                }
                let ancestor = item;
                while (ancestor && ancestor !== holder) {
                    ancestor = ancestor.parent;
                }
                if (!ancestor) {
                    return;
                }
                const place = item.mapToItem(scroller.contentItem, 0, 0, item.width, item.height);
                const margin = frame.padding;
                if (place.y - margin < contentY) {
                    scrollBy(place.y - margin - contentY);
                } else if (place.y + place.height + margin > contentY + height) {
                    scrollBy(place.y + place.height + margin - height - contentY);
                }
            }

            Item {
                id: holder

                x: frame.padding
                y: frame.padding
                width: frame.wantedWidth - 2 * frame.padding
                height: Math.ceil(childrenRect.height)
            }
        }

        EdgeFade {
            anchors.fill: scroller
            // Inside the round corners.
            anchors.margins: 1
            anchors.leftMargin: 12
            anchors.rightMargin: 12
            over: scroller
        }

        Rectangle {
            objectName: "dimmer"
            anchors.fill: parent
            z: 1
            visible: frame.dimmed
            radius: parent.radius
            color: "black"
            opacity: Theme.dark ? 0.45 : 0.28
        }

        Row {
            anchors.top: parent.top
            anchors.right: parent.right
            anchors.margins: 8
            spacing: 2

            WindowControl {
                objectName: "minimise"
                visible: frame.minimisable && Theme.minimisable
                symbol: "minus"
                text: qsTr("Minimise")
                onClicked: frame.showMinimized()
            }

            WindowControl {
                objectName: "close"
                symbol: "xmark"
                text: qsTr("Close")
                onClicked: frame.close()
            }
        }
    }
}
