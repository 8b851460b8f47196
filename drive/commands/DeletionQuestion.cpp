#include "commands/DeletionQuestion.h"

#include "commands/ServedVolume.h"
#include "figures/DisplayText.h"
#include "figures/Usage.h"
#include "platform/Failure.h"
#include "state/Figures.h"

#include <unistd.h>

#include <cstdio>
#include <string>

namespace ferrobank::drive {

namespace {

std::string whatWillGo(const Paths& paths)
{
    if (const std::optional<Volume> volume = findServedVolume(paths, ServerProbe::probe(paths))) {
        UsageSum sum;
        walkTree(volume->mountPoint, sum, {});
        const Usage& usage = sum.usage();
        return std::to_string(usage.files) + (usage.files == 1 ? " file, " : " files, ") +
               displayBytes(usage.bytes);
    }
    const std::optional<Figures> figures = Figures::read(paths.figures);
    if (figures && figures->volumeUsed) {
        return "files of " + displayBytes(*figures->volumeUsed);
    }
    return "all files on it";
}

std::string answer()
{
    char line[64];
    if (std::fgets(line, sizeof line, stdin) == nullptr) {
        return {};
    }
    std::string text = line;
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r' || text.back() == ' ')) {
        text.pop_back();
    }
    return text;
}

} // namespace

bool isAtTerminal()
{
    return ::isatty(STDIN_FILENO) == 1 && ::isatty(STDERR_FILENO) == 1;
}

void askBeforeDeletion(const Paths& paths, const UninstallWishes& wishes)
{
    std::string text = "This deletes the drive's data from this computer: " + whatWillGo(paths) + ".\n";
    text += wishes.exportTo ? "They are copied to " + displayName(wishes.exportTo->string()) +
                                  " first, and nothing is deleted unless every one of them is in the copy.\n"
                            : "There is no copy of them: they are gone for good then.\n";
    std::fputs((text + "Type \"yes\" to go on: ").c_str(), stderr);
    const std::string given = answer();
    if (given != "yes" && given != "YES" && given != "Yes") {
        throw Failure("Nothing was changed.", "declined");
    }
}

} // namespace ferrobank::drive
