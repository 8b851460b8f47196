#pragma once

#include "mounting/Volume.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace ferrobank::drive {

/// Whether the person at the screen may be asked for a password: after a click yes, at login no.
enum class Interaction { Silent, MayAsk };

/// One way to get the image mounted without being root, or as root. Used on one thread; calls wait for the
/// system and throw Failure with the sentence for the user. Codes that callers look at: "busy" (detach),
/// "not-authorized" (worth trying again while a login session settles), "device-busy" (worth looking for the
/// loop device again).
///
/// The caller has made sure that no other loop device uses the image, or passes the one that does.
class BackEnd {
public:
    virtual ~BackEnd() = default;

    /// "direct", "udisks" or "helper": the word in the state file and the log.
    [[nodiscard]] virtual std::string_view name() const = 0;
    /// Whether the drive is mounted on `~/Ferrobank` itself; otherwise a link there leads to the mount.
    [[nodiscard]] virtual bool mountsAtHome() const = 0;
    /// Makes the `files` subvolume in a new image, leaving the image detached. May be repeated after a kill.
    virtual void prepare(const std::optional<LoopDevice>& existing, Interaction interaction) = 0;
    /// Mounts the drive, on `existing` where the image is attached already, and returns where.
    virtual Volume attach(const std::optional<LoopDevice>& existing, Interaction interaction) = 0;
    /// Mounts the drive so that nobody can write to it, on a loop device that cannot either. Nothing may be
    /// attached.
    virtual Volume attachReadOnly(Interaction interaction) = 0;
    /// Unmounts the drive and lets the loop device go.
    virtual void detach(const Volume& volume) = 0;
};

} // namespace ferrobank::drive
