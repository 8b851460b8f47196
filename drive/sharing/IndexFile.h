#pragma once

#include "platform/FileDescriptor.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ferrobank::drive {

/// The scanner's memory between two passes is a flat file that may be deleted, cut or exchanged at any time:
/// it only saves work. It begins with 64 bytes: 8 of kind and version, 40 for the drive's uuid, the length of
/// the rest and its XXH3-64, both as 64-bit numbers of this machine. A file of another drive, another version
/// or with a wrong sum counts as not there.
class IndexReader {
public:
    /// `kind` has 8 characters.
    static std::optional<IndexReader> open(const std::filesystem::path& path, const std::string& kind,
                                           const std::string& uuid);

    /// Fills all of `bytes`; answers no at the end of the file.
    [[nodiscard]] bool read(void* bytes, std::size_t size);

    /// Passes over bytes; answers no when there are fewer.
    [[nodiscard]] bool skip(std::uint64_t size);

    /// Starts again at the first byte after the header.
    void rewind();

private:
    IndexReader(FileDescriptor file, std::uint64_t size);

    FileDescriptor _file;
    std::uint64_t _size = 0;
    std::uint64_t _position = 0;
    std::vector<char> _buffer;
    std::uint64_t _bufferStart = 0;
    std::size_t _bufferFill = 0;
};

/// Writes a new index beside the old one and puts it in its place in one step at `commit`. Without a commit
/// nothing changes. Failures to write are thrown as Failure.
class IndexWriter {
public:
    IndexWriter(std::filesystem::path path, const std::string& kind, const std::string& uuid);
    IndexWriter(const IndexWriter&) = delete;
    IndexWriter& operator=(const IndexWriter&) = delete;
    ~IndexWriter();

    void append(const void* bytes, std::size_t size);
    void commit();

private:
    void flush();
    void writeAt(const char* bytes, std::size_t size, std::uint64_t offset);

    struct Sum;

    std::filesystem::path _path;
    std::filesystem::path _unfinished;
    FileDescriptor _file;
    std::string _kind;
    std::string _uuid;
    std::uint64_t _size = 0;
    std::vector<char> _buffer;
    std::unique_ptr<Sum> _sum;
};

} // namespace ferrobank::drive
