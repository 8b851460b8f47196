#include "Platform/linux/updates/install/Unpack.h"

#include "Platform/linux/Descriptor.h"
#include "Platform/linux/SmallFile.h"
#include "Platform/linux/updates/UpdateFailure.h"
#include "Platform/linux/updates/install/ArchiveWalk.h"
#include "Platform/linux/updates/install/Files.h"

#include <fcntl.h>
#include <sodium.h>
#include <sys/stat.h>
#include <sys/statvfs.h>

#include <cerrno>
#include <optional>
#include <set>
#include <utility>
#include <vector>

namespace ferrobank::updates {
namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t kSpare = 16ULL * 1024 * 1024;

UpdateFailure incomplete(const std::string& detail)
{
    return {Problem::Archive, "The update is not what its list of files says: " + detail + "."};
}

UpdateFailure notWritten(int error)
{
    return systemFailure(Problem::Install, "The update could not be unpacked", error);
}

class Hash {
public:
    Hash() { crypto_hash_sha256_init(&_state); }

    void add(std::span<const std::byte> bytes)
    {
        crypto_hash_sha256_update(&_state, reinterpret_cast<const unsigned char*>(bytes.data()),
                                  bytes.size());
    }

    Sha256 finish()
    {
        Sha256 hash{};
        crypto_hash_sha256_final(&_state, hash.data());
        return hash;
    }

private:
    crypto_hash_sha256_state _state{};
};

class Unpacker final : public ArchiveVisitor {
public:
    Unpacker(fs::path root, const Expectation& expectation)
        : _root(std::move(root)), _expectation(expectation)
    {}

    void folder(const std::string& path) override;
    void link(const std::string& path, const std::string& target) override;
    void beginFile(const std::string& path) override;
    void data(std::span<const std::byte> bytes) override;
    void endFile() override;

    Manifest finish();

private:
    void makeFolder(const fs::path& path);
    void makeParents(const std::string& path);
    const ManifestEntry& listed(const std::string& path, bool isLink);
    void expectRoom() const;

    fs::path _root;
    Expectation _expectation;
    std::optional<Manifest> _manifest;
    std::set<fs::path> _folders;
    std::set<std::string> _seen;
    std::vector<std::pair<std::string, std::string>> _links;

