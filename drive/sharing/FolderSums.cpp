#include "sharing/FolderSums.h"

#include "figures/DeviceCounters.h"
#include "platform/Failure.h"
#include "sharing/IndexFile.h"
#include "sharing/SharedRange.h"

#include <fcntl.h>
#include <linux/fiemap.h>
#include <linux/fs.h>
#include <sys/ioctl.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstddef>
#include <ctime>
#include <numeric>
#include <utility>

namespace ferrobank::drive {

namespace {

constexpr const char* kKind = "FBFOLDR1";
constexpr const char* kFileName = "folders.idx";
constexpr std::uint64_t kStatUnit = 512;
constexpr std::uint32_t kExtentsPerCall = 256;
constexpr std::size_t kMostStretches = 2'000'000;
constexpr std::uint64_t kFilesBetweenCalls = 1024;
constexpr std::uint32_t kLongestName = 4096;

std::uint64_t mixed(std::uint64_t value)
{
    value ^= value >> 31U;
    value *= 0x7fb5d329728ea185U;
    value ^= value >> 27U;
    value *= 0x81dadef4bc2dd44dU;
    return value ^ (value >> 33U);
}

class Summer : public TreeVisitor {
public:
    explicit Summer(const std::function<void(std::uint64_t)>& onFiles)
        : _onFiles(onFiles), _request(sizeof(fiemap) + kExtentsPerCall * sizeof(fiemap_extent))
    {}

    bool enterFolder(const WalkedFolder& folder) override
    {
        const std::uint32_t parent = _path.empty() ? 0 : _path.back();
        _path.push_back(static_cast<std::uint32_t>(_folders.size()));
        _folders.push_back({.parent = parent, .name = folder.name});
        _taken.push_back(0);
        return true;
    }

    void leaveFolder() override { _path.pop_back(); }

    void visit(const WalkedEntry& entry) override
    {
        if (!_counted.count(entry)) {
            return;
        }
        if (++_files % kFilesBetweenCalls == 0 && _onFiles) {
            _onFiles(_files);
        }
        const std::uint64_t allocated = entry.status->stx_blocks * kStatUnit;
        _folders[_path.back()].holds += allocated;
        const std::uint64_t size = entry.status->stx_size;
        if (size <= kLargestInline) {
            // It lies among the names, without a block.
            _taken[_path.back()] += static_cast<double>(std::min(size, allocated));
        } else if (!addPlaces(entry)) {
            _taken[_path.back()] += static_cast<double>(allocated);
        }
    }

    [[nodiscard]] std::vector<FolderFigures> finish()
    {
        std::vector<double> drawn(_folders.size());
        addByParts(std::move(_stretches), drawn);
        for (std::size_t folder = _folders.size(); folder-- > 0;) {
            const double taken = _taken[folder] + drawn[folder] * static_cast<double>(_oneOf);
            _folders[folder].takes += static_cast<std::uint64_t>(std::llround(taken));
            if (folder != 0) {
                _folders[_folders[folder].parent].holds += _folders[folder].holds;
                _folders[_folders[folder].parent].takes += _folders[folder].takes;
            }
        }
        return std::move(_folders);
    }

private:
    /// False when the file cannot be asked.
    bool addPlaces(const WalkedEntry& entry)
    {
        const int folder = entry.folder->descriptor;
        constexpr int kFlags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
        FileDescriptor file(::openat(folder, entry.name, kFlags | O_NOATIME));
        if (!file && errno == EPERM) {
            file.reset(::openat(folder, entry.name, kFlags)); // another owner's file
        }
        auto* request = reinterpret_cast<fiemap*>(_request.data());
        for (std::uint64_t from = 0; file;) {
            std::fill_n(_request.begin(), sizeof(fiemap), std::byte{0});
            request->fm_start = from;
            request->fm_length = FIEMAP_MAX_OFFSET - from;
            request->fm_extent_count = kExtentsPerCall;
            if (::ioctl(file.get(), FS_IOC_FIEMAP, request) != 0) {
                return from != 0;
            }
            for (std::uint32_t index = 0; index < request->fm_mapped_extents; ++index) {
                const fiemap_extent& extent = request->fm_extents[index];
                add(extent);
                from = extent.fe_logical + extent.fe_length;
                if ((extent.fe_flags & FIEMAP_EXTENT_LAST) != 0) {
                    return true;
                }
            }
            if (request->fm_mapped_extents == 0) {
                return true;
            }
        }
        return false;
    }

    void add(const fiemap_extent& extent)
    {
        constexpr std::uint32_t kWithoutPlace =
            FIEMAP_EXTENT_UNKNOWN | FIEMAP_EXTENT_DELALLOC | FIEMAP_EXTENT_DATA_INLINE;
        if ((extent.fe_flags & kWithoutPlace) != 0) {
            _taken[_path.back()] += static_cast<double>(extent.fe_length);
            return;
        }
        if (mixed(extent.fe_physical) % _oneOf != 0) {
            return;
        }
        if (_stretches.size() == kMostStretches) {
            _oneOf *= 2;
            std::erase_if(_stretches,
                          [this](const UsedStretch& stretch) { return mixed(stretch.start) % _oneOf != 0; });
        }
        _stretches.push_back({.start = extent.fe_physical,
                              .length = extent.fe_length,
                              .folder = _path.back(),
                              .compressed = (extent.fe_flags & FIEMAP_EXTENT_ENCODED) != 0});
    }

