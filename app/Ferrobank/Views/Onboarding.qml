// Components written inside a file see the ids around them; the linter of Qt 6.4 does not know that.
// qmllint disable unqualified
import QtQuick
import Ferrobank

/// The first-run wizard: five pages, forward only. Keeps no state; the step is the model's.
Item {
    id: onboarding

    required property OnboardingPresenter presenter
    required property int step

    implicitHeight: pages.implicitHeight

    ScreenStack {
        id: pages

        width: parent.width
        screen: [welcome, consent, setup, verify, done][onboarding.step]
    }

    Component {
        id: welcome

        WelcomePage { presenter: onboarding.presenter }
    }

    Component {
        id: consent

        ConsentPage { presenter: onboarding.presenter }
    }

    Component {
        id: setup

        SetupPage { presenter: onboarding.presenter }
    }

    Component {
        id: verify

        VerifyPage { presenter: onboarding.presenter }
    }

    Component {
        id: done

        DonePage { presenter: onboarding.presenter }
    }
}
