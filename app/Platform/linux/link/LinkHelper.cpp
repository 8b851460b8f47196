// Makes the command link with administrator rights. Started by pkexec(1) after polkit has asked; installed
// only as part of a package.
//
// It takes no arguments and trusts nothing that its caller could have chosen: the tool is the one beside this
// very program, the link's place is fixed, and tool, program and place must lie where only the administrator
// can write.
//
// | exit | meaning                                                  |
// |------|----------------------------------------------------------|
// | 0    | the link is made                                         |
// | 1    | the system refused; its words are on standard error      |
// | 2    | started in a way that this program does not serve        |
// | 3    | something that is not a link is there and was left alone |
//
// 126 and 127 belong to pkexec.

#include "Platform/LinkPlacement.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <exception>
#include <filesystem>

namespace {

namespace fs = std::filesystem;

constexpr auto kLink = "/usr/local/bin/ferrobank";

enum Exit : int { Done = 0, Refused = 1, Misused = 2, NotALink = 3 };

bool isProgram(const fs::path& path)
{
    struct stat facts{};
    return ::lstat(path.c_str(), &facts) == 0 && S_ISREG(facts.st_mode) && (facts.st_mode & S_IXOTH) != 0;
}

fs::path nearestThatIsThere(fs::path folder)
{
    while (!fs::exists(fs::symlink_status(folder))) {
        folder = folder.parent_path();
    }
    return folder;
}

int complain(Exit exit, const char* words)
{
    std::fprintf(stderr, "%s\n", words);
    return exit;
}

} // namespace

int main(int argc, char**)
{
    if (argc != 1) {
        return complain(Misused, "This program takes no arguments.");
    }
    if (::geteuid() != 0) {
        return complain(Misused, "This program needs administrator rights.");
    }
    try {
        const fs::path self = fs::read_symlink("/proc/self/exe");
        const fs::path tool = self.parent_path() / "ferrobank";
        if (!ferrobank::isOnlyRootsToWrite(self) || !ferrobank::isOnlyRootsToWrite(tool) || !isProgram(tool))
        {
            return complain(Misused,
                            "Ferrobank is not installed where only the administrator can change it.");
        }
        const fs::path folder = fs::path(kLink).parent_path();
        if (!ferrobank::isOnlyRootsToPlaceIn(nearestThatIsThere(folder))) {
            return complain(Misused, "Others than the administrator can change /usr/local/bin.");
        }
        ::umask(S_IWGRP | S_IWOTH);
        fs::create_directories(folder);
        ferrobank::placeLink(tool, kLink);
        return Done;
    } catch (const ferrobank::NotALinkError& error) {
        std::fprintf(stderr, "%s ", kLink);
        return complain(NotALink, error.what());
    } catch (const std::exception& error) {
        return complain(Refused, error.what());
    }
}
