#include "helper/PatientLock.h"

#include "platform/Failure.h"

#include <chrono>
#include <thread>

namespace ferrobank::drive {

namespace {

constexpr std::chrono::seconds kLimit{20};
constexpr std::chrono::milliseconds kStep{20};

} // namespace

FileLock takePatiently(const std::filesystem::path& path)
{
    const auto limit = std::chrono::steady_clock::now() + kLimit;
    for (;;) {
        if (std::optional<FileLock> lock = FileLock::tryTake(path)) {
            return std::move(*lock);
        }
        if (std::chrono::steady_clock::now() >= limit) {
            throw Failure("Another run of the mount helper does not end.", "helper-busy");
        }
        std::this_thread::sleep_for(kStep);
    }
}

} // namespace ferrobank::drive
