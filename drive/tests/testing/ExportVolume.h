#pragma once

#include "exporting/Export.h"
#include "testing/DriveFiles.h"
#include "testing/TemporaryFolder.h"
#include "testing/TestVolume.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <optional>
#include <string>

namespace ferrobank::drive::testing {

inline constexpr std::uint64_t kMiB = 1U << 20U;

/// A test with a drive of its own, a store folder and a destination folder that does not exist yet.
class ExportVolume : public ::testing::Test {
protected:
    static void SetUpTestSuite();
    void SetUp() override;

    /// Room on the drive.
    [[nodiscard]] virtual std::uint64_t driveBytes() const { return 384 * kMiB; }

    [[nodiscard]] const std::filesystem::path& home() const { return _folder->path(); }

    [[nodiscard]] const std::filesystem::path& root() const { return _volume->mountPoint(); }

    [[nodiscard]] virtual std::filesystem::path copy() const { return home() / "copy"; }

    [[nodiscard]] ExportRequest request() const
    {
        return {.drive = root(), .store = home() / "store", .destination = copy()};
    }

    ExportResult run() const { return exportFiles(request(), {}, {}); }

    /// The sentence of the refusal, or empty if there is none.
    [[nodiscard]] std::string refusal(const std::filesystem::path& destination) const;

    /// Some of everything: folders, links, attributes, holes, strange names, odd permissions and times.
    void fillDrive() const;

    [[nodiscard]] bool hasSnapshots() const;

    [[nodiscard]] bool hasMark() const { return std::filesystem::exists(copy() / kIncompleteMark); }

    /// Where the copy is built while it is not complete.
    [[nodiscard]] std::filesystem::path staged() const { return copy() / kIncompleteMark / "files"; }

    TestVolume& volume() { return *_volume; }

private:
    std::optional<TemporaryFolder> _folder;
    std::optional<TestVolume> _volume;
};

} // namespace ferrobank::drive::testing
