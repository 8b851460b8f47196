#pragma once

#include "platform/FileDescriptor.h"
#include "platform/FileLock.h"
#include "platform/Paths.h"

#include <optional>
#include <string>

namespace ferrobank::drive {

/// What a serving process hands to the program that it becomes: its two locks, so that nobody can take its
/// place in between, and the connection that waits for the outcome.
struct Inheritance {
    int serveLock = -1;
    int storeLock = -1;
    /// -1 when nobody waits.
    int reply = -1;
    /// The space guard's file; -1 without one.
    int guard = -1;

    static constexpr const char* kVariable = "FERROBANK_ADOPT";

    [[nodiscard]] std::string toText() const;
    /// Nothing unless the text is well formed. What the descriptors are is for `Locks::inherit` to see:
    /// anybody can write an environment.
    [[nodiscard]] static std::optional<Inheritance> fromText(const std::string& text);

    /// The connection that waits, closed in the programs that this process starts; none when the number is
    /// not that of a socket.
    [[nodiscard]] FileDescriptor takeReply() const;
    /// The space guard, closed in the programs that this process starts; none when the number is not that of
    /// a file without a name. Whether it is one of the drive is for the guard itself to see.
    [[nodiscard]] FileDescriptor takeGuard() const;
};

/// The two locks of a serving process: one in the runtime folder, one beside the image, which still holds
/// where the runtime folder was lost or two environments name different ones.
struct Locks {
    FileLock serve;
    FileLock store;

    /// Nothing when another process serves. Makes the folders, and writes this process and its runtime folder
    /// into the store's lock for the commands. Throws Failure.
    [[nodiscard]] static std::optional<Locks> tryTake(const Paths& paths);
    /// The same, but waits for a holder that was killed: its locks go with the last of its threads, which on
    /// a busy computer takes a while, and nobody else would serve the drive then.
    [[nodiscard]] static std::optional<Locks> take(const Paths& paths);
    /// The locks of the program that this process was before. Nothing, with all descriptors as they were,
    /// unless the one is open on the store's lock file and locked: the text came from the environment. The
    /// other one may have been cleared away with the runtime folder, and is taken anew then. Throws Failure.
    [[nodiscard]] static std::optional<Locks> inherit(const Inheritance& inheritance, const Paths& paths);
};

} // namespace ferrobank::drive
