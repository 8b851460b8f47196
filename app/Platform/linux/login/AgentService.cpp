#include "Platform/linux/login/AgentService.h"

#include "Platform/linux/SmallFile.h"
#include "Platform/linux/login/FolderLock.h"
#include "Platform/linux/login/LoginNames.h"
#include "Platform/linux/login/RegistryFailure.h"
#include "Platform/linux/login/ServiceUnit.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <system_error>
#include <utility>

namespace ferrobank {

namespace {

using namespace std::chrono_literals;

constexpr std::size_t kSizeLimit = std::size_t{64} * 1024;
constexpr auto kStopLimit = 5s;
constexpr std::string_view kWhat = "Ferrobank's drive";

const std::string kUnit(kAgentUnit);

std::filesystem::path resolved(const std::filesystem::path& path)
{
    std::error_code error;
    std::filesystem::path result = std::filesystem::weakly_canonical(path, error);
    return error ? path : result;
}

/// The manager writes its links as the user, but its words for a folder that it cannot write mislead.
void requireWritable(const std::filesystem::path& folder)
{
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (!error && access(folder.c_str(), W_OK) != 0) {
        error = {errno, std::generic_category()};
    }
    if (error) {
        throw cannotWrite(folder, error.message());
    }
}

} // namespace

AgentService::AgentService(UserManager& manager, const UserFolders& folders,
                           const AgentDescription& description)
    : _manager(manager),
      _folders(folders),
      _description(description),
      _unitFile(folders.userUnits() / kAgentUnit),
      _entry(folders.autostart() / kAgentEntry, {"Ferrobank Drive", "Keeps your Ferrobank drive available"},
             description.command)
{}

AgentService::UnitFile AgentService::findUnitFile() const
{
    std::optional<std::string> text = readSmallFile(_unitFile, kSizeLimit);
    if (!text) {
        std::error_code error;
        const auto type = std::filesystem::symlink_status(_unitFile, error).type();
        return {
            type == std::filesystem::file_type::not_found ? EntryState::Absent : EntryState::Foreign, {}, {}};
    }
    std::optional<std::filesystem::path> program = programOfServiceUnit(*text);
    if (!program) {
        return {EntryState::Foreign, {}, {}};
    }
    const bool here = program == _description.command.program;
    return {here ? EntryState::On : EntryState::Elsewhere, std::move(program), std::move(*text)};
}

EntryState AgentService::unitState(const std::string& word) const
{
    if (word.starts_with("masked")) {
        return EntryState::SwitchedOff;
    }
    const EntryState file = findUnitFile().state;
    if (word.empty()) {
        return EntryState::Absent;
    }
    if (file == EntryState::Absent || file == EntryState::Foreign) {
        return file;
    }
    if (word.starts_with("enabled")) {
        return file;
    }
    return word == "bad" ? EntryState::Elsewhere : EntryState::SwitchedOff;
}

EntryState AgentService::state()
{
    const UnitFileState answer = _manager.unitFileState(kUnit);
    if (answer.reach == ManagerReach::Silent) {
        return EntryState::Unanswered;
    }
    const EntryState entry = _entry.state();
    if (answer.reach == ManagerReach::Absent) {
        return entry;
    }
    if (entry == EntryState::Absent || entry == EntryState::Foreign) {
        return unitState(answer.word);
    }
    try {
        if (!managerReadsOurFolder()) {
            return entry;
        }
    } catch (const RegistryError&) {
        return EntryState::Unanswered;
    }
    const EntryState unit = unitState(answer.word);
    if (entry == EntryState::SwitchedOff) {
        return unit == EntryState::Absent ? entry : unit;
    }
    return unit == EntryState::SwitchedOff ? unit : EntryState::Elsewhere;
}

std::optional<std::filesystem::path> AgentService::registeredProgram() const
{
    const UnitFile unit = findUnitFile();
    return unit.program ? unit.program : _entry.registeredProgram();
}

bool AgentService::managerReadsOurFolder()
{
    const std::filesystem::path ours = resolved(_folders.userUnits());
    const std::vector<std::filesystem::path> folders = _manager.unitPath();
    return std::any_of(folders.begin(), folders.end(),
                       [&ours](const std::filesystem::path& folder) { return resolved(folder) == ours; });
}

void AgentService::registerAgent(UserSwitch userSwitch)
{
    if (usableManager()) {
        registerUnit(userSwitch);
    } else {
        registerEntry(userSwitch);
    }
}

void AgentService::unregisterAgent()
{
    if (usableManager()) {
        unregisterUnit();
    }
    removeEntry();
}

bool AgentService::usableManager()
{
    switch (_manager.unitFileState(kUnit).reach) {
    case ManagerReach::Answers:
        return managerReadsOurFolder();
    case ManagerReach::Absent:
        return false;
    case ManagerReach::Silent:
        break;
    }
    throw RegistryError("The service manager of your session does not answer. Try again later.");
}

void AgentService::registerUnit(UserSwitch userSwitch)
{
    const FolderLock lock(_folders.userUnits());
    const UnitFile before = findUnitFile();
    if (before.state == EntryState::Foreign) {
        throw belongsToOthers(_unitFile);
    }
    refuseForeignUnits();
    const std::string word = _manager.unitFileState(kUnit).word;
    const bool switchedOff =
        unitState(word) == EntryState::SwitchedOff || _entry.state() == EntryState::SwitchedOff;
    if (switchedOff && userSwitch == UserSwitch::Respect) {
        throw switchedOffByUser(kWhat);
    }
    requireWritable(_folders.unitSwitches());
    if (word.starts_with("masked")) {
        _manager.unmask(kUnit);
    }
    try {
        writeUnit(before);
        _manager.enable(kUnit);
        _manager.reload();
        removeEntry();
        _manager.start(kUnit);
    } catch (const RegistryError&) {
        undoUnit(before);
        throw;
    }
}

void AgentService::refuseForeignUnits()
{
    const std::filesystem::path ours = resolved(_unitFile);
    for (const std::filesystem::path& folder : _manager.unitPath()) {
        const std::filesystem::path file = resolved(folder / kAgentUnit);
        if (file == ours) {
            return;
        }
        // A link to the null device is the user's mask, not a unit.
        std::error_code error;
        if (std::filesystem::is_regular_file(file, error) && !std::filesystem::is_empty(file, error)) {
            throw belongsToOthers(folder / kAgentUnit);
        }
    }
}

void AgentService::writeUnit(const UnitFile& before)
{
    const std::string text = serviceUnitText(_description);
    if (text == before.text) {
        return;
    }
    try {
        replaceSmallFile(_unitFile, text);
    } catch (const std::system_error& error) {
        throw cannotWrite(_unitFile, error.code().message());
    }
}

void AgentService::undoUnit(const UnitFile& before)
{
    try {
        if (before.state != EntryState::Absent) {
            replaceSmallFile(_unitFile, before.text);
        } else if (std::filesystem::exists(_unitFile)) {
            _manager.disable(kUnit);
            std::filesystem::remove(_unitFile);
        }
        _manager.reload();
    } catch (const std::exception&) { // NOLINT(bugprone-empty-catch)
        // The failure that led here is the one to tell; what could not be undone, the next registration
        // rewrites.
    }
}

void AgentService::unregisterUnit()
{
    const EntryState found = findUnitFile().state;
    if (found == EntryState::Absent || found == EntryState::Foreign) {
        return;
    }
    const FolderLock lock(_folders.userUnits());
    const UserManager::Stop stop = _manager.stop(kUnit, kStopLimit);
    _manager.disable(kUnit);
    std::error_code error;
    std::filesystem::remove(_unitFile, error);
    if (error) {
        throw cannotRemove(_unitFile, error.message());
    }
    // A service that is still unmounting keeps its unit's time limits only while the manager remembers them.
    if (stop == UserManager::Stop::Done) {
        _manager.reload();
    }
    _manager.resetFailed(kUnit);
}

void AgentService::registerEntry(UserSwitch userSwitch)
{
    const FolderLock lock(_folders.autostart());
    const bool isNew = _entry.state() == EntryState::Absent;
    _entry.write(userSwitch);
    try {
        DetachedAgent(_description.command).start();
    } catch (const RegistryError&) {
        if (isNew) {
            _entry.remove();
        }
        throw;
    }
}

void AgentService::removeEntry()
{
    const EntryState found = _entry.state();
    if (found == EntryState::Absent || found == EntryState::Foreign) {
        return;
    }
    CommandLine command = _description.command;
    command.program = _entry.registeredProgram().value_or(command.program);
    DetachedAgent(std::move(command)).stop(kStopLimit);
    _entry.remove();
}

} // namespace ferrobank
