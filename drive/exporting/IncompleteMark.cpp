#include "exporting/IncompleteMark.h"

#include "platform/FileDescriptor.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace ferrobank::drive {

std::string incompleteMark(const std::string& driveUuid)
{
    return "An export from the Ferrobank drive " + driveUuid + " into this folder is not complete.\n";
}

bool hasIncompleteMark(const std::filesystem::path& folder, const std::string& driveUuid)
{
    const std::filesystem::path path = folder / kIncompleteMark;
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    struct stat facts{};
    if (!file || ::fstat(file.get(), &facts) != 0 || !S_ISREG(facts.st_mode)) {
        return false;
    }
    const std::string wanted = incompleteMark(driveUuid);
    std::string found(wanted.size() + 1, '\0'); // one more, to see that it ends there
    std::size_t length = 0;
    while (length < found.size()) {
        const ssize_t count = ::read(file.get(), found.data() + length, found.size() - length);
        if (count == 0) {
            break;
        }
        if (count < 0) {
            if (errno == EINTR) {
                continue;
            }
            return false;
        }
        length += static_cast<std::size_t>(count);
    }
    found.resize(length);
    return found == wanted;
}

} // namespace ferrobank::drive
