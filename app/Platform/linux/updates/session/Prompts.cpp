#include "Platform/linux/updates/session/Prompts.h"

#include <QtCore/QCoreApplication>

#include <algorithm>

namespace ferrobank::updates {
namespace {

using namespace Qt::StringLiterals;

QString tr(const char* text)
{
    return QCoreApplication::translate("Updates", text);
}

UpdateButton button(UpdateAction action, const QString& text)
{
    return {action, text};
}

UpdatePrompt asking(const SessionView& view)
{
    UpdatePrompt prompt;
    prompt.headline = tr("Check for updates automatically?");
    prompt.text =
        tr("Ferrobank can look for new versions once a day. Nothing about you or your computer is sent. "
           "You can always check from the menu.");
    if (view.allowsAutomatic) {
        prompt.automaticTitle = tr("Automatically download and install updates");
        prompt.automatic = view.automatic;
    }
    prompt.buttons = {button(UpdateAction::AllowAutomatic, tr("Check Automatically")),
                      button(UpdateAction::DeclineAutomatic, tr("Don’t Check"))};
    prompt.dismiss = UpdateAction::Close;
    return prompt;
}

UpdatePrompt checking()
{
    UpdatePrompt prompt;
    prompt.headline = tr("Checking for updates…");
    prompt.isBusy = true;
    prompt.buttons = {button(UpdateAction::Cancel, tr("Cancel"))};
    prompt.dismiss = UpdateAction::Cancel;
    return prompt;
}

UpdatePrompt nothingNew(const SessionView& view)
{
    const NothingNew& nothing = view.nothingNew;
    UpdatePrompt prompt;
    prompt.buttons = {button(UpdateAction::Close, tr("OK"))};
    if (nothing.reason == "systemTooOld"_L1 || nothing.reason == "systemTooNew"_L1) {
        const bool isOld = nothing.reason == "systemTooOld"_L1;
        prompt.headline = tr("Your system is not supported");
        prompt.text =
            (isOld ? tr("Ferrobank %1 is available, but it needs a newer system than yours.")
                   : tr("Ferrobank %1 is available, but it does not support a system as new as yours."))
                .arg(nothing.latest);
        if (!nothing.page.isEmpty())
            prompt.buttons.append(button(UpdateAction::OpenPage, tr("Learn More…")));
        return prompt;
    }
    if (nothing.reason == "takenBack"_L1) {
        prompt.headline = tr("Ferrobank %1 was taken back").arg(nothing.latest);
        prompt.text =
            tr("It was installed here before and did not start, so %1 was put back. Check again to try it "
               "once more.")
                .arg(view.installed);
        return prompt;
    }
    prompt.headline = tr("You’re up to date!");
    if (nothing.reason == "newerThanLatest"_L1)
        prompt.text =
            tr("Ferrobank %1 is currently the newest version available. You are running version %2.")
                .arg(nothing.latest, view.installed);
    else
        prompt.text = tr("Ferrobank %1 is currently the newest version available.").arg(view.installed);
    if (!nothing.history.isEmpty())
        prompt.buttons.append(button(UpdateAction::ShowHistory, tr("Version History")));
    return prompt;
}

/// A copy that something else updates: the version is named, and the way to it.
void addForeignWay(const SessionView& view, UpdatePrompt& prompt)
{
    prompt.text += u' ' + view.placeSentence;
    if (!view.advice.isEmpty())
        prompt.text += u' ' + tr("To update: %1").arg(view.advice);
    prompt.buttons = {button(UpdateAction::Close, tr("OK"))};
    if (!view.offer.link.isEmpty())
        prompt.buttons.append(button(UpdateAction::OpenPage, tr("Learn More…")));
}

UpdatePrompt found(const SessionView& view)
{
    const Offer& offer = view.offer;
    UpdatePrompt prompt;
    prompt.headline = offer.critical ? tr("An important update for Ferrobank is available")
                                     : tr("A new version of Ferrobank is available");
    prompt.text = tr("Ferrobank %1 is now available; you have %2.").arg(offer.displayVersion, view.installed);
    if (offer.takenBack)
        prompt.text += u' ' + tr("It was installed here before, did not start, and was taken back.");
    prompt.notes = offer.notes;
    prompt.dismiss = UpdateAction::RemindLater;
    if (!view.mayReplace) {
        addForeignWay(view, prompt);
        prompt.dismiss = UpdateAction::Close;
        return prompt;
    }
    if (offer.informational)
        prompt.buttons = {button(UpdateAction::OpenPage, tr("Learn More…"))};
    else
        prompt.buttons = {button(UpdateAction::Install, tr("Install Update"))};
    prompt.buttons.append(button(UpdateAction::RemindLater, tr("Remind Me Later")));
    if (!offer.critical)
        prompt.buttons.append(button(UpdateAction::Skip, tr("Skip This Version")));
    if (view.allowsAutomatic && !offer.informational) {
        prompt.automaticTitle = tr("Automatically download and install updates in the future");
        prompt.automatic = view.automatic;
    }
    return prompt;
}

UpdatePrompt downloading(const SessionView& view, const QLocale& locale)
{
    constexpr auto kFormat = QLocale::DataSizeSIFormat;
    UpdatePrompt prompt;
    prompt.headline = tr("Downloading update…");
    prompt.text = tr("%1 of %2")
                      .arg(locale.formattedDataSize(view.bytes, 1, kFormat),
                           locale.formattedDataSize(view.offer.length, 1, kFormat));
    prompt.isBusy = true;
    if (view.offer.length > 0)
        prompt.progress =
            std::clamp(static_cast<double>(view.bytes) / static_cast<double>(view.offer.length), 0.0, 1.0);
    prompt.buttons = {button(UpdateAction::Cancel, tr("Cancel"))};
    prompt.dismiss = UpdateAction::Cancel;
    return prompt;
}

UpdatePrompt preparing()
{
    UpdatePrompt prompt;
    prompt.headline = tr("Verifying and unpacking the update…");
    prompt.isBusy = true;
    return prompt;
}

UpdatePrompt ready(const SessionView& view)
{
    UpdatePrompt prompt;
    prompt.headline = tr("Ready to install");
    prompt.text = tr("Ferrobank %1 has been downloaded. It is installed when you quit, or now.")
                      .arg(view.offer.displayVersion);
    prompt.notes = view.offer.notes;
    prompt.buttons = {button(UpdateAction::InstallAndRelaunch, tr("Install and Relaunch")),
                      button(UpdateAction::Close, tr("Install on Quit"))};
    return prompt;
}

UpdatePrompt installing()
{
    UpdatePrompt prompt;
    prompt.headline = tr("Installing update…");
    prompt.isBusy = true;
    return prompt;
}

UpdatePrompt replaced(const SessionView& view)
{
    UpdatePrompt prompt;
    prompt.headline =
        view.replacementIsOlder ? tr("An older Ferrobank is installed") : tr("Ferrobank was updated");
    prompt.text =
        (view.replacementIsOlder
             ? tr("Ferrobank %1 was put in the place of %2, which is still running. Relaunch to use it.")
             : tr("Ferrobank %1 is installed; %2 is still running. Relaunch to finish the update."))
            .arg(view.replacement, view.installed);
    prompt.buttons = {button(UpdateAction::Relaunch, tr("Relaunch")),
                      button(UpdateAction::Close, tr("Later"))};
    return prompt;
}

UpdatePrompt failed(const SessionView& view)
{
    UpdatePrompt prompt;
    const bool isOff = view.problem == Problem::Off;
    prompt.headline = isOff ? tr("Updates are switched off") : tr("Update error!");
    prompt.text = view.sentence;
    if (isOff && !view.advice.isEmpty())
        prompt.text += u' ' + tr("To update: %1").arg(view.advice);
    // It is over: there is nothing left to cancel.
    prompt.buttons = {button(UpdateAction::Close, tr("OK"))};
    return prompt;
}

} // namespace

std::optional<UpdatePrompt> promptFor(const SessionView& view, const QLocale& locale)
{
    switch (view.stage) {
    case Stage::Idle:
        return std::nullopt;
    case Stage::Asking:
        return asking(view);
    case Stage::Checking:
        return checking();
    case Stage::NothingNew:
        return nothingNew(view);
    case Stage::Found:
        return found(view);
    case Stage::Downloading:
        return downloading(view, locale);
    case Stage::Preparing:
        return preparing();
    case Stage::Ready:
        return ready(view);
    case Stage::Installing:
        return installing();
    case Stage::Replaced:
        return replaced(view);
    case Stage::Failed:
        return failed(view);
    }
    return std::nullopt;
}

} // namespace ferrobank::updates
