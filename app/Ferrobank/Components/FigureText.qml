import QtQuick
import Ferrobank

/// A figure on one line, whose digits are all of one width.
SelectableText {
    id: figure

    wrapMode: TextEdit.NoWrap

    FigureDocument {
        document: figure.textDocument
        font: figure.font
    }
}