    std::string _path;
    std::string _manifestText; ///< while _path is the manifest
    Descriptor _file;
    std::uint64_t _size = 0;
    Hash _hash;
};

void Unpacker::makeFolder(const fs::path& path)
{
    if (!_folders.insert(path).second)
        return;
    if (::mkdir(path.c_str(), 0755) != 0 || ::chmod(path.c_str(), 0755) != 0)
        throw notWritten(errno);
}

void Unpacker::makeParents(const std::string& path)
{
    fs::path folder = _root;
    makeFolder(folder);
    for (const fs::path& name : fs::path(path).parent_path())
        makeFolder(folder /= name);
}

void Unpacker::folder(const std::string& path)
{
    // Folders come from the files in them; an empty one is not needed, and none may stand where a file
    // belongs.
    if (_manifest && _manifest->entries.contains(path))
        throw incomplete("a folder stands in a file's place");
}

const ManifestEntry& Unpacker::listed(const std::string& path, bool isLink)
{
    if (!_manifest)
        throw incomplete("the list does not come first");
    const auto found = _manifest->entries.find(path);
    if (found == _manifest->entries.end() || found->second.isLink != isLink)
        throw incomplete("a file is not on it");
    if (!_seen.insert(path).second)
        throw incomplete("a file is there twice");
    return found->second;
}

void Unpacker::link(const std::string& path, const std::string& target)
{
    if (listed(path, true).target != target)
        throw incomplete("a link leads elsewhere");
    _links.emplace_back(path, target);
}

void Unpacker::beginFile(const std::string& path)
{
    _path = path;
    _size = 0;
    _hash = Hash();
    if (!_manifest && path == Manifest::kPath)
        return;
    const bool isExecutable = listed(path, false).isExecutable;
    makeParents(path);
    const mode_t mode = isExecutable ? 0755 : 0644;
    _file = Descriptor(
        ::open((_root / path).c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode));
    if (!_file.isOpen() || ::fchmod(_file.number(), mode) != 0)
        throw notWritten(errno);
}

void Unpacker::data(std::span<const std::byte> bytes)
{
    _size += bytes.size();
    if (!_manifest) {
        if (_size > Manifest::kLargestFile)
            throw incomplete("the list is too long");
        _manifestText.append(reinterpret_cast<const char*>(bytes.data()), bytes.size());
        return;
    }
    if (_size > _manifest->entries.at(_path).size)
        throw incomplete("a file is longer");
    _hash.add(bytes);
    if (const int error = writeAll(_file.number(), bytes); error != 0)
        throw notWritten(error);
}

void Unpacker::endFile()
{
    if (!_manifest) {
        _manifest = readManifest(_manifestText);
        expectManifest(*_manifest, _expectation);
        makeParents(_path);
        expectRoom();
        if (const int error = writeFileAtomically(_root / _path, _manifestText); error != 0)
            throw notWritten(error);
        if (::chmod((_root / _path).c_str(), 0644) != 0)
            throw notWritten(errno);
        return;
    }
    const ManifestEntry& entry = _manifest->entries.at(_path);
    if (_size != entry.size || _hash.finish() != entry.sha256)
        throw incomplete("a file has other contents");
    if (::fsync(_file.number()) != 0 || !_file.closeChecked())
        throw notWritten(errno);
}

void Unpacker::expectRoom() const
{
    struct statvfs facts{};
    if (::statvfs(_root.c_str(), &facts) != 0)
        throw notWritten(errno);
    const std::uint64_t free = std::uint64_t{facts.f_bavail} * facts.f_frsize;
    const std::uint64_t needed = _manifest->totalSize + kSpare;
    if (free < needed)
        throw UpdateFailure(Problem::Space, "There is not enough room to unpack the update: " +
                                                std::to_string(needed / 1'000'000 + 1) + " MB are needed, " +
                                                std::to_string(free / 1'000'000) + " MB are free.");
}

Manifest Unpacker::finish()
{
    if (!_manifest || _seen.size() != _manifest->entries.size())
        throw incomplete("a file is missing");
    for (const auto& [path, target] : _links) {
        makeParents(path);
        if (::symlink(target.c_str(), (_root / path).c_str()) != 0)
            throw notWritten(errno);
    }
    for (const fs::path& folder : _folders) {
        if (const int error = syncFolder(folder); error != 0)
            throw notWritten(error);
    }
    return std::move(*_manifest);
}

Sha256 hashOfFile(const fs::path& file)
{
    const Descriptor descriptor(::open(file.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
    Hash hash;
    std::vector<std::byte> buffer(256 * 1024);
    while (descriptor.isOpen()) {
        const ssize_t count = ::read(descriptor.number(), buffer.data(), buffer.size());
        if (count == 0)
            return hash.finish();
        if (count < 0 && errno != EINTR)
            break;
        if (count > 0)
            hash.add(std::span(buffer).first(static_cast<std::size_t>(count)));
    }
    throw incomplete("a file cannot be read");
}

bool matches(const fs::path& path, const ManifestEntry& entry)
{
    struct stat facts{};
    if (::lstat(path.c_str(), &facts) != 0)
        return false;
    if (entry.isLink) {
        std::error_code error;
        return S_ISLNK(facts.st_mode) && fs::read_symlink(path, error) == entry.target && !error;
    }
    const mode_t mode = entry.isExecutable ? 0755 : 0644;
    return S_ISREG(facts.st_mode) && (facts.st_mode & 07777) == mode &&
           static_cast<std::uint64_t>(facts.st_size) == entry.size && hashOfFile(path) == entry.sha256;
}

} // namespace

Manifest unpackArchive(int archive, std::uint64_t archiveSize, const fs::path& folder,
                       const std::string& name, const Expectation& expectation)
{
    Unpacker unpacker(folder / name, expectation);
    ArchiveLimits limits;
    limits.topFolder = kReleaseFolder;
    limits.archiveSize = archiveSize;
    walkArchive(archive, limits, unpacker);
    Manifest manifest = unpacker.finish();
    if (const int error = syncFolder(folder); error != 0)
        throw notWritten(error);
    return manifest;
}

Manifest checkTree(const fs::path& root)
{
    const auto text = readSmallFile(root / Manifest::kPath, Manifest::kLargestFile);
    if (!text)
        throw incomplete("the list itself is missing");
    Manifest manifest = readManifest(*text);
    for (const auto& [path, entry] : manifest.entries) {
        if (!matches(root / path, entry))
            throw incomplete("a file is missing or has other contents");
    }
    std::size_t found = 0;
    std::error_code error;
    for (fs::recursive_directory_iterator it(root, error), end; !error && it != end; it.increment(error))
        found += it->symlink_status().type() == fs::file_type::directory ? 0 : 1;
    if (error || found != manifest.entries.size() + 1)
        throw incomplete("there are other files in the folder");
    return manifest;
}

} // namespace ferrobank::updates
