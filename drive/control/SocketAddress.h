#pragma once

#include "platform/FileDescriptor.h"

#include <sys/socket.h>
#include <sys/un.h>

#include <filesystem>

namespace ferrobank::drive {

/// The address of a unix socket in a folder. It goes through the folder's descriptor below /proc/self/fd,
/// because the plain path may be longer than the 107 bytes that an address can hold. Valid while this value
/// lives.
struct SocketAddress {
    FileDescriptor folder;
    sockaddr_un address{};

    /// Throws Failure when the folder cannot be opened.
    [[nodiscard]] static SocketAddress of(const std::filesystem::path& socket);

    [[nodiscard]] const sockaddr* get() const { return reinterpret_cast<const sockaddr*>(&address); }
};

} // namespace ferrobank::drive
