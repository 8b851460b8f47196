// Components written inside a file see the ids around them; the linter of Qt 6.4 does not know that.
// qmllint disable unqualified
import QtQuick
import Ferrobank

/// Shows the one screen that the model has chosen.
Item {
    id: root

    required property RootPresenter presenter

    signal closeWanted()

    implicitHeight: screens.implicitHeight

    ScreenStack {
        id: screens

        width: parent.width
        screen: {
            switch (root.presenter.screen) {
            case AppScreen.Dashboard:
                return dashboard;
            case AppScreen.Checks:
                return checks;
            case AppScreen.Uninstall:
                return uninstall;
            default:
                return onboarding;
            }
        }
    }

    Component {
        id: onboarding

        LazyScreen {
            document: Qt.resolvedUrl("Onboarding.qml")
            inputs: ({
                presenter: root.presenter.onboarding,
                step: Qt.binding(() => root.presenter.step)
            })
        }
    }

    Component {
        id: dashboard

        LazyScreen {
            document: Qt.resolvedUrl("../Dashboard/Dashboard.qml")
            inputs: ({ presenter: root.presenter.dashboard })
        }
    }

    Component {
        id: checks

        LazyScreen {
            document: Qt.resolvedUrl("ChecksScreen.qml")
            inputs: ({ presenter: root.presenter.checks })
            onCloseWanted: root.closeWanted()
        }
    }

    Component {
        id: uninstall

        LazyScreen {
            document: Qt.resolvedUrl("UninstallScreen.qml")
            inputs: ({ presenter: root.presenter.uninstall })
            onCloseWanted: root.closeWanted()
        }
    }
}
