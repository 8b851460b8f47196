#pragma once

#include "Platform/SettingsPages.h"
#include "Platform/linux/workspace/DesktopMessages.h"
#include "Platform/linux/workspace/DesktopPrograms.h"

#include <QtCore/QStringList>

namespace ferrobank {

/// Settings pages of the desktops that Debian carries, each by the program that shows it. Main thread.
///
/// Where the running desktop has no such page, or its program is missing, the nearest page of any desktop is
/// shown; where there is none at all, a sentence says what to look for.
class DesktopPages final : public SettingsPages {
public:
    explicit DesktopPages(DesktopMessages messages = {}) : _messages(std::move(messages)) {}

    void open(SettingsPage page) override;

private:
    DesktopMessages _messages;
};

/// What to try for a page, best first, on a desktop that calls itself by these names (the value of
/// XDG_CURRENT_DESKTOP). Pure.
[[nodiscard]] QList<Command> commandsForPage(SettingsPage page, const QString& currentDesktop);

} // namespace ferrobank
