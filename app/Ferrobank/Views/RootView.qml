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

        Onboarding {
            presenter: root.presenter.onboarding
            step: root.presenter.step
        }
    }

    Component {
        id: dashboard

        Dashboard { presenter: root.presenter.dashboard }
    }

    Component {
        id: checks

        ChecksScreen {
            presenter: root.presenter.checks
            onCloseWanted: root.closeWanted()
        }
    }

    Component {
        id: uninstall

        UninstallScreen {
            presenter: root.presenter.uninstall
            onCloseWanted: root.closeWanted()
        }
    }
}
