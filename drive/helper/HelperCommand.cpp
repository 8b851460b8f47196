#include "helper/HelperCommand.h"

#include "helper/Approvals.h"
#include "helper/FstabFile.h"
#include "helper/PatientLock.h"
#include "helper/RootsFolders.h"
#include "helper/UserDrive.h"
#include "mounting/OldFstabLines.h"
#include "platform/Failure.h"

#include <fcntl.h>
#include <grp.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <vector>

namespace ferrobank::drive {

namespace {

using Words = std::vector<std::string>;

/// Whoever called chose the limits, signals, folder and descriptors that this process begins with.
void forgetCallersSettings()
{
    for (const auto limit : {RLIMIT_FSIZE, RLIMIT_CPU, RLIMIT_AS, RLIMIT_DATA, RLIMIT_STACK}) {
        const rlimit none{.rlim_cur = RLIM_INFINITY, .rlim_max = RLIM_INFINITY};
        rlimit given{};
        // Root in a container may not go beyond what it was given.
        if (::setrlimit(limit, &none) != 0 && ::getrlimit(limit, &given) == 0) {
            given.rlim_cur = given.rlim_max;
            ::setrlimit(limit, &given);
        }
    }
    const rlimit noDump{.rlim_cur = 0, .rlim_max = 0};
    ::setrlimit(RLIMIT_CORE, &noDump);
    // A key on the caller's terminal must not end this half-way.
    sigset_t all;
    sigfillset(&all);
    ::sigprocmask(SIG_SETMASK, &all, nullptr);
    ::umask(S_IWGRP | S_IWOTH);
    ::setgroups(0, nullptr);
    for (int standard = STDIN_FILENO; standard <= STDERR_FILENO; ++standard) {
        if (::fcntl(standard, F_GETFD) < 0) {
            static_cast<void>(::open("/dev/null", O_RDWR));
        }
    }
    if (::chdir("/") != 0) {
        throw systemFailure("Cannot leave the current folder", errno);
    }
}

void requireOwnPlace()
{
    char path[PATH_MAX];
    const ssize_t length = ::readlink("/proc/self/exe", path, sizeof path);
    const std::string own = length > 0 ? std::string(path, static_cast<std::size_t>(length)) : std::string();
    struct stat running{};
    struct stat there{};
    if (!own.starts_with('/') || !isOnlyRootsToWrite(std::filesystem::path(own)) ||
        ::stat("/proc/self/exe", &running) != 0 || ::lstat(own.c_str(), &there) != 0 ||
        running.st_dev != there.st_dev || running.st_ino != there.st_ino)
    {
        throw Failure("Ferrobank is not installed where only the administrator can change it.", "misused");
    }
}

/// Turns every line whose user is known for sure into an approval, and removes all lines of ours: they let
/// every program of their users mount over any folder.
void retireLines(const Places& places)
{
    const FstabFile fstab(places);
    const Approvals approvals(places);
    const std::vector<OldFstabLine> lines = oldFstabLines(fstab.read());
    for (const OldFstabLine& line : lines) {
        try {
            const User user = User::numbered(line.user.value_or(0));
            if (line.image == Paths::of(user.home, {}, {}).image) {
                approvals.add(user);
            }
        } catch (const Failure&) {
            // Of a user who is no longer there.
            continue;
        }
    }
    if (!lines.empty()) {
        fstab.edit([](const std::string& text) {
            return withoutOldFstabLines(text, [](const OldFstabLine&) { return true; });
        });
    }
}

void forget(const Places& places, const User& user)
{
    Approvals(places).remove(user.number);
    const std::filesystem::path image = Paths::of(user.home, {}, {}).image;
    FstabFile(places).edit([&](const std::string& text) {
        return withoutOldFstabLines(
            text, [&](const OldFstabLine& line) { return line.user == user.number || line.image == image; });
    });
}

void removeAll(const Places& places)
{
    FstabFile(places).edit([](const std::string& text) {
        return withoutOldFstabLines(text, [](const OldFstabLine&) { return true; });
    });
    Approvals(places).removeAll();
}

void runDriveWish(const Places& places, const std::string& wish)
{
    const User user = User::calling();
    const FileLock lock = takePatiently(places.lockOf(user.number));
    if (wish == "forget") {
        forget(places, user);
        return;
    }
    const UserDrive drive(places, user);
    if (wish == "unmount") {
        drive.unmount();
        return;
    }
    retireLines(places);
    if (!Approvals(places).has(user)) {
        throw Failure("An administrator has to allow this first.", "not-allowed");
    }
    if (wish == "mount") {
        drive.mount(UserDrive::Access::ReadWrite);
    } else if (wish == "mount-read-only") {
        drive.mount(UserDrive::Access::ReadOnly);
    } else {
        drive.prepare();
    }
}

void allow(const Places& places, const User& user)
{
    const FileLock lock = takePatiently(places.lockOf(user.number));
    retireLines(places);
    Approvals(places).add(user);
}

bool isOneOf(const std::string& word, std::initializer_list<const char*> all)
{
    return std::find(all.begin(), all.end(), word) != all.end();
}

/// False when the words make no sense.
bool run(const Places& places, const Words& words)
{
    const bool throughPkexec = std::getenv("PKEXEC_UID") != nullptr;
    if (throughPkexec && words == Words{"allow"}) {
        allow(places, User::calling());
    } else if (throughPkexec && words.size() == 2 && words[0] == "drive" &&
               isOneOf(words[1], {"mount", "mount-read-only", "prepare", "unmount", "forget"}))
    {
        runDriveWish(places, words[1]);
    } else if (!throughPkexec && words.size() == 2 && words[0] == "allow") {
        allow(places, User::named(words[1]));
    } else if (!throughPkexec && words == Words{"retire-lines"}) {
        retireLines(places);
    } else if (!throughPkexec && words == Words{"remove-all"}) {
        removeAll(places);
    } else {
        return false;
    }
    return true;
}

int exitOf(const std::string& code)
{
    if (code == "misused" || code == "not-pkexec" || code == "no-user") {
        return HelperMisused;
    }
    if (code == "busy") {
        return HelperBusy;
    }
    if (code == "not-allowed") {
        return HelperNotAllowed;
    }
    if (code == "device-busy") {
        return HelperDeviceBusy;
    }
    return code == "no-btrfs" ? HelperNoBtrfs : HelperRefused;
}

} // namespace

int runMountHelper(int argumentCount, const char* const* arguments)
{
    try {
        if (::geteuid() != 0) {
            throw Failure("This program needs administrator rights: start it with pkexec and its full path.",
                          "misused");
        }
        requireOwnPlace();
        forgetCallersSettings();
        const Places places;
        static_cast<void>(openRootsFolder(places.mounts));
        if (!run(places, Words(arguments + std::min(argumentCount, 1), arguments + argumentCount))) {
            throw Failure("This program is started by the ferrobank command.", "misused");
        }
        return HelperDone;
    } catch (const Failure& failure) {
        std::fprintf(stderr, "%s\n", failure.what());
        return exitOf(failure.code());
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s\n", failure.what());
        return HelperRefused;
    }
}

} // namespace ferrobank::drive
