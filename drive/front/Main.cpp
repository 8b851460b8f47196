// The program under the tool's name: tells the status by itself, because that is asked every five seconds,
// and becomes the program beside it for everything else. It is linked statically and keeps clear of whatever
// makes a start slow.

#include "commands/StatusReport.h"
#include "platform/ToolPrograms.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>

namespace ferrobank::drive {

namespace {

bool asksForStatus(int count, char** words)
{
    return count == 3 && std::strcmp(words[1], "status") == 0 && std::strcmp(words[2], "--json") == 0;
}

/// All of the text, or a failure: who asked may have gone, and his pipe with him.
bool print(std::string_view text)
{
    while (!text.empty()) {
        const ssize_t put = ::write(STDOUT_FILENO, text.data(), text.size());
        if (put < 0 && errno != EINTR) {
            return false;
        }
        text.remove_prefix(put > 0 ? static_cast<std::size_t>(put) : 0);
    }
    return true;
}

/// Ends only where there is no such program.
int becomeDriveProgram(char** words)
{
    const std::filesystem::path program = ownProgram().replace_filename(kDriveProgram);
    ::execv(program.c_str(), words);
    std::fprintf(stderr, "The program %s cannot be started: %s. Install Ferrobank anew.\n", program.c_str(),
                 std::strerror(errno));
    return EXIT_FAILURE;
}

} // namespace

} // namespace ferrobank::drive

int main(int count, char** words)
{
    using namespace ferrobank::drive;
    if (!asksForStatus(count, words)) {
        return becomeDriveProgram(words);
    }
    // Without variables the account's data base is needed, which a static program has not got.
    const std::optional<Paths> paths = Paths::fromVariables();
    if (!paths) {
        return becomeDriveProgram(words);
    }
    try {
        return print(StatusReport::gather(*paths).toJson() + '\n') ? EXIT_SUCCESS : EXIT_FAILURE;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s\n", failure.what());
        return EXIT_FAILURE;
    }
}
