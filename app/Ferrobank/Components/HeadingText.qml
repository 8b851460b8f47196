import QtQuick
import Ferrobank

/// The title of a page or of a part of it.
BodyText {
    font: Theme.title2Bold

    Accessible.role: Accessible.Heading
}
