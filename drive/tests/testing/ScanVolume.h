#pragma once

#include "sharing/Scanner.h"
#include "testing/DriveFiles.h"
#include "testing/TemporaryFolder.h"
#include "testing/TestVolume.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>

namespace ferrobank::drive::testing {

inline constexpr std::uint64_t kMiB = 1U << 20U;

/// A test with a drive of its own of 384 MiB and an index folder beside it.
class ScanVolume : public ::testing::Test {
protected:
    static void SetUpTestSuite();
    void SetUp() override;

    [[nodiscard]] const std::filesystem::path& root() const { return _volume->mountPoint(); }

    [[nodiscard]] std::filesystem::path index() const { return _folder->path() / "index"; }

    /// Settings that neither wait for quiet files nor pause.
    [[nodiscard]] ScanSettings settings() const;

    SharingResult scan() const { return shareRepeatedData(settings(), {}); }

    /// Writes out everything and answers the bytes that the drive takes up.
    [[nodiscard]] std::uint64_t inUse() const;

    /// Whether two files have the same block, `otherOffset` being the same as `offset` unless given.
    [[nodiscard]] bool shares(const std::string& one, const std::string& other, std::uint64_t offset = 0,
                              std::optional<std::uint64_t> otherOffset = std::nullopt) const;

    TestVolume& volume() { return *_volume; }

private:
    std::optional<TemporaryFolder> _folder;
    std::optional<TestVolume> _volume;
};

} // namespace ferrobank::drive::testing
