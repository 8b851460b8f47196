import QtQuick
import Ferrobank

/// Shows one screen at a time. The next one takes the place of the old one at once, at its own size, and comes into
/// sight softly: there is never a moment at which a page shows that the window is not made for.
Item {
    id: stack

    property Component screen: null
    readonly property Item shown: loader.item as Item

    implicitHeight: shown ? shown.implicitHeight : 0

    onScreenChanged: loader.show(screen)
    Component.onCompleted: loader.show(screen)

    Loader {
        id: loader

        width: stack.width

        function show(component: Component): void {
            if (sourceComponent === component)
                return;
            const first = sourceComponent === null;
            appearance.stop();
            opacity = first || Theme.reducedMotion ? 1 : 0;
            sourceComponent = component;
            if (opacity < 1)
                appearance.start();
        }
    }

    // The pause is for the window, which gets its new size from the window manager.
    SequentialAnimation {
        id: appearance

        PauseAnimation { duration: 40 }
        NumberAnimation { target: loader; property: "opacity"; to: 1; duration: 130 }
    }
}
