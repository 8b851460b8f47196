#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace ferrobank::drive {

/// Where everything of one user's drive lies. Plain value, made once at start from the environment; usable on
/// any thread. Making it touches nothing on disk.
struct Paths {
    std::filesystem::path home;
    /// `~/Ferrobank`: the mount point itself or a link to it.
    std::filesystem::path drive;
    /// `~/Library/Application Support/Ferrobank`.
    std::filesystem::path support;
    std::filesystem::path store;
    std::filesystem::path image;
    /// Held with flock by the serving process; names it and its runtime folder.
    std::filesystem::path storeLock;
    std::filesystem::path figures;
    std::filesystem::path reserve;
    /// There while the image has not got its `files` subvolume yet.
    std::filesystem::path unprepared;
    /// There from before a mount until after a clean unmount.
    std::filesystem::path openMarker;
    /// There while every file has to be read once; its text is the reason.
    std::filesystem::path readingDue;
    /// Paths on the drive of the files that the last complete reading could not read, each ended by a zero.
    std::filesystem::path unreadable;
    std::filesystem::path index;
    /// Held with flock by a command that copies, unmounts or deletes; tells who it is and how far.
    std::filesystem::path work;
    std::filesystem::path log;
    /// `$XDG_RUNTIME_DIR/ferrobank`, or `~/.cache/ferrobank/run-<boot id>` without one.
    std::filesystem::path runtime;
    std::filesystem::path autostartEntry;

    [[nodiscard]] std::filesystem::path serveLock() const { return runtime / "serve.lock"; }

    [[nodiscard]] std::filesystem::path state() const { return runtime / "state.json"; }

    [[nodiscard]] std::filesystem::path socket() const { return runtime / "control.sock"; }

    /// From HOME (else the password data base), XDG_RUNTIME_DIR and XDG_CONFIG_HOME. Throws Failure when
    /// there is no absolute home folder, or when root would work in the home of another user.
    [[nodiscard]] static Paths fromEnvironment();
    /// The same from the variables alone; nothing where HOME is missing or not absolute.
    [[nodiscard]] static std::optional<Paths> fromVariables();
    /// The same with another home folder.
    [[nodiscard]] static Paths ofHome(const std::filesystem::path& home);
    [[nodiscard]] static Paths of(const std::filesystem::path& home, const std::filesystem::path& runtimeRoot,
                                  const std::filesystem::path& configuration);
};

/// The kernel's identifier of this run of the system, from /proc/sys/kernel/random/boot_id.
[[nodiscard]] std::string bootId();

} // namespace ferrobank::drive
