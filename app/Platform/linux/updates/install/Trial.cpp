#include "Platform/linux/updates/install/Trial.h"

#include "Platform/linux/PropertyList.h"
#include "Platform/linux/SmallFile.h"
#include "Platform/linux/updates/UpdateFailure.h"
#include "Platform/linux/updates/install/Files.h"
#include "Platform/linux/updates/install/RunningPrograms.h"
#include "Platform/linux/updates/install/StagingLock.h"
#include "Platform/linux/updates/install/Swap.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <sstream>

namespace ferrobank::updates {
namespace {

namespace fs = std::filesystem;

constexpr std::chrono::seconds kInstallTakes{10};
constexpr std::chrono::seconds kCountTakes{1};

fs::path trialFile(const InstallPlace& place)
{
    return place.staging() / "trial";
}

fs::path bansFile(const InstallPlace& place)
{
    return place.staging() / "bad";
}

/// What bansFile() becomes when the version on trial fails; written while there was room.
fs::path preparedBansFile(const InstallPlace& place)
{
    return place.staging() / "bad.ready";
}

std::int64_t secondsNow()
{
    const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::seconds>(sinceEpoch).count();
}

void tellFailure(const char* what)
{
    std::fprintf(stderr, "Ferrobank: %s\n", what);
}

struct FileIdentity {
    dev_t device = 0;
    ino_t number = 0;

    friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};

FileIdentity identityOf(const fs::path& file)
{
    struct stat facts{};
    return ::stat(file.c_str(), &facts) == 0 ? FileIdentity{facts.st_dev, facts.st_ino} : FileIdentity{};
}

std::string versionOf(const fs::path& bundle)
{
    const auto list = PropertyList::read(bundle / "Contents/Info.plist");
    return list ? list->text("CFBundleVersion").value_or(std::string()) : std::string();
}

/// The installed executable, when it is not the running one.
std::optional<fs::path> otherExecutable(const InstallPlace& place, const FileIdentity& running)
{
    const fs::path executable = place.stableRoot() / "Contents/Linux/Ferrobank";
    if (identityOf(executable) != running && ::access(executable.c_str(), X_OK) == 0)
        return executable;
    return std::nullopt;
}

void actOn(const InstallPlace& place, const Trial& trial)
{
    const bool runsAlready = isRunningFrom(place.root / "Contents/Linux", ::getpid());
    switch (actAtStart(trial, versionOf(place.root), runsAlready)) {
    case StartAct::Run:
        break;
    case StartAct::TakeBack:
        takeBack(place, trial, secondsNow());
        break;
    case StartAct::Forget:
        forgetTrial(place);
        break;
    }
}

} // namespace

std::string trialText(const Trial& trial)
{
    return trial.version + "\n" + trial.previous + "\n" + std::to_string(trial.starts) + "\n";
}

std::optional<Trial> readTrial(std::string_view text)
{
    std::istringstream lines{std::string(text)};
    Trial trial;
    const bool isComplete = std::getline(lines, trial.version) && std::getline(lines, trial.previous) &&
                            (lines >> trial.starts) && !trial.version.empty() && !trial.previous.empty() &&
                            trial.starts >= 0;
    return isComplete ? std::optional(trial) : std::nullopt;
}

StartAct actAtStart(const std::optional<Trial>& trial, std::string_view ownVersion, bool runsAlready)
{
    if (!trial)
        return StartAct::Run;
    if (trial->version != ownVersion)
        return StartAct::Forget;
    const bool hasFailed = trial->starts >= Trial::kMostFailedStarts && !runsAlready;
    return hasFailed ? StartAct::TakeBack : StartAct::Run;
}

std::optional<Trial> trialAt(const InstallPlace& place)
{
    const auto text = readSmallFile(trialFile(place), kLongestRecord);
    return text ? readTrial(*text) : std::nullopt;
}

void writeTrial(const InstallPlace& place, const Trial& trial)
{
    const std::string text = trialText(trial);
    int error = writeFileAtomically(trialFile(place), text);
    if (error != 0)
        error = overwriteFile(trialFile(place), text);
    if (error != 0)
        throw systemFailure(Problem::Install, "The update could not be prepared", error);
}

void forgetTrial(const InstallPlace& place)
{
    ::unlink(trialFile(place).c_str());
    ::unlink(preparedBansFile(place).c_str());
    dropWayBack(place);
}

std::vector<Ban> bansAt(const InstallPlace& place)
{
    return readBans(readSmallFile(bansFile(place), kLongestRecord).value_or(std::string()));
}

void writeBans(const InstallPlace& place, const std::vector<Ban>& bans)
{
    if (const int error = writeFileAtomically(bansFile(place), bansText(bans)); error != 0)
        throw systemFailure(Problem::Install, "The failed update could not be noted", error);
}

void prepareTakingBack(const InstallPlace& place, const Trial& trial, std::int64_t now)
{
    const std::string text = bansText(withFailure(bansAt(place), trial.version, now));
    if (const int error = writeFileAtomically(preparedBansFile(place), text); error != 0)
        throw systemFailure(Problem::Install, "The update could not be prepared", error);
    prepareWayBack(place, trial.previous);
}

void takeBack(const InstallPlace& place, const Trial& trial, std::int64_t now)
{
    // Noted first: if the power fails in between, the failed version is still not tried again at once.
    try {
        writeBans(place, withFailure(bansAt(place), trial.version, now));
    } catch (const UpdateFailure& failure) {
        if (::rename(preparedBansFile(place).c_str(), bansFile(place).c_str()) != 0)
            tellFailure(failure.what());
    }
    swapVersions(place, trial.previous);
    // What is staged now is the failed version.
    ::unlink((place.staging() / "staged.json").c_str());
    forgetTrial(place);
}

std::optional<fs::path> executableToRunInstead(const InstallPlace& place, const fs::path& self)
{
    if (::access(trialFile(place).c_str(), F_OK) != 0)
        return std::nullopt;
    const FileIdentity running = identityOf(self);
    try {
        // Waits for an installation that is under way, which may replace the files under this very process.
        const StagingLock lock(place, kInstallTakes, StagingLock::Right::Trial);
        if (const auto other = otherExecutable(place, running))
            return other;
        if (const auto trial = trialAt(place))
            actOn(place, *trial);
        else
            forgetTrial(place);
    } catch (const UpdateFailure& failure) {
        tellFailure(failure.what());
    }
    return otherExecutable(place, running);
}

void countStart(const InstallPlace& place)
{
    if (::access(trialFile(place).c_str(), F_OK) != 0)
        return;
    try {
        const StagingLock lock(place, kCountTakes, StagingLock::Right::Trial);
        auto trial = trialAt(place);
        if (!trial || trial->version != versionOf(place.root))
            return;
        trial->starts = std::min(trial->starts + 1, Trial::kMostFailedStarts);
        writeTrial(place, *trial);
    } catch (const UpdateFailure& failure) {
        tellFailure(failure.what());
    }
}

} // namespace ferrobank::updates
