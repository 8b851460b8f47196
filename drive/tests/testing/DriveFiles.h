#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <string>

namespace ferrobank::drive::testing {

/// Bytes that neither compress nor repeat, the same for the same seed.
[[nodiscard]] std::string randomBytes(std::size_t size, std::uint64_t seed);

/// Bytes that do not repeat but compress to about a half, so that the drive keeps them in extents of
/// at most 128 KiB as it does with most of what people have.
[[nodiscard]] std::string plainBytes(std::size_t size, std::uint64_t seed);

/// Writes a file, its folders included, and sees to it that the bytes are on the device: places of blocks are
/// known only then.
void writeFile(const std::filesystem::path& path, const std::string& content);

[[nodiscard]] std::string readFile(const std::filesystem::path& path);

/// Everything below a folder that a copy must keep, by path: kind, permissions, size, modification time, link
/// target and a hash of the content that is computed from every single byte. The tool's own folder and mark
/// are left out.
[[nodiscard]] std::map<std::string, std::string> inventory(const std::filesystem::path& folder);

/// The same with contents only: path to hash of every regular file.
[[nodiscard]] std::map<std::string, std::uint64_t> contents(const std::filesystem::path& folder);

/// Cuts an image behind the last of its bytes that are not zero. Where that is was the kernel's choice:
/// beside the large guard, files may lie far behind.
void cutUnusedTail(const std::filesystem::path& image);

/// Writes `magic`, of 8 bytes, into every copy of the superblock that the image is long enough for.
void writeMagics(const std::filesystem::path& image, const std::string& magic);

/// Runs `work` in a child process as an ordinary user who owns nothing else; answers its result.
[[nodiscard]] bool asOrdinaryUser(const std::function<bool()>& work);

/// The user that `asOrdinaryUser` takes.
inline constexpr unsigned kOrdinaryUser = 64123;

/// Moves the test program into mounts of its own, once: whatever it mounts goes when it ends, also by a
/// crash, and loop devices with it. Does nothing without the privilege.
void enterPrivateMounts();

} // namespace ferrobank::drive::testing
