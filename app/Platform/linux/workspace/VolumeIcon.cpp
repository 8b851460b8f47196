#include "Platform/linux/workspace/VolumeIcon.h"

#include "Platform/linux/Descriptor.h"
#include "Platform/linux/SmallFile.h"
#include "Platform/linux/workspace/IconImage.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <string_view>
#include <vector>

namespace ferrobank {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLargestIconFile = std::size_t{16} * 1024 * 1024;

/// Files made in one go; all of them go away again unless they are kept.
class NewFiles {
public:
    NewFiles() = default;
    NewFiles(const NewFiles&) = delete;
    NewFiles& operator=(const NewFiles&) = delete;

    ~NewFiles()
    {
        for (const fs::path& file : _made) {
            ::unlink(file.c_str());
        }
    }

    /// False when something is there already, or when the bytes do not fit.
    bool make(const fs::path& file, std::string_view bytes)
    {
        const Descriptor descriptor(::open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644));
        if (!descriptor.isOpen()) {
            return false;
        }
        _made.push_back(file);
        while (!bytes.empty()) {
            const ssize_t count = ::write(descriptor.number(), bytes.data(), bytes.size());
            if (count < 0 && errno != EINTR) {
                return false;
            }
            bytes.remove_prefix(count < 0 ? 0 : static_cast<std::size_t>(count));
        }
        return ::fsync(descriptor.number()) == 0;
    }

    void keep() { _made.clear(); }

private:
    std::vector<fs::path> _made;
};

bool isThere(const fs::path& path)
{
    std::error_code error;
    return fs::symlink_status(path, error).type() != fs::file_type::not_found;
}

/// A value of a desktop entry.
std::string escaped(std::string_view text)
{
    std::string result;
    for (const char c : text) {
        switch (c) {
        case '\\':
            result += "\\\\";
            break;
        case '\n':
            result += "\\n";
            break;
        case '\r':
            result += "\\r";
            break;
        case '\t':
            result += "\\t";
            break;
        default:
            result += c;
        }
    }
    return result;
}

} // namespace

bool giveVolumeIcon(const fs::path& iconFile, const fs::path& folder)
{
    const fs::path icon = folder / ".VolumeIcon.icns";
    const fs::path picture = folder / ".VolumeIcon.png";
    const fs::path volumeInfo = folder / ".xdg-volume-info";
    const fs::path directory = folder / ".directory";
    if (isThere(icon)) {
        return false;
    }
    const auto bytes = readSmallFile(iconFile, kLargestIconFile);
    const QByteArray png = bytes ? pngInIcon(QByteArray::fromStdString(*bytes)) : QByteArray();
    if (png.isEmpty()) {
        return false;
    }

    NewFiles files;
    if (!isThere(volumeInfo) && !isThere(directory)) {
        const bool made =
            (isThere(picture) ||
             files.make(picture, std::string_view(png.constData(), static_cast<std::size_t>(png.size())))) &&
            files.make(volumeInfo, "[Volume Info]\nName=Ferrobank\nIconFile=.VolumeIcon.png\n") &&
            files.make(directory, "[Desktop Entry]\nIcon=" + escaped(picture.native()) + '\n');
        if (!made) {
            return false;
        }
    }
    // Last, because it is the sign that nothing is left to do.
    if (!files.make(icon, *bytes)) {
        return false;
    }
    files.keep();
    return true;
}

} // namespace ferrobank
