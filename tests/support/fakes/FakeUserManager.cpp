#include "support/fakes/FakeUserManager.h"

#include "Platform/LoginItemRegistry.h"

#include <algorithm>

namespace ferrobank {

UnitFileState FakeUserManager::unitFileState(const std::string& unit)
{
    if (reach != ManagerReach::Answers) {
        return {reach, {}};
    }
    if (otherWord) {
        return {reach, *otherWord};
    }
    if (masked) {
        return {reach, "masked"};
    }
    const bool known =
        std::any_of(folders.begin(), folders.end(), [&unit](const std::filesystem::path& folder) {
            return std::filesystem::exists(folder / unit);
        });
    return {reach, known ? (enabled ? "enabled" : "disabled") : ""};
}

std::vector<std::filesystem::path> FakeUserManager::unitPath()
{
    return folders;
}

void FakeUserManager::enable(const std::string&)
{
    record("enable");
    enabled = true;
}

void FakeUserManager::disable(const std::string&)
{
    record("disable");
    enabled = false;
}

void FakeUserManager::unmask(const std::string&)
{
    record("unmask");
    masked = false;
}

void FakeUserManager::reload()
{
    record("reload");
}

void FakeUserManager::start(const std::string&)
{
    record("start");
}

UserManager::Stop FakeUserManager::stop(const std::string&, std::chrono::milliseconds)
{
    record("stop");
    return stopResult;
}

void FakeUserManager::resetFailed(const std::string&)
{
    record("reset failed");
}

void FakeUserManager::record(const char* call)
{
    calls.append(QString::fromLatin1(call));
    if (failingCall == call) {
        throw RegistryError(std::string(call) + " failed");
    }
}

} // namespace ferrobank
