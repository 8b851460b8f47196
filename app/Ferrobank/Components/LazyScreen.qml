import QtQuick

/// A screen that is read when it is shown: those that are not shown cost neither time nor memory.
Loader {
    id: lazy

    /// Address of the screen's document.
    required property url document
    /// Its properties by name; bindings are welcome.
    required property var inputs

    signal closeWanted()

    Component.onCompleted: setSource(document, inputs)

    Connections {
        target: lazy.item
        ignoreUnknownSignals: true

        function onCloseWanted(): void {
            lazy.closeWanted();
        }
    }
}
