import QtQuick
import Ferrobank

/// Words that a person may want to copy.
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

    Accessible.role: Accessible.StaticText
    Accessible.name: words.text
    Accessible.readOnly: true
}
