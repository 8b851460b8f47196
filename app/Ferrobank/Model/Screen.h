#pragma once

#include <QtCore/QObject>

namespace ferrobank {

/// Which page the main window shows. Plain value; equal when the kinds are equal and, for the onboarding, the
/// steps.
class Screen {
    Q_GADGET
    Q_PROPERTY(ferrobank::Screen::Kind kind READ kind CONSTANT)
    Q_PROPERTY(ferrobank::Screen::Step step READ step CONSTANT)

public:
    enum Kind { Onboarding, Dashboard, Checks, Uninstall };
    Q_ENUM(Kind)

    /// The pages of the onboarding, in their order.
    enum Step { Welcome, Consent, Setup, Verify, Done };
    Q_ENUM(Step)

    Screen() = default;

    static Screen onboarding(Step step) { return {Onboarding, step}; }

    static Screen dashboard() { return {Dashboard, Welcome}; }

    static Screen checks() { return {Checks, Welcome}; }

    static Screen uninstall() { return {Uninstall, Welcome}; }

    [[nodiscard]] Kind kind() const { return _kind; }

    /// Only meaningful for Onboarding.
    [[nodiscard]] Step step() const { return _step; }

    friend bool operator==(const Screen&, const Screen&) = default;

private:
    Screen(Kind kind, Step step) : _kind(kind), _step(step) {}

    Kind _kind = Onboarding;
    Step _step = Welcome;
};

} // namespace ferrobank
