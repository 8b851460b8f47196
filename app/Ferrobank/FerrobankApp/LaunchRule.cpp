#include "Ferrobank/FerrobankApp/LaunchRule.h"

namespace ferrobank {

Screen screenForOpening(bool setupComplete, const Screen& present, const AppModel::UninstallState& uninstall)
{
    const bool uninstalls = uninstall.kind != AppModel::UninstallState::Kind::Idle;
    if (uninstalls && present.kind() == Screen::Uninstall) {
        return present;
    }
    if (present.kind() == Screen::Onboarding) {
        const bool over = setupComplete && present.step() != Screen::Done;
        return over ? Screen::dashboard() : present;
    }
    return setupComplete ? Screen::dashboard() : Screen::onboarding(Screen::Welcome);
}

} // namespace ferrobank
