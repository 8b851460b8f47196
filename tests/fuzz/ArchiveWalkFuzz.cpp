// An archive of any bytes is walked or refused; what a visitor is told is always safe to write.

#include "Platform/linux/updates/UpdateFailure.h"
#include "Platform/linux/updates/install/ArchiveWalk.h"
#include "Platform/linux/updates/install/Manifest.h"
#include "Platform/linux/updates/install/SafePath.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>

using namespace ferrobank::updates;

namespace {

void demand(bool holds)
{
    if (!holds)
        std::abort();
}

class Checker final : public ArchiveVisitor {
public:
    void folder(const std::string& path) override { demand(isSafePath(path)); }

    void link(const std::string& path, const std::string& target) override
    {
        demand(isSafePath(path) && isSafeTarget(path, target));
    }

    void beginFile(const std::string& path) override
    {
        demand(isSafePath(path) && !_isOpen);
        _isOpen = true;
        _text.clear();
    }

    void data(std::span<const std::byte> bytes) override
    {
        demand(_isOpen);
        if (_text.size() < 64 * 1024)
            _text.append(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    }

    void endFile() override
    {
        demand(_isOpen);
        _isOpen = false;
        try {
            for (const auto& [path, entry] : readManifest(_text).entries)
                demand(isSafePath(path) && (!entry.isLink || isSafeTarget(path, entry.target)));
        } catch (const UpdateFailure&) {
            return;
        }
    }

private:
    bool _isOpen = false;
    std::string _text;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size)
{
    static const int file = ::memfd_create("archive", MFD_CLOEXEC);
    demand(::ftruncate(file, 0) == 0 && ::pwrite(file, data, size, 0) == static_cast<ssize_t>(size));
    ArchiveLimits limits;
    limits.topFolder = "Ferrobank.app";
    limits.archiveSize = size;
    limits.mostBytes = 16 * 1024 * 1024;
    Checker checker;
    try {
        walkArchive(file, limits, checker);
    } catch (const UpdateFailure&) {
        return 0;
    }
    return 0;
}
