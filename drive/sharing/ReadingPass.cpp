#include "sharing/ReadingPass.h"

#include "figures/ContentHash.h"
#include "figures/DeviceCounters.h"
#include "figures/Usage.h"
#include "platform/Failure.h"
#include "platform/Files.h"
#include "sharing/IndexFile.h"
#include "sharing/Throttle.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace ferrobank::drive {

namespace {

constexpr std::size_t kReadBytes = std::size_t{1} << 20U;
constexpr std::size_t kMostNamed = 10'000;
constexpr const char* kKind = "FBREAD_1";
constexpr const char* kFileName = "read.idx";

/// Damage is told by these; ENOSPC, EACCES and the like are not.
bool isDamage(int error)
{
    return error == EIO || error == EUCLEAN;
}

/// Reads from the device: what is in memory already would be read without a look at it; dirty pages stay.
HashOutcome readThrough(int file, std::uint64_t size, std::span<char> buffer, const PieceReceiver& receive)
{
    ::posix_fadvise(file, 0, 0, POSIX_FADV_DONTNEED);
    const HashOutcome outcome = hashContent(file, size, buffer, receive);
    // What was read for the check alone should not crowd out what people work with.
    ::posix_fadvise(file, 0, 0, POSIX_FADV_DONTNEED);
    return outcome;
}

/// The files that a pass which was ended early has read already.
class Memory {
public:
    Memory(std::filesystem::path folder, std::string uuid)
        : _file(folder.empty() ? folder : folder / kFileName), _uuid(std::move(uuid))
    {
        auto reader = _file.empty() ? std::nullopt : IndexReader::open(_file, kKind, _uuid);
        std::uint64_t identity = 0;
        while (reader && reader->read(&identity, sizeof identity)) {
            if (identity != 0 && _known.add(identity)) {
                _all.push_back(identity);
            }
        }
    }

    [[nodiscard]] bool knows(std::uint64_t identity) const { return _known.contains(identity); }

    void add(std::uint64_t identity)
    {
        if (!_file.empty() && _known.add(identity)) {
            _all.push_back(identity);
        }
    }

    void keep() const
    {
        if (!_file.empty()) {
            IndexWriter writer(_file, kKind, _uuid);
            writer.append(_all.data(), _all.size() * sizeof(std::uint64_t));
            writer.commit();
        }
    }

    void forget() const
    {
        if (!_file.empty()) {
            ::unlink(_file.c_str());
        }
    }

private:
    std::filesystem::path _file;
    std::string _uuid;
    IdentitySet _known;
    std::vector<std::uint64_t> _all;
};

class Reader : public TreeVisitor {
public:
    Reader(const ReadingSettings& settings, ReadingResult& result, Throttle& throttle, Memory& memory)
        : _settings(settings), _result(result), _throttle(throttle), _memory(memory), _buffer(kReadBytes)
    {}

    bool enterFolder(const WalkedFolder& folder) override
    {
        _path.push_back(_path.empty() ? std::string() : _path.back() + folder.name + "/");
        return true;
    }

    void leaveFolder() override { _path.pop_back(); }

    void unreadable(const char* name, int error) override
    {
        if (isDamage(error)) {
            addUnreadable(name);
        }
    }

    void visit(const WalkedEntry& entry) override
    {
        if (!_met.count(entry) || !_throttle.goOn()) {
            return;
        }
        const std::uint64_t identity = fileIdentity(entry.folder->volume, entry.status->stx_ino);
        const std::uint64_t before = _done;
        if (!_memory.knows(identity)) {
            read(entry, identity);
        }
        advance(before + entry.status->stx_blocks * 512 - _done);
    }

private:
    void read(const WalkedEntry& entry, std::uint64_t identity)
    {
        const FileDescriptor file(
            ::openat(entry.folder->descriptor, entry.name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
        if (!file) {
            unreadable(entry.name, errno);
            return;
        }
        ++_result.files;
        const HashOutcome outcome = readThrough(file.get(), entry.status->stx_size, _buffer,
                                                [this](std::uint64_t, std::span<const char> piece) {
                                                    _result.bytes += piece.size();
                                                    advance(piece.size());
                                                    return _throttle.goOn();
                                                });
        if (isDamage(outcome.error)) {
            addUnreadable(entry.name);
        } else if (!_throttle.stopped()) {
            _memory.add(identity);
        }
    }

    /// Unsigned, so that what a file took less than it looked like is taken back.
    void advance(std::uint64_t bytes)
    {
        _done += bytes;
        if (_settings.onProgress) {
            _settings.onProgress(_done);
        }
    }

    void addUnreadable(const char* name)
    {
        ++_result.unreadableFiles;
        if (_result.unreadable.size() < kMostNamed) {
            _result.unreadable.push_back((_path.empty() ? std::string() : _path.back()) + name);
        }
    }

    const ReadingSettings& _settings;
    ReadingResult& _result;
    Throttle& _throttle;
    Memory& _memory;
    std::vector<char> _buffer;
    std::vector<std::string> _path;
    UsageSum _met;
    std::uint64_t _done = 0;
};

std::string uuidOf(const std::filesystem::path& root)
{
    const FileDescriptor folder(::open(root.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const std::optional<VolumeState> volume = folder ? volumeState(folder.get()) : std::nullopt;
    return volume ? volume->uuid : std::string();
}

} // namespace

ReadingResult readAllFiles(const ReadingSettings& settings, const std::stop_token& stop)
{
    const auto start = std::chrono::steady_clock::now();
    ReadingResult result;
    Throttle throttle(settings.processorShare, stop);
    try {
        Memory memory(settings.memory, uuidOf(settings.root));
        Reader reader(settings, result, throttle, memory);
        walkTree(settings.root, reader, stop);
        if (stop.stop_requested()) {
            memory.keep();
        } else {
            memory.forget();
        }
    } catch (const Failure& failure) {
        result.error = failure.text();
    } catch (const std::filesystem::filesystem_error& failure) {
        result.error = failure.what();
    }
    result.cancelled = stop.stop_requested();
    result.duration = std::chrono::steady_clock::now() - start;
    return result;
}

bool isReadable(const std::filesystem::path& root, const std::string& file)
{
    const FileDescriptor opened(
        ::open((root / file).c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (!opened) {
        // A path that is too long for one call tells nothing; a complete reading walks to it.
        return !isDamage(errno) && errno != ENAMETOOLONG;
    }
    struct stat status{};
    if (::fstat(opened.get(), &status) != 0) {
        return !isDamage(errno);
    }
    if (!S_ISREG(status.st_mode)) {
        return true;
    }
    std::vector<char> buffer(kReadBytes);
    const HashOutcome outcome = readThrough(opened.get(), static_cast<std::uint64_t>(status.st_size), buffer,
                                            [](std::uint64_t, std::span<const char>) { return true; });
    return !isDamage(outcome.error);
}

void writeUnreadableList(const std::filesystem::path& list, const std::vector<std::string>& files)
{
    std::string text;
    for (const std::string& file : files) {
        text += file;
        text += '\0';
    }
    replaceFile(list, text, Durability::Synced);
}

std::vector<std::string> readUnreadableList(const std::filesystem::path& list)
{
    constexpr std::size_t kLongestList = std::size_t{64} << 20U;
    std::vector<std::string> files;
    const std::string text = readSmallFile(list, kLongestList).value_or(std::string());
    for (std::size_t position = 0; position < text.size();) {
        const std::size_t end = std::min(text.find('\0', position), text.size());
        files.push_back(text.substr(position, end - position));
        position = end + 1;
    }
    return files;
}

} // namespace ferrobank::drive
