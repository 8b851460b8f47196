#include "sharing/ReadingPass.h"

#include "figures/ContentHash.h"
#include "figures/DisplayText.h"
#include "figures/Usage.h"
#include "platform/Failure.h"
#include "sharing/Throttle.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace ferrobank::drive {

namespace {

constexpr std::size_t kReadBytes = std::size_t{1} << 20U;
constexpr std::size_t kMostNamed = 100;

class Reader : public TreeVisitor {
public:
    Reader(ReadingResult& result, Throttle& throttle)
        : _result(result), _throttle(throttle), _buffer(kReadBytes)
    {}

    bool enterFolder(const WalkedFolder& folder) override
    {
        _path.push_back(_path.empty() ? std::string() : _path.back() + folder.name + "/");
        return true;
    }

    void leaveFolder() override { _path.pop_back(); }

    void unreadable(const char* name, int error) override
    {
        if (error == EIO) {
            addUnreadable(name);
        }
    }

    void visit(const WalkedEntry& entry) override
    {
        if (!_met.count(entry) || !_throttle.goOn()) {
            return;
        }
        const FileDescriptor file(
            ::openat(entry.folder->descriptor, entry.name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
        if (!file) {
            unreadable(entry.name, errno);
            return;
        }
        ++_result.files;
        // Pages in memory would be read without a look at the device; dirty ones stay.
        ::posix_fadvise(file.get(), 0, 0, POSIX_FADV_DONTNEED);
        const HashOutcome outcome = hashContent(file.get(), entry.status->stx_size, _buffer,
                                                [this](std::uint64_t, std::span<const char> piece) {
                                                    _result.bytes += piece.size();
                                                    return _throttle.goOn();
                                                });
        // What was read for the check alone should not crowd out what people work with.
        ::posix_fadvise(file.get(), 0, 0, POSIX_FADV_DONTNEED);
        if (outcome.error == EIO) {
            addUnreadable(entry.name);
        }
    }

private:
    void addUnreadable(const char* name)
    {
        ++_result.unreadableFiles;
        if (_result.unreadable.size() < kMostNamed) {
            _result.unreadable.push_back(displayName((_path.empty() ? std::string() : _path.back()) + name));
        }
    }

    ReadingResult& _result;
    Throttle& _throttle;
    std::vector<char> _buffer;
    std::vector<std::string> _path;
    UsageSum _met;
};

} // namespace

ReadingResult readAllFiles(const std::filesystem::path& root, double processorShare,
                           const std::stop_token& stop)
{
    const auto start = std::chrono::steady_clock::now();
    ReadingResult result;
    Throttle throttle(processorShare, stop);
    Reader reader(result, throttle);
    try {
        walkTree(root, reader, stop);
    } catch (const Failure& failure) {
        result.error = failure.text();
    }
    result.cancelled = stop.stop_requested();
    result.duration = std::chrono::steady_clock::now() - start;
    return result;
}

} // namespace ferrobank::drive
