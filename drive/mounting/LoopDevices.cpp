#include "mounting/LoopDevices.h"

#include "platform/Failure.h"
#include "platform/Files.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <optional>
#include <string_view>

namespace ferrobank::drive {

namespace {

/// Not to be able to look is no answer: "attached nowhere" would end a drive that is mounted.
void requireMeans(int error)
{
    if (error == EMFILE || error == ENFILE || error == ENOMEM) {
        throw systemFailure("Cannot tell where the drive's store is attached", error);
    }
}

constexpr std::string_view kDeletedMark = " (deleted)";

struct Backing {
    std::string path;
    bool deleted = false;
};

std::optional<Backing> backingOf(const std::filesystem::path& device)
{
    std::optional<std::string> text = readSmallFile(device / "loop/backing_file");
    if (!text) {
        requireMeans(errno);
        return std::nullopt;
    }
    while (!text->empty() && text->back() == '\n') {
        text->pop_back();
    }
    Backing backing{.path = *text};
    if (text->ends_with(kDeletedMark)) {
        backing.path.resize(text->size() - kDeletedMark.size());
        backing.deleted = true;
    }
    return backing;
}

bool sameFile(const std::filesystem::path& one, const std::filesystem::path& other)
{
    struct stat first{};
    struct stat second{};
    return ::stat(one.c_str(), &first) == 0 && ::stat(other.c_str(), &second) == 0 &&
           first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

/// The kernel names the backing file by its real path; the home folder may be reached through links.
std::filesystem::path realPath(const std::filesystem::path& image)
{
    std::error_code error;
    const std::filesystem::path folder = std::filesystem::canonical(image.parent_path(), error);
    return error ? image : folder / image.filename();
}

} // namespace

std::vector<LoopDevice> loopsOf(const std::filesystem::path& image, Recognise how)
{
    return loopsOf(image, how, "/sys/block");
}

std::vector<LoopDevice> loopsOf(const std::filesystem::path& image, Recognise how,
                                const std::filesystem::path& blockDevices)
{
    std::vector<LoopDevice> found;
    const std::filesystem::path real = realPath(image);
    const std::unique_ptr<DIR, int (*)(DIR*)> folder(::opendir(blockDevices.c_str()), &::closedir);
    if (!folder) {
        requireMeans(errno);
    }
    while (const dirent* entry = folder ? ::readdir(folder.get()) : nullptr) {
        const std::string_view name = entry->d_name;
        if (!name.starts_with("loop")) {
            continue;
        }
        const std::filesystem::path device = blockDevices / name;
        const std::optional<Backing> backing = backingOf(device);
        if (!backing) {
            continue;
        }
        const std::filesystem::path path = backing->path;
        const bool looksAlike = how == Recognise::ByFile || path.filename() == real.filename();
        if (path == real || (!backing->deleted && looksAlike && sameFile(path, real))) {
            const std::string readOnly = readSmallFile(device / "ro").value_or("0");
            found.push_back({.device = "/dev/" + std::string(name),
                             .readOnly = readOnly.starts_with('1'),
                             .backingDeleted = backing->deleted});
        }
    }
    std::sort(found.begin(), found.end(), [](const LoopDevice& one, const LoopDevice& other) {
        return one.device.size() != other.device.size() ? one.device.size() < other.device.size()
                                                        : one.device < other.device;
    });
    return found;
}

} // namespace ferrobank::drive
