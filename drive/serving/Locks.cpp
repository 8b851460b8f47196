#include "serving/Locks.h"

#include "platform/Failure.h"
#include "platform/Files.h"
#include "state/ServerProbe.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <utility>

namespace ferrobank::drive {

namespace {

void writeLockText(int file, const std::string& text)
{
    if (::ftruncate(file, 0) != 0 ||
        ::pwrite(file, text.data(), text.size(), 0) != static_cast<ssize_t>(text.size()))
    {
        throw systemFailure("Cannot write the store's lock", errno);
    }
}

bool isOpen(int descriptor)
{
    return ::fcntl(descriptor, F_GETFD) >= 0;
}

} // namespace

std::string Inheritance::toText() const
{
    return std::to_string(serveLock) + "," + std::to_string(storeLock) + "," + std::to_string(reply);
}

std::optional<Inheritance> Inheritance::fromText(const std::string& text)
{
    Inheritance found;
    char rest = 0;
    if (std::sscanf(text.c_str(), "%d,%d,%d%c", &found.serveLock, &found.storeLock, &found.reply, &rest) !=
            3 ||
        !isOpen(found.serveLock) || !isOpen(found.storeLock) || (found.reply != -1 && !isOpen(found.reply)))
    {
        return std::nullopt;
    }
    return found;
}

std::optional<Locks> Locks::tryTake(const Paths& paths)
{
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
    writeLockText(store->descriptor(), LockText{.process = ::getpid(), .runtime = paths.runtime}.toText());
    return Locks{.serve = std::move(*serve), .store = std::move(*store)};
}

Locks Locks::inherit(const Inheritance& inheritance)
{
    return {.serve = FileLock::inherit(inheritance.serveLock),
            .store = FileLock::inherit(inheritance.storeLock)};
}

} // namespace ferrobank::drive
