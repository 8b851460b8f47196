import QtQuick

/// Tells people who do not see the screen what has just changed. Draws nothing.
Item {
    id: announcer

    property string words: ""

    width: 1
    height: 1
    visible: false

    Accessible.role: Accessible.AlertMessage
    Accessible.name: announcer.words

    /// Becoming visible is what assistive technology reads out.
    function say(text: string): void {
        visible = false;
        words = text;
        visible = true;
    }
}
