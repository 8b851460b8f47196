#include "Platform/linux/login/LoginItem.h"

#include "Platform/linux/login/LoginNames.h"
#include "Platform/linux/login/RegistryFailure.h"

#include <system_error>
#include <utility>

namespace ferrobank {

namespace {

constexpr std::string_view kName = "Ferrobank";

} // namespace

LoginItem::LoginItem(const UserFolders& folders, std::filesystem::path executable)
    : _entry(folders.autostart() / kLoginItemEntry, {kName, "Shows the Ferrobank menu"},
             CommandLine{std::move(executable), {}}),
      _mask(folders.unitSwitches() / kLoginItemUnit)
{}

bool LoginItem::isMasked() const
{
    std::error_code error;
    return std::filesystem::read_symlink(_mask, error) == "/dev/null";
}

EntryState LoginItem::state() const
{
    const EntryState found = _entry.state();
    const bool registered = found == EntryState::On || found == EntryState::Elsewhere;
    return registered && isMasked() ? EntryState::SwitchedOff : found;
}

std::optional<std::filesystem::path> LoginItem::registeredProgram() const
{
    return _entry.registeredProgram();
}

void LoginItem::registerEntry(UserSwitch userSwitch)
{
    if (isMasked()) {
        if (userSwitch == UserSwitch::Respect) {
            throw switchedOffByUser(kName);
        }
        std::error_code error;
        std::filesystem::remove(_mask, error);
        if (error) {
            throw cannotRemove(_mask, error.message());
        }
    }
    _entry.write(userSwitch);
}

void LoginItem::unregisterEntry()
{
    _entry.remove();
}

} // namespace ferrobank
