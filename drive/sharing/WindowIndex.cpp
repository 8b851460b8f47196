#include "sharing/WindowIndex.h"

#include <array>
#include <utility>

namespace ferrobank::drive {

namespace {

constexpr const char* kKind = "FBBLOCK1";
constexpr const char* kFileName = "blocks.idx";

} // namespace

WindowIndexReader::WindowIndexReader(IndexReader reader) : _reader(std::move(reader)) {}

std::optional<WindowIndexReader> WindowIndexReader::open(const std::filesystem::path& folder,
                                                         const std::string& uuid)
{
    auto reader = IndexReader::open(folder / kFileName, kKind, uuid);
    if (!reader) {
        return std::nullopt;
    }
    return WindowIndexReader(std::move(*reader));
}

bool WindowIndexReader::next(WindowSegment& segment, Windows windows)
{
    std::array<std::uint64_t, 5> head{};
    if (!_reader.read(head.data(), sizeof head) || head[4] > kWindowsPerSegment) {
        return false;
    }
    segment.identity = head[0];
    segment.size = head[1];
    segment.stamp = head[2];
    segment.last = head[3] != 0;
    segment.windows.clear();
    const std::uint64_t bytes = head[4] * sizeof(KeptWindow);
    if (windows == Windows::Skip) {
        return _reader.skip(bytes);
    }
    segment.windows.resize(head[4]);
    return _reader.read(segment.windows.data(), bytes);
}

void WindowIndexReader::rewind()
{
    _reader.rewind();
}

WindowIndexWriter::WindowIndexWriter(const std::filesystem::path& folder, const std::string& uuid)
    : _writer(folder / kFileName, kKind, uuid)
{}

void WindowIndexWriter::append(const WindowSegment& segment)
{
    const std::array<std::uint64_t, 5> head{segment.identity, segment.size, segment.stamp,
                                            segment.last ? 1U : 0U, segment.windows.size()};
    _writer.append(head.data(), sizeof head);
    _writer.append(segment.windows.data(), segment.windows.size() * sizeof(KeptWindow));
}

void WindowIndexWriter::commit()
{
    _writer.commit();
}

} // namespace ferrobank::drive
