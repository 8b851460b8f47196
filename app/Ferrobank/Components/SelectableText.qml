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
            const begin = words.effectiveHorizontalAlignment === TextEdit.AlignRight
                ? words.width - words.contentWidth : 0;
            return point.y >= 0 && point.y < words.height
                && point.x >= begin && point.x < begin + words.contentWidth;
        }
    }

    Accessible.role: Accessible.StaticText
    Accessible.name: words.text
    Accessible.readOnly: true
}
