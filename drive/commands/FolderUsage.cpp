#include "commands/FolderUsage.h"

#include "commands/Interruption.h"
#include "commands/ServedVolume.h"
#include "commands/StatusText.h"
#include "figures/DeviceCounters.h"
#include "figures/DisplayText.h"
#include "platform/Failure.h"
#include "platform/FileDescriptor.h"
#include "state/ServerProbe.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <ctime>
#include <nlohmann/json.hpp>
#include <optional>
#include <vector>

namespace ferrobank::drive {

namespace {

constexpr std::int64_t kFreshSeconds = 60;
constexpr std::size_t kWidestName = 48;

std::uint64_t saved(const FolderFigures& figures)
{
    return figures.holds > figures.takes ? figures.holds - figures.takes : 0;
}

/// Columns count characters; a name has up to four bytes for one.
std::size_t charactersOf(const std::string& text)
{
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char byte) {
        return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U;
    }));
}

std::string tableRow(const std::string& name, std::size_t width, const std::array<std::string, 3>& columns)
{
    std::string text = name + std::string(width > charactersOf(name) ? width - charactersOf(name) : 0, ' ');
    for (const std::string& column : columns) {
        text += std::string(column.size() < 12 ? 12 - column.size() : 1, ' ') + column;
    }
    return text + "\n";
}

std::array<std::string, 3> columnsOf(const FolderFigures& figures)
{
    return {displayBytes(figures.holds), displayBytes(figures.takes), displayBytes(saved(figures))};
}

/// What lies in the folder itself and not in one of its folders.
FolderFigures looseFiles(const FolderSums& sums, std::uint32_t folder,
                         const std::vector<std::uint32_t>& children)
{
    FolderFigures loose = sums.folders[folder];
    for (const std::uint32_t child : children) {
        loose.holds -= std::min(loose.holds, sums.folders[child].holds);
        loose.takes -= std::min(loose.takes, sums.folders[child].takes);
    }
    return loose;
}

std::vector<std::uint32_t> largestFirst(const FolderSums& sums, std::uint32_t folder)
{
    std::vector<std::uint32_t> children = sums.childrenOf(folder);
    std::sort(children.begin(), children.end(), [&sums](std::uint32_t one, std::uint32_t other) {
        const FolderFigures& a = sums.folders[one];
        const FolderFigures& b = sums.folders[other];
        return a.takes != b.takes ? a.takes > b.takes : a.name < b.name;
    });
    return children;
}

void printJson(const FolderSums& sums, std::uint32_t folder, const std::string& title)
{
    const auto object = [](const std::string& name, const FolderFigures& figures) {
        return nlohmann::ordered_json{
            {"name", name}, {"holds", figures.holds}, {"takes", figures.takes}, {"saves", saved(figures)}};
    };
    nlohmann::ordered_json root = object(title, sums.folders[folder]);
    root["time"] = sums.time;
    root["folders"] = nlohmann::ordered_json::array();
    for (const std::uint32_t child : largestFirst(sums, folder)) {
        root["folders"].push_back(object(displayName(sums.folders[child].name), sums.folders[child]));
    }
    std::puts(root.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace).c_str());
}

/// The path below the drive's root.
std::filesystem::path pathOnDrive(const Volume& volume, const std::filesystem::path& folder)
{
    if (folder.empty()) {
        return {};
    }
    std::error_code error;
    const std::filesystem::path real = std::filesystem::canonical(folder, error);
    if (error) {
        throw systemFailure("Cannot look at " + displayName(folder.string()), error.value());
    }
    if (!std::filesystem::is_directory(real)) {
        throw Failure(displayName(folder.string()) + " is no folder.", "no-folder");
    }
    const std::filesystem::path below =
        real.lexically_relative(std::filesystem::canonical(volume.mountPoint));
    if (below.empty() || *below.begin() == "..") {
        throw Failure(displayName(folder.string()) + " is not on the drive.", "not-on-drive");
    }
    return below == "." ? std::filesystem::path() : below;
}

FolderSums sumUp(const Volume& volume)
{
    const bool terminal = ::isatty(STDERR_FILENO) == 1;
    const Interruption interruption;
    const auto clear = [terminal] {
        if (terminal) {
            std::fputs("\r\033[K", stderr);
        }
    };
    const auto tell = [terminal](std::uint64_t files) {
        if (terminal) {
            std::fprintf(stderr, "\rLooking at the files: %llu\033[K",
                         static_cast<unsigned long long>(files));
        }
    };
    std::optional<FolderSums> sums = sumUpFolders(volume.mountPoint, tell, interruption.token());
    clear();
    if (!sums) {
        throw Failure("Ended before all files had been looked at.", "ended");
    }
    return std::move(*sums);
}

} // namespace

std::string folderTable(const FolderSums& sums, std::uint32_t folder, const std::string& title)
{
    const std::vector<std::uint32_t> children = largestFirst(sums, folder);
    const FolderFigures loose = looseFiles(sums, folder, children);
    const std::string looseName = "(files right here)";
    std::size_t width = std::max(charactersOf(title), std::string("Folder").size());
    for (const std::uint32_t child : children) {
        width = std::max(width, charactersOf(displayName(sums.folders[child].name)));
    }
    if (loose.holds > 0) {
        width = std::max(width, looseName.size());
    }
    width = std::min(width, kWidestName);
    std::string text = tableRow("Folder", width, {"holds", "takes", "saves"});
    for (const std::uint32_t child : children) {
        text += tableRow(displayName(sums.folders[child].name), width, columnsOf(sums.folders[child]));
    }
    if (loose.holds > 0 && !children.empty()) {
        text += tableRow(looseName, width, columnsOf(loose));
    }
    return text + tableRow(title, width, columnsOf(sums.folders[folder]));
}

void showFolderUsage(const Paths& paths, const std::filesystem::path& folder, UsageForm form)
{
    const std::optional<Volume> volume = findServedVolume(paths, ServerProbe::probe(paths));
    if (!volume) {
        throw Failure("The drive is not mounted. To mount it, run: ferrobank restart", "not-mounted");
    }
    const std::filesystem::path below = pathOnDrive(*volume, folder);
    const FileDescriptor root(::open(volume->mountPoint.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    // What is not written yet has no place on the device and no part in the change counter.
    if (!root || ::syncfs(root.get()) != 0) {
        throw systemFailure("Cannot read the drive", errno);
    }
    const std::optional<VolumeState> now = volumeState(root.get());
    const std::string uuid = now ? now->uuid : std::string();
    std::optional<FolderSums> sums = FolderSums::load(paths.index, uuid);
    const std::int64_t age = sums ? std::time(nullptr) - sums->time : 0;
    const bool isSame = sums && now && sums->generation == now->generation;
    const bool isFresh = age >= 0 && age < kFreshSeconds && sums && sums->find(below);
    if (!isSame && !isFresh) {
        sums = sumUp(*volume);
        sums->keep(paths.index, uuid);
    }
    const std::optional<std::uint32_t> number = sums->find(below);
    if (!number) {
        throw Failure(displayName(folder.string()) + " cannot be read.", "no-folder");
    }
    const std::string title = below.empty() ? "~/Ferrobank" : "~/Ferrobank/" + displayName(below.string());
    if (form == UsageForm::Json) {
        printJson(*sums, *number, title);
        return;
    }
    std::fputs(folderTable(*sums, *number, title).c_str(), stdout);
    if (!isSame && isFresh) {
        std::printf("As it was %s.\n", timeAgo(sums->time, std::time(nullptr)).c_str());
    }
}

} // namespace ferrobank::drive
