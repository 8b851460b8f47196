#include "commands/CommandLine.h"

#include "commands/Checks.h"
#include "commands/DeletionQuestion.h"
#include "commands/ExportRun.h"
#include "commands/FolderUsage.h"
#include "commands/Interruption.h"
#include "commands/NearWord.h"
#include "commands/ProgressBar.h"
#include "commands/RestartCommand.h"
#include "commands/ServeCommand.h"
#include "commands/ShareCommand.h"
#include "commands/StatusReport.h"
#include "commands/StatusText.h"
#include "commands/UninstallCommand.h"
#include "commands/Wording.h"
#include "commands/Words.h"
#include "figures/DisplayText.h"
#include "platform/Failure.h"

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

namespace ferrobank::drive {

namespace {

constexpr int kWrongArguments = 2;

/// What the arguments ask for, as CLI11 fills it in.
struct Wishes {
    bool json = false;
    bool keepMounted = false;
    std::string exportTo;
    bool deleteStore = false;
    bool yes = false;
    bool full = false;
    bool acknowledge = false;
    std::string folder;
};

void print(const std::string& line)
{
    std::fputs((line + "\n").c_str(), stdout);
    std::fflush(stdout);
}

int runStatus(const Paths& paths, const Wishes& wishes)
{
    const StatusReport report = StatusReport::gather(paths);
    if (wishes.json) {
        print(report.toJson());
    } else {
        std::fputs(statusText(report, StatusDetails::gather(paths)).c_str(), stdout);
    }
    return EXIT_SUCCESS;
}

int runAcknowledge(const Paths& paths)
{
    const Acknowledgement result = acknowledge(paths);
    for (const std::string& sentence : result.settled) {
        print(sentence);
    }
    for (const std::string& file : result.unreadable) {
        print("Still cannot be read: " + file);
    }
    if (result.settled.empty() && result.unreadable.empty()) {
        print("There is nothing to acknowledge.");
    }
    return result.unreadable.empty() ? EXIT_SUCCESS : EXIT_FAILURE;
}

/// The checks as rows for people, with a bar on a terminal while every file is read.
int runCheckForPeople(const Paths& paths, const Log& log, CheckRun run)
{
    const bool colours = wantsColours();
    const bool bar = ::isatty(STDOUT_FILENO) == 1;
    run.report = [colours, bar](const CheckRow& row) {
        if (row.state != CheckRow::State::Running) {
            print((bar ? "\r\033[K" : "") + worded(row.forTerminal()).toText(colours));
        }
    };
    run.progress = [bar](std::uint64_t done, std::uint64_t total) {
        if (bar) {
            std::fputs(("\r" + progressLine("Reading", done, total) + "\033[K").c_str(), stdout);
            std::fflush(stdout);
        }
    };
    const CheckOutcome outcome = runChecks(paths, log, run);
    for (const std::string& file : outcome.unreadable) {
        print("Cannot be read: " + file);
    }
    return outcome.allPassed ? EXIT_SUCCESS : EXIT_FAILURE;
}

/// One JSON object a line. That the rows could be told is success, whatever they say.
int runCheckForPrograms(const Paths& paths, const Log& log, CheckRun run)
{
    CheckRow atWork;
    run.report = [&atWork](const CheckRow& row) {
        atWork = row;
        print(worded(row).toJson());
    };
    run.progress = [&atWork](std::uint64_t done, std::uint64_t total) {
        CheckRow row = atWork;
        row.detail = displayBytes(done) + " of " + displayBytes(total) + " read";
        print(worded(row).toJson());
    };
    runChecks(paths, log, run);
    return EXIT_SUCCESS;
}

int runCheck(const Paths& paths, const Log& log, const Wishes& wishes)
{
    if (wishes.acknowledge) {
        return runAcknowledge(paths);
    }
    CheckRun run;
    std::optional<Interruption> interruption;
    if (wishes.full) {
        run.depth = CheckRun::Depth::Full;
        run.stop = interruption.emplace().token();
    }
    return wishes.json ? runCheckForPrograms(paths, log, run) : runCheckForPeople(paths, log, run);
}

int runShare(const Paths& paths, const CLI::App& share)
{
    if (share.got_subcommand("now")) {
        shareNow(paths);
    } else if (share.got_subcommand("pause")) {
        pauseSharing(paths);
    } else {
        resumeSharing(paths);
    }
    return EXIT_SUCCESS;
}

/// An unset variable of a shell script must not turn "copy, then delete" into "delete".
std::string folderProblem(const std::string& text)
{
    if (text.empty()) {
        return "needs a folder, and was given an empty text. Nothing was changed.";
    }
    if (text.starts_with('-')) {
        return "needs a folder, and \"" + text + "\" is an option. For a folder of that name write ./" +
               text + ". Nothing was changed.";
    }
    return {};
}

int runUninstall(const Paths& paths, const Log& log, const Wishes& wishes)
{
    UninstallWishes uninstallWishes;
    if (!wishes.exportTo.empty()) {
        uninstallWishes.exportTo = std::filesystem::absolute(wishes.exportTo);
    }
    uninstallWishes.store = wishes.deleteStore ? StoreFate::Delete : StoreFate::Keep;
    if (wishes.deleteStore && !wishes.yes && isAtTerminal() && ::access(paths.store.c_str(), F_OK) == 0) {
        askBeforeDeletion(paths, uninstallWishes);
    }
    uninstall(paths, log, uninstallWishes);
    return EXIT_SUCCESS;
}

int runChosen(const CLI::App& app, const Wishes& wishes)
{
    const Paths paths = Paths::fromEnvironment();
    const Log log(paths.log);
    if (app.get_subcommands().empty() || app.got_subcommand("status")) {
        return runStatus(paths, wishes);
    }
    if (app.got_subcommand("du")) {
        showFolderUsage(paths, wishes.folder, wishes.json ? UsageForm::Json : UsageForm::Text);
        return EXIT_SUCCESS;
    }
    if (const CLI::App* share = app.get_subcommand("share"); share->parsed()) {
        return runShare(paths, *share);
    }
    if (app.got_subcommand("check")) {
        return runCheck(paths, log, wishes);
    }
    if (app.got_subcommand("serve")) {
        return serve(paths, log);
    }
    if (app.got_subcommand("restart")) {
        restart(paths, log, wishes.keepMounted ? KeepMounted::Yes : KeepMounted::No);
        return EXIT_SUCCESS;
    }
    if (app.got_subcommand("export")) {
        exportDrive(paths, log, std::filesystem::absolute(wishes.exportTo));
        return EXIT_SUCCESS;
    }
    return runUninstall(paths, log, wishes);
}

void describe(CLI::App& app, Wishes& wishes)
{
    app.set_version_flag("--version", "ferrobank " + ownVersion());
    // Alone it shows the status.
    app.require_subcommand(0, 1);
    app.footer(
        "Back up ~/Ferrobank itself and leave its store out of backups: a copy of the store while the drive\n"
        "is mounted is of no use.");
    CLI::App* status = app.add_subcommand("status", "Show the drive's state and what it saves");
    status->add_flag("--json", wishes.json, "One JSON object");
    CLI::App* check = app.add_subcommand("check", "Check that everything is in order");
    check->add_flag("--json", wishes.json, "One JSON object per line, as each check goes on");
    CLI::Option* full =
        check->add_flag("--full", wishes.full, "Read every file, and name those that cannot be");
    check
        ->add_flag(
            "--acknowledge", wishes.acknowledge,
            "Look again at damaged files that were replaced; take the store that is there for the right one")
        ->excludes(full);
    app.add_subcommand("serve", "Mount the drive and keep it so until told to end");
    CLI::App* restart = app.add_subcommand("restart", "Mount the drive anew, or start it");
    restart->add_flag("--keep-mounted", wishes.keepMounted, "Only take up an installed update");
    const CLI::Validator folder(folderProblem, "");
    CLI::App* copy = app.add_subcommand("export", "Copy all files to a folder and verify the copy");
    copy->add_option("FOLDER", wishes.exportTo, "Missing or empty; an interrupted copy goes on")
        ->required()
        ->check(folder)
        ->type_name("");
    CLI::App* usage = app.add_subcommand("du", "Show what each folder holds, takes and saves");
    usage->add_option("FOLDER", wishes.folder, "A folder of the drive instead of all of it")->type_name("");
    usage->add_flag("--json", wishes.json, "One JSON object");
    CLI::App* share = app.add_subcommand("share", "Share repeated data now, or pause that");
    share->require_subcommand(1);
    share->add_subcommand("now", "Begin a pass at once and wait for its end");
    share->add_subcommand("pause", "Begin no pass until resumed");
    share->add_subcommand("resume", "Go on as usual");
    CLI::App* uninstall = app.add_subcommand("uninstall", "Remove the drive from this computer");
    uninstall->add_option("--export", wishes.exportTo, "Copy the files to this folder first")
        ->type_name("FOLDER")
        ->check(folder);
    uninstall->add_flag("--delete-store", wishes.deleteStore, "Delete the drive's data for good");
    uninstall->add_flag("--yes", wishes.yes, "Delete without a question, also on a terminal");
}

/// The first argument, if it should have been a command and is none.
std::optional<std::string> unknownCommand(const CLI::App& app, int argumentCount,
                                          const char* const* arguments)
{
    if (argumentCount < 2 || arguments[1][0] == '-' || arguments[1][0] == '\0') {
        return std::nullopt;
    }
    const std::string typed = arguments[1];
    for (const CLI::App* command : app.get_subcommands({})) {
        if (command->get_name() == typed) {
            return std::nullopt;
        }
    }
    return typed;
}

/// What follows "is no command": the one that may have been meant, or where they are listed.
std::string commandAdvice(const CLI::App& app, const std::string& typed)
{
    std::vector<std::string> words;
    for (const CLI::App* command : app.get_subcommands({})) {
        if (!command->get_group().empty()) {
            words.push_back(command->get_name());
        }
    }
    const std::optional<std::string> near = nearestWord(typed, words);
    return near ? "Did you mean: ferrobank " + *near : "All commands: ferrobank --help";
}

} // namespace

int runCommandLine(int argumentCount, const char* const* arguments)
{
    CLI::App app("Ferrobank: a drive at ~/Ferrobank that stores repeated data once.", "ferrobank");
    Wishes wishes;
    try {
        describe(app, wishes);
        if (const auto typed = unknownCommand(app, argumentCount, arguments)) {
            std::fprintf(stderr, "\u201C%s\u201D is no command of ferrobank. %s\n",
                         displayName(*typed).c_str(), commandAdvice(app, *typed).c_str());
            return kWrongArguments;
        }
        app.parse(argumentCount, arguments);
        return runChosen(app, wishes);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? EXIT_SUCCESS : kWrongArguments;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s\n", worded(failure.what()).c_str());
        return EXIT_FAILURE;
    }
}

} // namespace ferrobank::drive
