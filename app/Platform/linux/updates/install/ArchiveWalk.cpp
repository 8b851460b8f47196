#include "Platform/linux/updates/install/ArchiveWalk.h"

#include "Platform/linux/updates/UpdateFailure.h"
#include "Platform/linux/updates/install/SafePath.h"

#include <archive.h>
#include <archive_entry.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>

namespace ferrobank::updates {
namespace {

constexpr std::uint64_t kExpansionMatters = std::uint64_t{1024} * 1024;

UpdateFailure unsafe(const std::string& detail)
{
    return {Problem::Archive, "The downloaded update was refused: " + detail + "."};
}

struct CloseArchive {
    void operator()(archive* reader) const { archive_read_free(reader); }
};

class Walk {
public:
    Walk(int descriptor, const ArchiveLimits& limits, ArchiveVisitor& visitor);

    void run();

private:
    bool next();
    std::string innerPath() const;
    void visitEntry();
    void copyData();
    [[noreturn]] void fail() const;

    ArchiveLimits _limits;
    ArchiveVisitor& _visitor;
    std::unique_ptr<archive, CloseArchive> _reader{archive_read_new()};
    archive_entry* _entry = nullptr;
    std::size_t _entries = 0;
    std::uint64_t _bytes = 0;
};

Walk::Walk(int descriptor, const ArchiveLimits& limits, ArchiveVisitor& visitor)
    : _limits(limits), _visitor(visitor)
{
    // Only what our own releases are made of: fewer formats, fewer ways in.
    archive_read_support_format_tar(_reader.get());
    archive_read_support_filter_zstd(_reader.get());
    if (::lseek(descriptor, 0, SEEK_SET) != 0 ||
        archive_read_open_fd(_reader.get(), descriptor, std::size_t{64} * 1024) != ARCHIVE_OK)
        fail();
}

void Walk::fail() const
{
    throw unsafe("it is damaged or not an archive of this application");
}

bool Walk::next()
{
    const int status = archive_read_next_header(_reader.get(), &_entry);
    if (status == ARCHIVE_EOF)
        return false;
    // A warning means that a name or a header was bent into shape; nothing of ours needs that.
    if (status != ARCHIVE_OK)
        fail();
    return true;
}

void Walk::run()
{
    while (next()) {
        if (++_entries > _limits.mostEntries)
            throw unsafe("it holds too many files");
        visitEntry();
    }
    if (_entries == 0)
        fail();
}

std::string Walk::innerPath() const
{
    const char* name = archive_entry_pathname(_entry);
    std::string path = name ? name : "";
    if (archive_entry_filetype(_entry) == AE_IFDIR && path.ends_with('/'))
        path.pop_back();
    const std::string top = _limits.topFolder + "/";
    if (!isSafePath(path) || (path != _limits.topFolder && !path.starts_with(top)))
        throw unsafe("a file in it would lie outside the application's folder");
    return path == _limits.topFolder ? std::string() : path.substr(top.size());
}

void Walk::visitEntry()
{
    const std::string path = innerPath();
    const auto type = archive_entry_filetype(_entry);
    if (archive_entry_hardlink(_entry))
        throw unsafe("it holds a hard link");
    if ((archive_entry_perm(_entry) & (S_ISUID | S_ISGID | S_ISVTX)) != 0)
        throw unsafe("a file in it asks for special rights");
    if (archive_entry_sparse_count(_entry) > 0)
        throw unsafe("a file in it has holes");

    if (type == AE_IFDIR) {
        if (!path.empty())
            _visitor.folder(path);
    } else if (path.empty())
        throw unsafe("the application's folder in it is not a folder");
    else if (type == AE_IFLNK) {
        const char* text = archive_entry_symlink(_entry);
        const std::string target = text ? text : "";
        if (!isSafeTarget(path, target))
            throw unsafe("a link in it leads out of the application's folder");
        _visitor.link(path, target);
    } else if (type == AE_IFREG) {
        _visitor.beginFile(path);
        copyData();
        _visitor.endFile();
    } else
        throw unsafe("it holds a special file");
}

void Walk::copyData()
{
    std::uint64_t expected = 0;
    while (true) {
        const void* block = nullptr;
        std::size_t size = 0;
        la_int64_t offset = 0;
        const int status = archive_read_data_block(_reader.get(), &block, &size, &offset);
        if (status == ARCHIVE_EOF)
            return;
        if (status != ARCHIVE_OK || offset < 0 || static_cast<std::uint64_t>(offset) != expected)
            fail();
        expected += size;
        _bytes += size;
        const bool isBomb =
            _bytes > kExpansionMatters && _bytes / _limits.mostExpansion > _limits.archiveSize;
        if (_bytes > _limits.mostBytes || isBomb)
            throw unsafe("it grows out of proportion when unpacked");
        _visitor.data({static_cast<const std::byte*>(block), size});
    }
}

} // namespace

void walkArchive(int descriptor, const ArchiveLimits& limits, ArchiveVisitor& visitor)
{
    Walk(descriptor, limits, visitor).run();
}

} // namespace ferrobank::updates
