#include "sharing/Scanner.h"

#include "figures/DeviceCounters.h"
#include "figures/DisplayText.h"
#include "platform/Failure.h"
#include "sharing/BlockPass.h"
#include "sharing/WholeFilePass.h"

#include <fcntl.h>

#include <cerrno>
#include <chrono>
#include <ctime>
#include <memory>
#include <utility>

namespace ferrobank::drive {

namespace {

constexpr std::size_t kMostUnreadableNamed = 100;

/// Which of several rounds files of a size belong to: all files of one size come together.
std::uint64_t roundOf(std::uint64_t size, std::uint64_t rounds)
{
    return (size * 0x9e3779b97f4a7c15U >> 32U) % rounds;
}

FileDescriptor openRoot(const std::filesystem::path& root)
{
    FileDescriptor folder(::open(root.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder) {
        throw systemFailure("Cannot read " + root.string(), errno);
    }
    return folder;
}

class Pass {
public:
    explicit Pass(const ScanContext& context) : _context(context) { _limits.now = std::time(nullptr); }

    void run()
    {
        _limits.smallestFile = _context.settings.smallestFile;
        _limits.quietSeconds = _context.settings.quietSeconds;
        _limits.mostFiles = _context.settings.mostFiles;
        auto table = collect({});
        if (!table) {
            return;
        }
        _context.result.usage = table->usage();
        _context.result.filesLookedAt = table->wantedFiles();
        const std::uint64_t rounds = table->wantedFiles() / _limits.mostFiles + 1;
        if (shareWholeFiles(table, rounds) == StageEnd::PassOver) {
            return;
        }
        if (rounds > 1) {
            const std::uint64_t smallest = _context.settings.blockFile;
            table = collect([smallest](std::uint64_t size) { return size >= smallest; });
        }
        if (table) {
            BlockPass(_context, *table, _followers).run();
        }
    }

private:
    using Choice = HashIndex::SizeChoice;

    /// Empty when cancelled.
    std::unique_ptr<FileTable> collect(Choice wanted)
    {
        auto table = std::make_unique<FileTable>(_limits, std::move(wanted));
        const WalkEnd end = walkTree(FileDescriptor(::fcntl(_context.root, F_DUPFD_CLOEXEC, 0)), *table,
                                     _context.throttle.stopToken());
        return end == WalkEnd::Cancelled ? nullptr : std::move(table);
    }

    StageEnd shareWholeFiles(std::unique_ptr<FileTable>& table, std::uint64_t rounds)
    {
        const ScanSettings& settings = _context.settings;
        const auto writer = HashIndex::startWriting(settings.indexFolder, _context.uuid);
        StageEnd end = StageEnd::Done;
        for (std::uint64_t round = 0; round < rounds; ++round) {
            const Choice inRound = [=](std::uint64_t size) { return roundOf(size, rounds) == round; };
            const HashIndex known(settings.indexFolder, _context.uuid, rounds > 1 ? inRound : Choice());
            if (rounds > 1 && end == StageEnd::Done) {
                table = collect(inRound);
                end = table ? StageEnd::Done : StageEnd::PassOver;
            }
            if (end == StageEnd::PassOver) {
                known.appendAll(*writer);
                continue;
            }
            std::vector<FileFacts> facts;
            facts.reserve(table->files().size());
            for (const FileRecord& file : table->files()) {
                facts.push_back(known.factsOf(file));
            }
            end = WholeFilePass(_context, *table, facts, _followers).run();
            HashIndex::append(*writer, *table, facts);
        }
        writer->commit();
        return end;
    }

    const ScanContext& _context;
    FileTable::Limits _limits;
    IdentitySet _followers;
};

} // namespace

void SharingResult::addUnreadable(const std::string& path)
{
    if (unreadable.size() < kMostUnreadableNamed) {
        unreadable.push_back(displayName(path));
    }
}

SharingResult shareRepeatedData(const ScanSettings& settings, const std::stop_token& stop)
{
    const auto start = std::chrono::steady_clock::now();
    SharingResult result;
    Throttle throttle(settings.processorShare, stop);
    try {
        const FileDescriptor root = openRoot(settings.root);
        const auto volume = volumeState(root.get());
        const ScanContext context{settings, root.get(), volume ? volume->uuid : std::string(), throttle,
                                  result};
        Pass(context).run();
    } catch (const Failure& failure) {
        result.error = failure.text();
    } catch (const std::filesystem::filesystem_error& failure) {
        result.error = failure.what();
    }
    result.cancelled = stop.stop_requested();
    result.duration = std::chrono::steady_clock::now() - start;
    result.processor = throttle.processorTime();
    return result;
}

} // namespace ferrobank::drive
