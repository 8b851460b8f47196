#include "serving/Locks.h"

#include "platform/Failure.h"
#include "platform/Files.h"
#include "state/ServerProbe.h"
#include "store/StoreExamination.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <thread>
#include <utility>

namespace ferrobank::drive {

namespace {

constexpr std::chrono::seconds kDyingLimit{30};
constexpr std::chrono::milliseconds kDyingStep{20};

void writeLockText(int file, const std::string& text)
{
    if (::ftruncate(file, 0) != 0 ||
        ::pwrite(file, text.data(), text.size(), 0) != static_cast<ssize_t>(text.size()))
    {
        throw systemFailure("Cannot write the store's lock", errno);
    }
}

void announce(const FileLock& store, const Paths& paths)
{
    writeLockText(store.descriptor(), LockText::of(::getpid(), paths.runtime).toText());
}

} // namespace

std::string Inheritance::toText() const
{
    return std::to_string(serveLock) + "," + std::to_string(storeLock) + "," + std::to_string(reply) + "," +
           std::to_string(guard);
}

std::optional<Inheritance> Inheritance::fromText(const std::string& text)
{
    Inheritance found;
    char rest = 0;
    if (std::sscanf(text.c_str(), "%d,%d,%d,%d%c", &found.serveLock, &found.storeLock, &found.reply,
                    &found.guard, &rest) != 4)
    {
        return std::nullopt;
    }
    return found;
}

FileDescriptor Inheritance::takeReply() const
{
    struct stat status{};
    if (reply < 0 || ::fstat(reply, &status) != 0 || !S_ISSOCK(status.st_mode)) {
        return {};
    }
    ::fcntl(reply, F_SETFD, FD_CLOEXEC);
    return FileDescriptor(reply);
}

FileDescriptor Inheritance::takeGuard() const
{
    struct stat status{};
    if (guard < 0 || ::fstat(guard, &status) != 0 || !S_ISREG(status.st_mode) || status.st_nlink != 0) {
        return {};
    }
    ::fcntl(guard, F_SETFD, FD_CLOEXEC);
    return FileDescriptor(guard);
}

std::optional<Locks> Locks::tryTake(const Paths& paths)
{
    if (isReadOnlyHost(paths.store)) {
        throw Failure(readOnlyHostWords(), "host-read-only");
    }
    ensurePrivateFolder(paths.runtime);
    std::optional<FileLock> serve = FileLock::tryTake(paths.serveLock());
    if (!serve) {
        return std::nullopt;
    }
    ensurePrivateFolder(paths.store);
    std::optional<FileLock> store = FileLock::tryTake(paths.storeLock);
    if (!store) {
        return std::nullopt;
    }
    announce(*store, paths);
    return Locks{.serve = std::move(*serve), .store = std::move(*store)};
}

std::optional<Locks> Locks::take(const Paths& paths)
{
    const auto limit = std::chrono::steady_clock::now() + kDyingLimit;
    for (;;) {
        if (std::optional<Locks> locks = tryTake(paths)) {
            return locks;
        }
        const std::optional<LockText> holder =
            LockText::fromText(readSmallFile(paths.storeLock).value_or(std::string()));
        if (!holder || holder->isAlive() || std::chrono::steady_clock::now() >= limit) {
            return std::nullopt;
        }
        std::this_thread::sleep_for(kDyingStep);
    }
}

std::optional<Locks> Locks::inherit(const Inheritance& inheritance, const Paths& paths)
{
    std::optional<FileLock> store = FileLock::inherit(inheritance.storeLock, paths.storeLock);
    if (!store) {
        return std::nullopt;
    }
    std::optional<FileLock> serve = FileLock::inherit(inheritance.serveLock, paths.serveLock());
    if (!serve) {
        const FileDescriptor clearedAway(inheritance.serveLock);
        ensurePrivateFolder(paths.runtime);
        serve = FileLock::tryTake(paths.serveLock());
    }
    if (!serve) {
        return std::nullopt;
    }
    announce(*store, paths);
    return Locks{.serve = std::move(*serve), .store = std::move(*store)};
}

} // namespace ferrobank::drive
