import QtQuick
import Ferrobank

/// Words that a person may want to copy. The empty rest of its width belongs to the window's background, which moves it.
TextEdit {
    id: words

    font: Theme.body
    color: Theme.primary
    selectionColor: Theme.accent
    selectedTextColor: Theme.onAccent
    readOnly: true
    selectByMouse: true
    textFormat: TextEdit.PlainText
    wrapMode: TextEdit.Wrap
    horizontalAlignment: TextEdit.AlignLeft

    containmentMask: QtObject {
        function contains(point: point): bool {
            return words.effectiveHorizontalAlignment === TextEdit.AlignRight
                ? point.x >= words.width - words.contentWidth : point.x <= words.contentWidth;
        }
    }

    Accessible.role: Accessible.StaticText
    Accessible.name: words.text
    Accessible.readOnly: true
}
