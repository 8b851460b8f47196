#include "commands/CommandLine.h"

#include "commands/Checks.h"
#include "commands/RestartCommand.h"
#include "commands/ServeCommand.h"
#include "commands/StatusReport.h"
#include "commands/UninstallCommand.h"
#include "commands/Words.h"
#include "platform/Failure.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace ferrobank::drive {

namespace {

constexpr int kWrongArguments = 2;

/// What the arguments ask for, as CLI11 fills it in.
struct Wishes {
    bool json = false;
    bool keepMounted = false;
    std::string exportTo;
    bool deleteStore = false;
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
        std::fputs(report.toText().c_str(), stdout);
    }
    return EXIT_SUCCESS;
}

int runCheck(const Paths& paths, const Log& log, const Wishes& wishes)
{
    const bool colours = wantsColours();
    runChecks(paths, log, [&](const CheckRow& row) {
        if (wishes.json) {
            print(row.toJson());
        } else if (row.state != CheckRow::State::Running) {
            print(row.toText(colours));
        }
    });
    return EXIT_SUCCESS;
}

int runUninstall(const Paths& paths, const Log& log, const Wishes& wishes)
{
    UninstallWishes uninstallWishes;
    if (!wishes.exportTo.empty()) {
        uninstallWishes.exportTo = std::filesystem::absolute(wishes.exportTo);
    }
    uninstallWishes.store = wishes.deleteStore ? StoreFate::Delete : StoreFate::Keep;
    uninstall(paths, log, uninstallWishes);
    return EXIT_SUCCESS;
}

int runChosen(const CLI::App& app, const Wishes& wishes)
{
    const Paths paths = Paths::fromEnvironment();
    const Log log(paths.log);
    if (app.got_subcommand("status")) {
        return runStatus(paths, wishes);
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
    return runUninstall(paths, log, wishes);
}

void describe(CLI::App& app, Wishes& wishes)
{
    app.set_version_flag("--version", "ferrobank " + ownVersion());
    app.require_subcommand(1);
    app.footer(
        "Back up ~/Ferrobank itself and leave its store out of backups: a copy of the store while the drive\n"
        "is mounted is of no use.");
    CLI::App* status = app.add_subcommand("status", "Show the drive's state and what it saves");
    status->add_flag("--json", wishes.json, "One JSON object");
    CLI::App* check = app.add_subcommand("check", "Check that everything is in order");
    check->add_flag("--json", wishes.json, "One JSON object per line, as each check goes on");
    app.add_subcommand("serve", "Mount the drive and keep it so until told to end");
    CLI::App* restart = app.add_subcommand("restart", "Mount the drive anew, or start it");
    restart->add_flag("--keep-mounted", wishes.keepMounted, "Only take up an installed update");
    CLI::App* uninstall = app.add_subcommand("uninstall", "Remove the drive from this computer");
    uninstall->add_option("--export", wishes.exportTo, "Copy the files to this folder first")
        ->type_name("FOLDER");
    uninstall->add_flag("--delete-store", wishes.deleteStore, "Delete the drive's data for good");
}

} // namespace

int runCommandLine(int argumentCount, const char* const* arguments)
{
    CLI::App app("Ferrobank: a drive at ~/Ferrobank that stores repeated data once.", "ferrobank");
    Wishes wishes;
    try {
        describe(app, wishes);
        app.parse(argumentCount, arguments);
        return runChosen(app, wishes);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? EXIT_SUCCESS : kWrongArguments;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s\n", failure.what());
        return EXIT_FAILURE;
    }
}

} // namespace ferrobank::drive
