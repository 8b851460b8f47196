#include "Platform/linux/updates/install/StagingLock.h"

#include "Platform/linux/updates/UpdateFailure.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <thread>

namespace ferrobank::updates {
namespace {

constexpr std::chrono::milliseconds kBetweenTries{20};

Descriptor openStaging(const InstallPlace& place)
{
    const std::filesystem::path folder = place.staging();
    if (::mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST)
        throw systemFailure(Problem::Place, "There is no place to prepare the update in", errno);
    Descriptor descriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat facts{};
    const bool isOurs = descriptor.isOpen() && ::fstat(descriptor.number(), &facts) == 0 &&
                        facts.st_uid == ::geteuid() && (facts.st_mode & 0777) == 0700;
    if (!isOurs)
        throw UpdateFailure(
            Problem::Place,
            "The folder that updates are prepared in was made by somebody else: " + folder.string() + ".");
    return descriptor;
}

} // namespace

StagingLock::StagingLock(const InstallPlace& place, std::chrono::milliseconds patience, Right right)
{
    const char* const name = right == Right::Work ? "lock" : "trial-lock";
    const Descriptor folder = openStaging(place);
    _file = Descriptor(::openat(folder.number(), name, O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!_file.isOpen())
        throw systemFailure(Problem::Place, "There is no place to prepare the update in", errno);
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (::flock(_file.number(), LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK && errno != EINTR)
            throw systemFailure(Problem::Place, "The update could not be prepared", errno);
        if (std::chrono::steady_clock::now() >= deadline)
            throw UpdateFailure(Problem::Busy, "Another process is updating this copy just now.");
        std::this_thread::sleep_for(kBetweenTries);
    }
}

} // namespace ferrobank::updates
