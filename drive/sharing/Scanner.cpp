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
#include <vector>

namespace ferrobank::drive {

namespace {

constexpr std::size_t kMostUnreadableNamed = 100;

/// A share of all files by their size, so that files of one size come together: number `number` of `of`.
struct Round {
    std::uint64_t of = 1;
    std::uint64_t number = 0;

    [[nodiscard]] bool takes(std::uint64_t size) const
    {
        return (size * 0x9e3779b97f4a7c15U >> 32U) % of == number;
    }
};

/// More rounds do not help: so many files of one size are left for a larger table.
constexpr std::uint64_t kMostRounds = 4096;

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
        _context.result.filesAtWork = table->filesAtWork();
        _context.total = table->wantedBytes();
        const bool allAtOnce = !table->overflowed();
        if (shareWholeFiles(table) == StageEnd::PassOver) {
            return;
        }
        if (!allAtOnce) {
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

    /// Takes the files of the table or, if there are more than fit, all files in as many rounds as it takes.
    StageEnd shareWholeFiles(std::unique_ptr<FileTable>& table)
    {
        const auto writer = HashIndex::startWriting(_context.settings.indexFolder, _context.uuid);
        StageEnd end = StageEnd::Done;
        std::vector<Round> rounds(1);
        while (!rounds.empty()) {
            const Round round = rounds.back();
            rounds.pop_back();
            const Choice inRound = [round](std::uint64_t size) { return round.takes(size); };
            if (round.of > 1 && end == StageEnd::Done) {
                table = collect(inRound);
                end = table ? StageEnd::Done : StageEnd::PassOver;
            }
            if (end == StageEnd::Done && table->overflowed() && round.of < kMostRounds) {
                rounds.push_back({round.of * 2, round.number});
                rounds.push_back({round.of * 2, round.number + round.of});
                continue;
            }
            end = takeRound(inRound, end == StageEnd::Done ? table.get() : nullptr, *writer);
        }
        writer->commit();
        return end;
    }

    /// Without a table the pass is over, and only what is known of the round is kept.
    StageEnd takeRound(const Choice& inRound, const FileTable* table, IndexWriter& writer)
    {
        const HashIndex known(_context.settings.indexFolder, _context.uuid, inRound);
        if (table == nullptr) {
            known.appendAll(writer);
            return StageEnd::PassOver;
        }
        std::vector<FileFacts> facts;
        facts.reserve(table->files().size());
        for (const FileRecord& file : table->files()) {
            facts.push_back(known.factsOf(file));
        }
        const StageEnd end = WholeFilePass(_context, *table, facts, _followers).run();
        HashIndex::append(writer, *table, facts);
        return end;
    }

    const ScanContext& _context;
    FileTable::Limits _limits;
    Followers _followers;
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
        std::uint64_t done = 0;
        std::uint64_t total = 0;
        const ScanContext context{
            settings, root.get(), volume ? volume->uuid : std::string(), throttle, result, done, total};
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
