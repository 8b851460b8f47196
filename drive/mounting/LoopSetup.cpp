#include "mounting/LoopSetup.h"

#include "platform/Files.h"

#include <fcntl.h>
#include <linux/loop.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <sstream>
#include <thread>

namespace ferrobank::drive {

namespace {

constexpr int kLoopAttempts = 16;
constexpr std::uint32_t kSectorBytes = 4096;
constexpr std::chrono::seconds kReleaseLimit{5};
constexpr std::chrono::milliseconds kReleaseStep{10};

/// False when the kernel refuses direct I/O on this host file system and the caller should do without.
bool configure(int loop, int image, std::uint32_t extraFlags)
{
    loop_config settings{};
    settings.fd = static_cast<std::uint32_t>(image);
    settings.block_size = kSectorBytes;
    settings.info.lo_flags = LO_FLAGS_AUTOCLEAR | extraFlags;
    return ::ioctl(loop, LOOP_CONFIGURE, &settings) == 0;
}

} // namespace

bool hasBackingFile(const std::string& device)
{
    const std::filesystem::path backing =
        "/sys/block" / std::filesystem::path(device).filename() / "loop/backing_file";
    return ::access(backing.c_str(), F_OK) == 0;
}

Failure mountFailure(int error, const std::string& device)
{
    if (error == ENODEV || !kernelHasBtrfs()) {
        return Failure("This system's kernel has no Btrfs support.", "no-btrfs");
    }
    const Failure failure = systemFailure("The drive could not be mounted", error);
    // The loop device of a killed process is neither free nor usable for a moment, or has let go of its file
    // by now.
    const bool passing = error == EBUSY || error == ENXIO || !hasBackingFile(device);
    return Failure(failure.text(), passing ? "device-busy" : failure.code());
}

bool kernelHasBtrfs(const std::filesystem::path& list)
{
    std::istringstream text(readSmallFile(list).value_or(std::string()));
    for (std::string word; text >> word;) {
        if (word == "btrfs") {
            return true;
        }
    }
    return false;
}

FreshLoop makeLoop(const std::filesystem::path& image)
{
    const FileDescriptor file(::open(image.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW));
    if (!file) {
        throw systemFailure("The drive's store could not be opened", errno);
    }
    return makeLoop(file);
}

FreshLoop makeLoop(const FileDescriptor& file)
{
    const FileDescriptor control(::open("/dev/loop-control", O_RDWR | O_CLOEXEC));
    if (!control) {
        throw Failure("This system has no loop devices, which the drive needs.", "no-loop");
    }
    int error = 0;
    for (int attempt = 0; attempt < kLoopAttempts; ++attempt) {
        const int number = ::ioctl(control.get(), LOOP_CTL_GET_FREE);
        FreshLoop loop{.device = "/dev/loop" + std::to_string(number), .keepAlive = FileDescriptor()};
        loop.keepAlive.reset(number < 0 ? -1 : ::open(loop.device.c_str(), O_RDWR | O_CLOEXEC));
        if (!loop.keepAlive) {
            throw systemFailure("This system gives out no loop device", errno);
        }
        if (configure(loop.keepAlive.get(), file.get(), LO_FLAGS_DIRECT_IO)) {
            return loop;
        }
        error = errno;
        if (error == EINVAL && configure(loop.keepAlive.get(), file.get(), 0)) {
            return loop;
        }
        // Somebody else took the free device first: ask for the next one.
        if (errno != EBUSY) {
            break;
        }
    }
    throw systemFailure("The drive's store could not be attached", error);
}

bool awaitLoopGone(const std::string& device)
{
    const auto limit = std::chrono::steady_clock::now() + kReleaseLimit;
    while (hasBackingFile(device)) {
        if (std::chrono::steady_clock::now() > limit) {
            return false;
        }
        std::this_thread::sleep_for(kReleaseStep);
    }
    return true;
}

} // namespace ferrobank::drive
