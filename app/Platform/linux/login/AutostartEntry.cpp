#include "Platform/linux/login/AutostartEntry.h"

#include "Platform/linux/SmallFile.h"
#include "Platform/linux/login/RegistryFailure.h"

#include <system_error>
#include <utility>

namespace ferrobank {

namespace {

constexpr std::size_t kSizeLimit = std::size_t{64} * 1024;

} // namespace

AutostartEntry::AutostartEntry(std::filesystem::path file, EntryTitle title, CommandLine command)
    : _file(std::move(file)), _title(title), _command(std::move(command))
{}

AutostartEntry::Found AutostartEntry::find() const
{
    const auto text = readSmallFile(_file, kSizeLimit);
    if (!text) {
        // A link into nowhere is somebody's, too.
        std::error_code error;
        const std::filesystem::file_type type = std::filesystem::symlink_status(_file, error).type();
        return {type == std::filesystem::file_type::not_found ? EntryState::Absent : EntryState::Foreign, {}};
    }
    DesktopEntry entry = parseDesktopEntry(*text);
    if (!entry.program) {
        return {entry.switchedOff ? EntryState::SwitchedOff : EntryState::Foreign, {}};
    }
    if (entry.program->filename() != _command.program.filename()) {
        return {EntryState::Foreign, {}};
    }
    EntryState state = entry.program == _command.program ? EntryState::On : EntryState::Elsewhere;
    if (entry.switchedOff) {
        state = EntryState::SwitchedOff;
    }
    return {state, std::move(entry.program)};
}

EntryState AutostartEntry::state() const
{
    return find().state;
}

std::optional<std::filesystem::path> AutostartEntry::registeredProgram() const
{
    return find().program;
}

void AutostartEntry::write(UserSwitch userSwitch)
{
    switch (state()) {
    case EntryState::Foreign:
        throw belongsToOthers(_file);
    case EntryState::SwitchedOff:
        if (userSwitch == UserSwitch::Respect) {
            throw switchedOffByUser(_title.name);
        }
        break;
    case EntryState::Absent:
    case EntryState::Elsewhere:
    case EntryState::On:
    case EntryState::Unanswered: // never of a file
        break;
    }
    try {
        replaceSmallFile(_file, desktopEntryText(_title, _command));
    } catch (const std::system_error& error) {
        throw cannotWrite(_file, error.code().message());
    }
}

void AutostartEntry::remove()
{
    const EntryState found = state();
    if (found == EntryState::Absent || found == EntryState::Foreign) {
        return;
    }
    std::error_code error;
    std::filesystem::remove(_file, error);
    if (error) {
        throw cannotRemove(_file, error.message());
    }
}

} // namespace ferrobank
