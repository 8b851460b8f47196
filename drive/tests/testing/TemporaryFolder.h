#pragma once

#include <filesystem>
#include <string>

namespace ferrobank::drive::testing {

/// A folder of its own below the system's temporary folder, removed with all it holds when it goes. Mounts
/// inside it must be gone by then: it refuses to remove what lies on another file system and fails the test
/// instead.
class TemporaryFolder {
public:
    TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder();

    [[nodiscard]] const std::filesystem::path& path() const { return _path; }

private:
    std::filesystem::path _path;
};

} // namespace ferrobank::drive::testing
