#include "serving/DescriptorStore.h"

#include <fcntl.h>
#include <systemd/sd-daemon.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <cstring>

namespace ferrobank::drive {

namespace {

constexpr const char* kName = "guard";
constexpr std::chrono::microseconds kBarrierLimit = std::chrono::seconds(5);

} // namespace

void keepGuardOverCrash(int descriptor)
{
    // The one before, or the manager would keep that and refuse this.
    forgetKeptGuard();
    ::sd_pid_notify_with_fds(0, 0, "FDSTORE=1\nFDNAME=guard", &descriptor, 1);
}

void forgetKeptGuard()
{
    if (::sd_notify(0, "FDSTOREREMOVE=1\nFDNAME=guard") > 0) {
        ::sd_notify_barrier(0, static_cast<std::uint64_t>(kBarrierLimit.count()));
    }
}

FileDescriptor takeKeptGuard()
{
    char** names = nullptr;
    const int count = ::sd_listen_fds_with_names(1, &names);
    FileDescriptor guard;
    for (int index = 0; index < count; ++index) {
        FileDescriptor kept(SD_LISTEN_FDS_START + index);
        if (std::strcmp(names[index], kName) == 0) {
            guard = std::move(kept);
        }
        std::free(names[index]);
    }
    std::free(static_cast<void*>(names));
    return guard;
}

} // namespace ferrobank::drive
