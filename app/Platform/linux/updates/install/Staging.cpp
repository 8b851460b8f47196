#include "Platform/linux/updates/install/Staging.h"

#include "Platform/linux/SmallFile.h"
#include "Platform/linux/updates/UpdateFailure.h"
#include "Platform/linux/updates/feed/VersionComparison.h"
#include "Platform/linux/updates/install/Files.h"
#include "Platform/linux/updates/install/SideBySide.h"
#include "Platform/linux/updates/install/Trial.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <utility>

namespace ferrobank::updates {
namespace {

namespace fs = std::filesystem;

UpdateFailure notPrepared(int error)
{
    return systemFailure(Problem::Install, "The update could not be prepared", error);
}

void removeAll(const fs::path& path)
{
    std::error_code ignored; // what stays is tried again at the next start
    fs::remove_all(path, ignored);
}

} // namespace

Staging::Staging(InstallPlace place) : _place(std::move(place)), _folder(_place.staging()) {}

std::optional<StagedUpdate> Staging::staged() const
{
    const auto text = readSmallFile(_folder / "staged.json", kLongestRecord);
    if (!text || trialAt(_place))
        return std::nullopt;
    const auto json = nlohmann::json::parse(*text, nullptr, false);
    if (!json.is_object() || !json.contains("version") || !json["version"].is_string() ||
        !json.contains("item") || !json["item"].is_string())
        return std::nullopt;
    StagedUpdate update{json["version"], json["item"]};
    // One that was taken back since it was staged does not wait any more; one staged again after that does.
    const int failuresThen =
        json.contains("failures") && json["failures"].is_number_integer() ? json["failures"].get<int>() : 0;
    std::error_code ignored;
    if (timesBanned(bansAt(_place), update.version) > failuresThen ||
        !fs::is_directory(rootOf(update), ignored))
        return std::nullopt;
    return update;
}

fs::path Staging::rootOf(const StagedUpdate& update) const
{
    const fs::path name = _place.root.filename();
    const fs::path moved = _place.home / "versions" / update.version / name;
    std::error_code ignored;
    const bool wasMoved =
        _place.layout == InstallPlace::Layout::Versioned && fs::is_directory(moved, ignored);
    return wasMoved ? moved : next() / name;
}

void Staging::beginUnpacking()
{
    removeAll(unpacking());
    if (::mkdir(unpacking().c_str(), 0700) != 0)
        throw notPrepared(errno);
}

void Staging::record(const StagedUpdate& update)
{
    forgetStaged();
    if (::rename(unpacking().c_str(), next().c_str()) != 0)
        throw notPrepared(errno);
    if (const int error = syncFolder(_folder); error != 0)
        throw notPrepared(error);
    const nlohmann::json json{{"version", update.version},
                              {"item", update.item},
                              {"failures", timesBanned(bansAt(_place), update.version)}};
    const std::string text = json.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    if (const int error = writeFileAtomically(_folder / "staged.json", text); error != 0)
        throw notPrepared(error);
    discardDownload();
}

void Staging::forgetStaged()
{
    // The record first: without it the folder is garbage, with it the folder must be complete.
    ::unlink((_folder / "staged.json").c_str());
    clearNext();
}

void Staging::noteInstalled()
{
    ::unlink((_folder / "staged.json").c_str());
}

void Staging::clearNext()
{
    if (!isRunningFrom(next())) {
        removeAll(next());
        return;
    }
    // Something, a server for example, still runs from the old version: it keeps its files until it has
    // ended.
    for (int number = 1; number < 100; ++number) {
        const fs::path kept = _folder / ("kept-" + std::to_string(number));
        if (::renameat2(AT_FDCWD, next().c_str(), AT_FDCWD, kept.c_str(), RENAME_NOREPLACE) == 0)
            return;
    }
}

void Staging::discardDownload()
{
    ::unlink(archiveNote().c_str());
    ::unlink(archive().c_str());
}

void Staging::dropUnfinished()
{
    removeAll(unpacking());
    std::error_code ignored;
    if (!fs::exists(archiveNote(), ignored))
        ::unlink(archive().c_str());
    for (const char* name : {"staged.json.new", "archive.json.new"})
        ::unlink((_folder / name).c_str());
    if (!staged()) {
        ::unlink((_folder / "staged.json").c_str());
        removeAll(next()); // unpacked just now; what lay there before was moved away or removed
    }
}

void Staging::removeLeftovers(const std::string& installedVersion)
{
    removeAll(unpacking());
    std::error_code ignored;
    if (!fs::exists(archiveNote(), ignored))
        ::unlink(archive().c_str());
    std::error_code error;
    for (fs::directory_iterator it(_folder, error), end; !error && it != end; it.increment(error)) {
        if (it->path().filename().string().starts_with("kept-") && !isRunningFrom(it->path()))
            removeAll(it->path());
    }
    for (const char* name : {"staged.json.new", "trial.new", "bad.new", "bad.ready.new", "archive.json.new"})
        ::unlink((_folder / name).c_str());
    if (trialAt(_place))
        return;
    forgetTrial(_place); // and what was prepared for it
    ::rmdir((_folder / "probe-one").c_str());
    ::rmdir((_folder / "probe-other").c_str());
    // An update that was installed, or overtaken by hand, does not wait any more.
    const auto update = staged();
    if (!update || !isNewer(update->version, installedVersion)) {
        ::unlink((_folder / "staged.json").c_str());
        if (!isRunningFrom(next()))
            removeAll(next());
    }
    if (_place.layout == InstallPlace::Layout::Versioned) {
        removeOldVersions(installedVersion);
        tidyFormerFolder(_place);
    }
}

void Staging::removeOldVersions(const std::string& installedVersion)
{
    ::unlink((_place.home / ".current.new").c_str());
    std::error_code error;
    const fs::path current = fs::canonical(_place.home / "current", error);
    if (error)
        return;
    const auto waiting = staged();
    for (fs::directory_iterator it(_place.home / "versions", error), end; !error && it != end;
         it.increment(error))
    {
        const std::string version = it->path().filename();
        const bool isInUse =
            it->path() == current || version == installedVersion || (waiting && version == waiting->version);
        // What cannot be looked at stays; an error here must not end what the application asked for.
        std::error_code unknown;
        const bool isOurs = fs::is_directory(it->path() / _place.root.filename(), unknown) ||
                            (fs::is_directory(it->path(), unknown) && fs::is_empty(it->path(), unknown));
        if (!isInUse && isOurs && !isRunningFrom(it->path()))
            removeAll(it->path());
    }
}

} // namespace ferrobank::updates
