#include "helper/StoreOfUser.h"

#include "mounting/DirectBackEnd.h"
#include "mounting/Volume.h"
#include "platform/Failure.h"

#include <fcntl.h>
#include <pwd.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string>

namespace ferrobank::drive {

namespace {

constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

const passwd& entryOf(uid_t user)
{
    const passwd* entry = ::getpwuid(user);
    if (entry == nullptr || entry->pw_dir == nullptr || entry->pw_dir[0] != '/') {
        throw Failure("There is no such user, or it has no home folder.", "no-user");
    }
    return *entry;
}

void requireOwner(const FileDescriptor& file, uid_t user, mode_t kind, const std::string& name)
{
    struct stat status{};
    if (!file || ::fstat(file.get(), &status) != 0) {
        throw systemFailure("Cannot open " + name, errno);
    }
    if (status.st_uid != user || (status.st_mode & S_IFMT) != kind) {
        throw Failure(name + " is not the user's own.", "foreign-owner");
    }
}

} // namespace

Paths pathsOfUser(uid_t user)
{
    const std::filesystem::path home = entryOf(user).pw_dir;
    const std::string text = home.string();
    if (std::any_of(text.begin(), text.end(), [](unsigned char letter) { return letter < ' '; })) {
        throw Failure("The home folder's name cannot stand in fstab.", "no-home");
    }
    return Paths::of(home, {}, {});
}

StoreOfUser StoreOfUser::open(uid_t user)
{
    const Paths paths = pathsOfUser(user);
    return open(user, entryOf(user).pw_gid, paths.home);
}

StoreOfUser StoreOfUser::open(uid_t user, gid_t group, const std::filesystem::path& home)
{
    StoreOfUser store;
    store.paths = Paths::of(home, {}, {});
    store.user = user;
    store.group = group;
    FileDescriptor folder(::open(home.c_str(), kFolderFlags));
    requireOwner(folder, user, S_IFDIR, home.string());
    for (const char* name : {"Library", "Application Support", "Ferrobank", "store"}) {
        folder = FileDescriptor(::openat(folder.get(), name, kFolderFlags));
        requireOwner(folder, user, S_IFDIR, name);
    }
    store.image =
        FileDescriptor(::openat(folder.get(), "drive.btrfs", O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    requireOwner(store.image, user, S_IFREG, "The drive's store");
    store.folder = std::move(folder);
    return store;
}

void prepareStore(const StoreOfUser& store)
{
    const std::vector<LoopDevice> loops = loopsOf(store.paths.image, Recognise::ByFile);
    if (findVolume(loops, readMountTable())) {
        return;
    }
    if (::unshare(CLONE_NEWNS) != 0 || ::mount(nullptr, "/", nullptr, MS_REC | MS_SLAVE, nullptr) != 0) {
        throw systemFailure("Cannot work apart from the system's mounts", errno);
    }
    std::string scratch = "/run/ferrobank-XXXXXX";
    if (::mkdtemp(scratch.data()) == nullptr) {
        throw systemFailure("Cannot make a folder in /run", errno);
    }
    FreshLoop fresh;
    if (loops.empty()) {
        fresh = makeLoop(store.image);
    }
    const std::string device = loops.empty() ? fresh.device : loops.front().device;
    prepareOnLoop(device, scratch, store.user, store.group);
    fresh.keepAlive.reset();
    awaitLoopGone(device);
    ::unlinkat(store.folder.get(), store.paths.unprepared.filename().c_str(), 0);
}

} // namespace ferrobank::drive
