#include "Platform/linux/SmallFile.h"

#include "Platform/linux/Descriptor.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <system_error>

namespace ferrobank {

namespace {

[[noreturn]] void throwErrno()
{
    throw std::system_error(errno, std::generic_category());
}

void writeAll(int descriptor, std::string_view content)
{
    while (!content.empty()) {
        const ssize_t written = write(descriptor, content.data(), content.size());
        if (written < 0) {
            if (errno == EINTR) {
                continue;
            }
            throwErrno();
        }
        content.remove_prefix(static_cast<std::size_t>(written));
    }
}

} // namespace

std::optional<std::string> readSmallFile(const std::filesystem::path& file, std::size_t limit)
{
    const Descriptor descriptor(open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat facts{};
    if (!descriptor.isOpen() || fstat(descriptor.number(), &facts) != 0 || !S_ISREG(facts.st_mode)) {
        return std::nullopt;
    }
    // Only as much memory as the file takes: limits are generous. It may grow while it is read.
    std::string content;
    std::array<char, 4096> piece;
    while (content.size() <= limit) {
        const ssize_t count = read(descriptor.number(), piece.data(), piece.size());
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            return std::nullopt;
        }
        if (count == 0) {
            return content;
        }
        content.append(piece.data(), static_cast<std::size_t>(count));
    }
    return std::nullopt;
}

void replaceSmallFile(const std::filesystem::path& file, std::string_view content)
{
    std::filesystem::create_directories(file.parent_path());
    std::string temporary = file.parent_path() / ("." + file.filename().native() + ".XXXXXX");
    const Descriptor descriptor(mkostemp(temporary.data(), O_CLOEXEC));
    if (!descriptor.isOpen()) {
        throwErrno();
    }
    try {
        writeAll(descriptor.number(), content);
        if (fchmod(descriptor.number(), 0644) != 0 || fsync(descriptor.number()) != 0 ||
            rename(temporary.c_str(), file.c_str()) != 0)
        {
            throwErrno();
        }
    } catch (...) {
        unlink(temporary.c_str());
        throw;
    }
}

} // namespace ferrobank
