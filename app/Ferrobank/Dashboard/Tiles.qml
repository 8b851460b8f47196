import QtQuick
import Ferrobank

/// The four figures side by side.
Row {
    id: tiles

    required property DashboardPresenter presenter
    readonly property real tileWidth: (width - 3 * spacing) / 4
    readonly property real tileHeight: Math.max(files.implicitHeight, disk.implicitHeight,
                                                free.implicitHeight, size.implicitHeight)

    spacing: 12

    Tile {
        id: files

        objectName: "filesOnDrive"
        width: tiles.tileWidth
        height: tiles.tileHeight
        label: qsTr("Files on drive")
        value: tiles.presenter.filesOnDrive
    }

    Tile {
        id: disk

        objectName: "storedOnDisk"
        width: tiles.tileWidth
        height: tiles.tileHeight
        label: qsTr("Stored on disk")
        value: tiles.presenter.storedOnDisk
    }

    Tile {
        id: free

        objectName: "freeOnThisMac"
        width: tiles.tileWidth
        height: tiles.tileHeight
        label: qsTr("Free on this Mac")
        value: tiles.presenter.freeOnThisMac
    }

    Tile {
        id: size

        objectName: "driveSize"
        width: tiles.tileWidth
        height: tiles.tileHeight
        label: qsTr("Drive size")
        value: tiles.presenter.driveSize
    }
}
