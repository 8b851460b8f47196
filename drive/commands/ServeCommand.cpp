#include "commands/ServeCommand.h"

#include "mounting/BackEndChoice.h"
#include "platform/Failure.h"
#include "platform/Files.h"
#include "platform/ToolPrograms.h"
#include "serving/DescriptorStore.h"
#include "serving/Server.h"

#include <signal.h>
#include <sys/stat.h>
#include <systemd/sd-daemon.h>
#include <unistd.h>

#include <cstdlib>
#include <exception>
#include <filesystem>
#include <utility>

namespace ferrobank::drive {

namespace {

/// The path that the tool was started by, if that is a whole one and leads to the program beside this one;
/// else the real path of that. Where versions lie side by side, the link on the way goes on leading to the
/// installed one.
std::string pathToFollow()
{
    const std::string words = readSmallFile("/proc/self/cmdline").value_or(std::string());
    const std::string command = words.c_str();
    const std::optional<FileIdentity> identity = identityOf("/proc/self/exe");
    if (command.starts_with('/') && identity && identityOf(driveProgramOf(command)) == identity) {
        return command;
    }
    return ownPath();
}

} // namespace

std::string ownPath()
{
    return ownProgram().replace_filename(kFrontProgram).string();
}

std::string ownVersion()
{
    return FERROBANK_VERSION;
}

int serve(const Paths& paths, const Log& log)
{
    ::signal(SIGPIPE, SIG_IGN);
    ::umask(0077);
    if (::chdir("/") != 0) {
        throw Failure("Cannot leave the current folder.");
    }
    std::optional<Inheritance> inheritance;
    if (const char* text = std::getenv(Inheritance::kVariable)) {
        inheritance = Inheritance::fromText(text);
        ::unsetenv(Inheritance::kVariable);
    }
    std::optional<Locks> locks;
    FileDescriptor waiting;
    FileDescriptor guard = takeKeptGuard();
    if (inheritance && (locks = Locks::inherit(*inheritance, paths))) {
        waiting = inheritance->takeReply();
        guard = inheritance->takeGuard();
    }
    if (!locks && !(locks = Locks::take(paths))) {
        log.write("The drive is served already by another process.");
        // A service that ends without having been ready counts as failed and would be started over and over.
        ::sd_notify(0, "READY=1");
        return EXIT_SUCCESS;
    }
    const ServingProgram program{.path = pathToFollow(),
                                 .identity = identityOf("/proc/self/exe").value_or(FileIdentity()),
                                 .version = ownVersion()};
    try {
        std::unique_ptr<BackEnd> backEnd = chooseBackEnd(paths, locks->store.descriptor());
        Server server(paths, log, program, std::move(*locks), std::move(backEnd));
        server.adoptGuard(std::move(guard));
        return server.run(std::move(waiting));
    } catch (const std::exception& error) {
        // Whoever started it reads its words nowhere else.
        log.write(std::string("Ferrobank cannot serve the drive: ") + error.what());
        throw;
    }
}

} // namespace ferrobank::drive
