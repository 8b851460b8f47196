import QtQuick
import Ferrobank

/// Shows one screen at a time and lets one fade into the next. The screen that leaves takes no more part in
/// anything: no focus, no keys, no accessibility.
Item {
    id: stack

    property Component screen: null
    readonly property Item shown: slots.current.item as Item

    implicitHeight: shown ? shown.implicitHeight : 0

    onScreenChanged: slots.show(screen)
    Component.onCompleted: if (slots.current.sourceComponent !== screen) slots.show(screen)

    Loader {
        id: one

        width: stack.width
    }

    Loader {
        id: two

        width: stack.width
    }

    QtObject {
        id: slots

        property Loader current: one
        property Loader leaving: null

        function show(component: Component): void {
            fade.complete();
            const first = current.sourceComponent === null;
            const old = current;
            const fresh = first || Theme.reducedMotion ? current : (current === one ? two : one);
            fresh.sourceComponent = component;
            fresh.enabled = true;
            fresh.visible = true;
            current = fresh;
            if (fresh !== old) {
                leaving = old;
                old.enabled = false;
                fresh.opacity = 0;
                fade.restart();
            }
        }

        function drop(): void {
            if (leaving !== null) {
                leaving.visible = false;
                leaving.sourceComponent = null;
                leaving = null;
            }
        }
    }

    SequentialAnimation {
        id: fade

        onFinished: slots.drop()

        NumberAnimation { target: slots.leaving; property: "opacity"; to: 0; duration: 70 }
        ScriptAction { script: slots.drop() }
        NumberAnimation { target: slots.current; property: "opacity"; to: 1; duration: 130 }
    }
}
