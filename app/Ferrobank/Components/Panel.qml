import QtQuick
import Ferrobank

/// The faint rounded ground that holds things which belong together.
RoundedBox {
    radius: 12
    color: Theme.panel
}
