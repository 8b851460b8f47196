#include "Platform/linux/updates/install/Trial.h"

#include "Platform/linux/PropertyList.h"
#include "Platform/linux/SmallFile.h"
#include "Platform/linux/updates/UpdateFailure.h"
#include "Platform/linux/updates/install/Files.h"
#include "Platform/linux/updates/install/StagingLock.h"
#include "Platform/linux/updates/install/Swap.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <sstream>

namespace ferrobank::updates {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMostBadVersions = 50;
constexpr std::chrono::seconds kInstallTakes{10};

fs::path trialFile(const InstallPlace& place)
{
    return place.staging() / "trial";
}

fs::path badFile(const InstallPlace& place)
{
    return place.staging() / "bad";
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

void actOn(const InstallPlace& place, Trial trial, std::string_view ownVersion)
{
    switch (actAtStart(trial, ownVersion)) {
    case StartAct::Run:
        break;
    case StartAct::Count:
        ++trial.starts;
        writeTrial(place, trial);
        break;
    case StartAct::TakeBack:
        takeBack(place, trial);
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

StartAct actAtStart(const std::optional<Trial>& trial, std::string_view ownVersion)
{
    if (!trial)
        return StartAct::Run;
    if (trial->version != ownVersion)
        return StartAct::Forget;
    return trial->starts >= Trial::kMostFailedStarts ? StartAct::TakeBack : StartAct::Count;
}

std::optional<Trial> trialAt(const InstallPlace& place)
{
    const auto text = readSmallFile(trialFile(place), kLongestRecord);
    return text ? readTrial(*text) : std::nullopt;
}

void writeTrial(const InstallPlace& place, const Trial& trial)
{
    if (const int error = writeFileAtomically(trialFile(place), trialText(trial)); error != 0)
        throw systemFailure(Problem::Install, "The update could not be prepared", error);
}

void forgetTrial(const InstallPlace& place)
{
    ::unlink(trialFile(place).c_str());
}

std::vector<std::string> badVersionsAt(const InstallPlace& place)
{
    std::vector<std::string> versions;
    std::istringstream lines(readSmallFile(badFile(place), kLongestRecord).value_or(std::string()));
    for (std::string line; std::getline(lines, line) && versions.size() < kMostBadVersions;) {
        if (!line.empty())
            versions.push_back(line);
    }
    return versions;
}

void takeBack(const InstallPlace& place, const Trial& trial)
{
    // Noted first: if the power fails in between, the failed version is still never installed again.
    std::vector<std::string> bad = badVersionsAt(place);
    if (std::ranges::find(bad, trial.version) == bad.end())
        bad.insert(bad.begin(), trial.version);
    std::string text;
    for (const std::string& version : bad)
        text += version + "\n";
    if (const int error = writeFileAtomically(badFile(place), text); error != 0)
        throw systemFailure(Problem::Install, "The failed update could not be noted", error);
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
        const StagingLock lock(place, kInstallTakes);
        if (const auto other = otherExecutable(place, running))
            return other;
        if (const auto trial = trialAt(place))
            actOn(place, *trial, versionOf(place.root));
        else
            forgetTrial(place);
    } catch (const UpdateFailure& failure) {
        std::fprintf(stderr, "Ferrobank: %s\n", failure.what());
    }
    return otherExecutable(place, running);
}

} // namespace ferrobank::updates
