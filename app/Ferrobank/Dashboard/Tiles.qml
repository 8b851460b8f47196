import QtQuick
import Ferrobank

/// The four figures side by side.
Row {
    id: tiles

    required property DashboardPresenter presenter
    readonly property real tileWidth: (width - 3 * spacing) / 4
    readonly property real tileHeight: Math.max(files.implicitHeight, disk.implicitHeight,
                                                free.implicitHeight, size.implicitHeight)
    readonly property font figureFont: Theme.fitted(Theme.title2Figure,
        [files.value, disk.value, free.value, size.value], files.room, 0.8)

    spacing: 12

    Tile {
        id: files

        objectName: "filesOnDrive"
        width: tiles.tileWidth
        height: tiles.tileHeight
        figureFont: tiles.figureFont
        label: qsTr("Files on drive")
        value: tiles.presenter.filesOnDrive
    }

    Tile {
        id: disk

        objectName: "storedOnDisk"
        width: tiles.tileWidth
        height: tiles.tileHeight
        figureFont: tiles.figureFont
        label: qsTr("Stored on disk")
        value: tiles.presenter.storedOnDisk
    }

    Tile {
        id: free

        objectName: "freeOnThisMac"
        width: tiles.tileWidth
        height: tiles.tileHeight
        figureFont: tiles.figureFont
        label: qsTr("Free on this Mac")
        value: tiles.presenter.freeOnThisMac
    }

    Tile {
        id: size

        objectName: "driveSize"
        width: tiles.tileWidth
        height: tiles.tileHeight
        figureFont: tiles.figureFont
        label: qsTr("Drive size")
        value: tiles.presenter.driveSize
    }
}
