#include "Platform/linux/login/FolderLock.h"

#include "Platform/linux/login/RegistryFailure.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <system_error>
#include <thread>

namespace ferrobank {

namespace {

using namespace std::chrono_literals;

constexpr auto kLimit = 10s;
constexpr auto kPollInterval = 10ms;

} // namespace

FolderLock::FolderLock(const std::filesystem::path& folder)
{
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error) {
        throw cannotWrite(folder, error.message());
    }
    _folder = Descriptor(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!_folder.isOpen()) {
        throw cannotWrite(folder, std::strerror(errno));
    }
    const auto deadline = std::chrono::steady_clock::now() + kLimit;
    while (flock(_folder.number(), LOCK_EX | LOCK_NB) != 0) {
        if (errno != EINTR && (errno != EWOULDBLOCK || std::chrono::steady_clock::now() >= deadline)) {
            throw RegistryError("Another program is changing your login items. Try again later.");
        }
        std::this_thread::sleep_for(kPollInterval);
    }
}

} // namespace ferrobank
