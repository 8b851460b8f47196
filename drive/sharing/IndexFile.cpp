#include "sharing/IndexFile.h"

#include "platform/Failure.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <xxhash.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <memory>
#include <utility>

namespace ferrobank::drive {

namespace {

constexpr std::size_t kBufferSize = 256U << 10U;

struct Header {
    std::array<char, 8> kind{};
    std::array<char, 40> uuid{};
    std::uint64_t size = 0;
    std::uint64_t sum = 0;
};

static_assert(sizeof(Header) == 64);

Header headerFor(const std::string& kind, const std::string& uuid)
{
    Header header;
    std::copy_n(kind.begin(), std::min(kind.size(), header.kind.size()), header.kind.begin());
    std::copy_n(uuid.begin(), std::min(uuid.size(), header.uuid.size()), header.uuid.begin());
    return header;
}

bool readFully(int file, void* bytes, std::size_t size, std::uint64_t offset)
{
    return ::pread(file, bytes, size, static_cast<off_t>(offset)) == static_cast<ssize_t>(size);
}

} // namespace

struct IndexWriter::Sum {
    std::unique_ptr<XXH3_state_t, decltype(&XXH3_freeState)> state{XXH3_createState(), XXH3_freeState};

    Sum() { XXH3_64bits_reset(state.get()); }
};

std::optional<IndexReader> IndexReader::open(const std::filesystem::path& path, const std::string& kind,
                                             const std::string& uuid)
{
    FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    struct stat status{};
    Header header;
    if (!file || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode) ||
        !readFully(file.get(), &header, sizeof header, 0))
    {
        return std::nullopt;
    }
    const Header expected = headerFor(kind, uuid);
    if (header.kind != expected.kind || header.uuid != expected.uuid ||
        header.size != static_cast<std::uint64_t>(status.st_size) - sizeof header)
    {
        return std::nullopt;
    }
    IndexReader reader(std::move(file), header.size);
    const std::unique_ptr<XXH3_state_t, decltype(&XXH3_freeState)> state(XXH3_createState(), XXH3_freeState);
    XXH3_64bits_reset(state.get());
    std::array<char, 8192> part{};
    for (std::uint64_t position = 0; position < header.size;) {
        const std::size_t step = std::min<std::uint64_t>(part.size(), header.size - position);
        if (!reader.read(part.data(), step)) {
            return std::nullopt;
        }
        XXH3_64bits_update(state.get(), part.data(), step);
        position += step;
    }
    if (XXH3_64bits_digest(state.get()) != header.sum) {
        return std::nullopt;
    }
    reader.rewind();
    return reader;
}

IndexReader::IndexReader(FileDescriptor file, std::uint64_t size)
    : _file(std::move(file)), _size(size), _buffer(kBufferSize)
{}

bool IndexReader::read(void* bytes, std::size_t size)
{
    if (size > _size - _position) {
        return false;
    }
    auto* target = static_cast<char*>(bytes);
    while (size > 0) {
        if (_position < _bufferStart || _position >= _bufferStart + _bufferFill) {
            const std::size_t step = std::min<std::uint64_t>(_buffer.size(), _size - _position);
            if (!readFully(_file.get(), _buffer.data(), step, sizeof(Header) + _position)) {
                return false;
            }
            _bufferStart = _position;
            _bufferFill = step;
        }
        const std::size_t offset = _position - _bufferStart;
        const std::size_t count = std::min(size, _bufferFill - offset);
        std::memcpy(target, _buffer.data() + offset, count);
        target += count;
        size -= count;
        _position += count;
    }
    return true;
}

bool IndexReader::skip(std::uint64_t size)
{
    if (size > _size - _position) {
        return false;
    }
    _position += size;
    return true;
}

void IndexReader::rewind()
{
    _position = 0;
}

IndexWriter::IndexWriter(std::filesystem::path path, const std::string& kind, const std::string& uuid)
    : _path(std::move(path)),
      _unfinished(_path.string() + ".new"),
      _kind(kind),
      _uuid(uuid),
      _sum(std::make_unique<Sum>())
{
    std::filesystem::create_directories(_path.parent_path());
    // Never through a link that somebody put there.
    ::unlink(_unfinished.c_str());
    _file = FileDescriptor(::open(_unfinished.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (!_file) {
        throw systemFailure("Cannot write " + _unfinished.string(), errno);
    }
    _buffer.reserve(kBufferSize);
}

IndexWriter::~IndexWriter()
{
    if (_file) {
        ::unlink(_unfinished.c_str());
    }
}

void IndexWriter::append(const void* bytes, std::size_t size)
{
    const auto* from = static_cast<const char*>(bytes);
    XXH3_64bits_update(_sum->state.get(), bytes, size);
    while (size > 0) {
        const std::size_t count = std::min(size, kBufferSize - _buffer.size());
        _buffer.insert(_buffer.end(), from, from + count);
        from += count;
        size -= count;
        if (_buffer.size() == kBufferSize) {
            flush();
        }
    }
}

void IndexWriter::flush()
{
    writeAt(_buffer.data(), _buffer.size(), sizeof(Header) + _size);
    _size += _buffer.size();
    _buffer.clear();
}

void IndexWriter::writeAt(const char* bytes, std::size_t size, std::uint64_t offset)
{
    while (size > 0) {
        const ssize_t count = ::pwrite(_file.get(), bytes, size, static_cast<off_t>(offset));
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            throw systemFailure("Cannot write " + _unfinished.string(), errno);
        }
        bytes += count;
        size -= static_cast<std::size_t>(count);
        offset += static_cast<std::uint64_t>(count);
    }
}

void IndexWriter::commit()
{
    flush();
    Header header = headerFor(_kind, _uuid);
    header.size = _size;
    header.sum = XXH3_64bits_digest(_sum->state.get());
    writeAt(reinterpret_cast<const char*>(&header), sizeof header, 0);
    if (::rename(_unfinished.c_str(), _path.c_str()) != 0) {
        throw systemFailure("Cannot write " + _path.string(), errno);
    }
    _file.reset();
}

} // namespace ferrobank::drive