    const std::function<void(std::uint64_t)>& _onFiles;
    std::vector<std::byte> _request;
    std::vector<FolderFigures> _folders;
    /// What is known without the places.
    std::vector<double> _taken;
    std::vector<std::uint32_t> _path;
    std::vector<UsedStretch> _stretches;
    std::uint64_t _oneOf = 1;
    std::uint64_t _files = 0;
    UsageSum _counted;
};

struct Record {
    std::uint64_t holds = 0;
    std::uint64_t takes = 0;
    std::uint32_t parent = 0;
    std::uint32_t nameBytes = 0;
};

} // namespace

void addByParts(std::vector<UsedStretch> stretches, std::vector<double>& bytes)
{
    std::sort(stretches.begin(), stretches.end(),
              [](const UsedStretch& one, const UsedStretch& other) { return one.start < other.start; });
    std::uint64_t next = ~std::uint64_t{0};
    for (std::size_t index = stretches.size(); index-- > 0;) {
        UsedStretch& stretch = stretches[index];
        if (stretch.compressed) {
            stretch.length = std::min(stretch.length, next - stretch.start);
        }
        if (index > 0 && stretches[index - 1].start != stretch.start) {
            next = stretch.start;
        }
    }
    const auto endOf = [&stretches](std::uint32_t index) {
        return stretches[index].start + stretches[index].length;
    };
    std::vector<std::uint32_t> byEnd(stretches.size());
    std::iota(byEnd.begin(), byEnd.end(), 0U);
    std::sort(byEnd.begin(), byEnd.end(),
              [&](std::uint32_t one, std::uint32_t other) { return endOf(one) < endOf(other); });
    // One sum runs along the device; what a stretch takes is by how much it grows from its start to its end.
    std::vector<double> atStart(stretches.size());
    double sum = 0;
    std::uint64_t place = 0;
    std::uint64_t sharers = 0;
    const auto moveTo = [&](std::uint64_t there) {
        if (sharers > 0) {
            sum += static_cast<double>(there - place) / static_cast<double>(sharers);
        }
        place = there;
    };
    std::size_t started = 0;
    for (const std::uint32_t ending : byEnd) {
        const std::uint64_t end = endOf(ending);
        while (started < stretches.size() && stretches[started].start < end) {
            moveTo(stretches[started].start);
            sharers += stretches[started].length > 0 ? 1U : 0U;
            atStart[started++] = sum;
        }
        // Empty ones neither start nor end.
        if (stretches[ending].length > 0) {
            moveTo(end);
            --sharers;
            bytes[stretches[ending].folder] += sum - atStart[ending];
        }
    }
}

std::optional<FolderSums> sumUpFolders(const std::filesystem::path& root,
                                       const std::function<void(std::uint64_t)>& onFiles,
                                       const std::stop_token& stop)
{
    FileDescriptor folder(::open(root.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder) {
        throw systemFailure("Cannot read " + root.string(), errno);
    }
    const std::optional<VolumeState> volume = volumeState(folder.get());
    Summer summer(onFiles);
    if (walkTree(std::move(folder), summer, stop) == WalkEnd::Cancelled) {
        return std::nullopt;
    }
    return FolderSums{.folders = summer.finish(),
                      .generation = volume ? volume->generation : 0,
                      .time = std::time(nullptr)};
}

std::optional<std::uint32_t> FolderSums::find(const std::filesystem::path& path) const
{
    if (folders.empty()) {
        return std::nullopt;
    }
    std::uint32_t at = 0;
    for (const std::filesystem::path& part : path) {
        if (part.empty() || part == ".") {
            continue;
        }
        const auto found =
            std::find_if(folders.begin() + at + 1, folders.end(), [&](const FolderFigures& folder) {
                return folder.parent == at && folder.name == part.native();
            });
        if (found == folders.end()) {
            return std::nullopt;
        }
        at = static_cast<std::uint32_t>(found - folders.begin());
    }
    return at;
}

std::vector<std::uint32_t> FolderSums::childrenOf(std::uint32_t folder) const
{
    std::vector<std::uint32_t> found;
    for (std::uint32_t child = folder + 1; child < folders.size(); ++child) {
        if (folders[child].parent == folder) {
            found.push_back(child);
        }
    }
    return found;
}

std::optional<FolderSums> FolderSums::load(const std::filesystem::path& folder, const std::string& uuid)
{
    auto reader = IndexReader::open(folder / kFileName, kKind, uuid);
    FolderSums sums;
    if (!reader || !reader->read(&sums.generation, sizeof sums.generation) ||
        !reader->read(&sums.time, sizeof sums.time))
    {
        return std::nullopt;
    }
    for (Record record; reader->read(&record, sizeof record);) {
        FolderFigures figures{
            .parent = record.parent, .name = {}, .holds = record.holds, .takes = record.takes};
        if (record.nameBytes > kLongestName) {
            return std::nullopt;
        }
        figures.name.resize(record.nameBytes);
        if (!reader->read(figures.name.data(), record.nameBytes)) {
            return std::nullopt;
        }
        sums.folders.push_back(std::move(figures));
    }
    return sums.folders.empty() ? std::nullopt : std::optional(std::move(sums));
}

void FolderSums::keep(const std::filesystem::path& folder, const std::string& uuid) const
{
    IndexWriter writer(folder / kFileName, kKind, uuid);
    writer.append(&generation, sizeof generation);
    writer.append(&time, sizeof time);
    for (const FolderFigures& figures : folders) {
        const Record record{.holds = figures.holds,
                            .takes = figures.takes,
                            .parent = figures.parent,
                            .nameBytes = static_cast<std::uint32_t>(figures.name.size())};
        writer.append(&record, sizeof record);
        writer.append(figures.name.data(), figures.name.size());
    }
    writer.commit();
}

} // namespace ferrobank::drive
