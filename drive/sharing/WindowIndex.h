#pragma once

#include "sharing/FileTable.h"
#include "sharing/IndexFile.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace ferrobank::drive {

/// One window of a file, as kept between passes.
struct KeptWindow {
    std::uint64_t key = 0;
    std::uint64_t offset = 0;
};

/// Some of the windows of one file. A file has one or more segments, of which `last` ends the list; a file
/// without a last one was not read to its end and counts as unknown.
struct WindowSegment {
    std::uint64_t identity = 0;
    std::uint64_t size = 0;
    std::uint64_t stamp = 0;
    bool last = false;
    std::vector<KeptWindow> windows;

    [[nodiscard]] bool describes(const FileRecord& file) const
    {
        return identity == file.identity && size == file.size && stamp == file.stamp;
    }
};

/// Windows in one segment at most, which bounds the memory whatever the size of a file.
inline constexpr std::size_t kWindowsPerSegment = 8192;

/// Windows of the last pass, 16 bytes for every 64 KiB of large files, so that one new file does not make the
/// scanner read all others again.
class WindowIndexReader {
public:
    enum class Windows { Skip, Read };

    static std::optional<WindowIndexReader> open(const std::filesystem::path& folder,
                                                 const std::string& uuid);

    /// Reads the next segment; answers no after the last one.
    [[nodiscard]] bool next(WindowSegment& segment, Windows windows);

    void rewind();

private:
    explicit WindowIndexReader(IndexReader reader);

    IndexReader _reader;
};

class WindowIndexWriter {
public:
    WindowIndexWriter(const std::filesystem::path& folder, const std::string& uuid);

    void append(const WindowSegment& segment);
    void commit();

private:
    IndexWriter _writer;
};

} // namespace ferrobank::drive
