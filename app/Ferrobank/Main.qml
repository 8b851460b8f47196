import QtQuick
import Ferrobank

/// The main window.
AppFrame {
    id: main

    required property RootPresenter presenter

    title: qsTr("Ferrobank")
    contentWidth: presenter.contentWidth

    RootView {
        width: parent.width
        height: implicitHeight
        presenter: main.presenter
        onCloseWanted: main.close()
    }
}
