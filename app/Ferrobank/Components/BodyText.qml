import QtQuick
import Ferrobank

/// Words on a screen: plain text, wrapped, following the reading direction.
Text {
    id: words

    font: Theme.body
    color: Theme.primary
    textFormat: Text.PlainText
    wrapMode: Text.Wrap
    horizontalAlignment: Text.AlignLeft

    Accessible.role: Accessible.StaticText
    Accessible.name: words.text
}
