import QtQuick
import QtQuick.Templates as T
import Ferrobank

/// Shows where one is in a content that is taller than its place.
T.ScrollBar {
    id: bar

    implicitWidth: 10
    padding: 2
    topPadding: 4
    bottomPadding: 4
    minimumSize: 0.08
    visible: size < 1

    Accessible.ignored: true

    contentItem: RoundedBox {
        implicitWidth: 6
        radius: 3
        color: Theme.secondary
        opacity: bar.pressed ? 0.8 : bar.hovered ? 0.65 : 0.4
    }
}
