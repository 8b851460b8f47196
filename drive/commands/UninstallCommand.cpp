#include "commands/UninstallCommand.h"

#include "commands/ExportRun.h"
#include "commands/ServeCommand.h"
#include "control/ControlClient.h"
#include "login/LoginStart.h"
#include "mounting/Attachment.h"
#include "mounting/BackEndChoice.h"
#include "mounting/HelperBackEnd.h"
#include "platform/Failure.h"
#include "platform/Files.h"
#include "serving/Locks.h"
#include "state/ServerProbe.h"

#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <thread>

namespace ferrobank::drive {

namespace {

constexpr std::chrono::seconds kEndLimit{20};
constexpr std::chrono::milliseconds kEndStep{20};

/// Waits until no process serves the drive any more, and takes its place.
Locks takePlace(const Paths& paths)
{
    const auto limit = std::chrono::steady_clock::now() + kEndLimit;
    for (;;) {
        if (std::optional<Locks> locks = Locks::tryTake(paths)) {
            return std::move(*locks);
        }
        if (std::chrono::steady_clock::now() >= limit) {
            throw Failure("The drive's background process does not end.", "not-ended");
        }
        std::this_thread::sleep_for(kEndStep);
    }
}

void askToUnmount(const ServerProbe& server)
{
    const std::optional<Reply> reply = ask(server.socket(), {.operation = Operation::Stop}, kRestartLimit);
    if (!reply) {
        throw Failure("The drive's background process did not answer. The log may name the reason.",
                      "no-answer");
    }
    if (!reply->ok) {
        throw Failure(reply->text, reply->code);
    }
}

/// Our files, and what a kill left of their making: the same names with something after them.
bool isOurs(const std::string& name, const Paths& paths)
{
    for (const std::filesystem::path& file :
         {paths.image, paths.unprepared, paths.openMarker, paths.figures, paths.reserve, paths.storeLock,
          paths.readingDue, paths.unreadable})
    {
        const std::string own = file.filename().string();
        if (name == own || name.starts_with(own + ".")) {
            return true;
        }
    }
    return name == "skeleton.new";
}

void deleteStore(const Paths& paths, const Log& log)
{
    removeIfPresent(paths.image);
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(paths.store, error)) {
        if (isOurs(entry.path().filename().string(), paths)) {
            std::filesystem::remove_all(entry.path(), error);
        }
    }
    std::filesystem::remove_all(paths.index, error);
    // A folder with files that are not ours stays, with them.
    std::filesystem::remove(paths.store, error);
    log.write("The drive's store was deleted.");
}

/// An image that cannot be used is still worth the refusal: only without any file is there nothing to copy.
bool hasImage(const Paths& paths)
{
    struct stat status{};
    return ::lstat(paths.image.c_str(), &status) == 0 || ::access(paths.figures.c_str(), F_OK) == 0;
}

/// A refusal is no reason to stop: what is left does nothing without its store.
void forgetApproval(const Paths& paths, const Log& log)
{
    try {
        forgetMountHelper(paths);
    } catch (const Failure& failure) {
        log.write("The administrator's approval stays: " + failure.text());
    }
}

bool isInstalled(const Paths& paths)
{
    return ::access(paths.store.c_str(), F_OK) == 0;
}

} // namespace

void uninstall(const Paths& paths, const Log& log, const UninstallWishes& wishes)
{
    const LoginStart login(paths, log);
    if (!isInstalled(paths)) {
        login.takeAway();
        return;
    }
    if (wishes.exportTo && hasImage(paths)) {
        exportBeforeUninstall(paths, log, *wishes.exportTo);
    }
    const ServerProbe server = ServerProbe::probe(paths);
    if (server.running) {
        askToUnmount(server);
    }
    login.takeAway();
    if (server.running) {
        // The login service has ended the process by now; one that was started otherwise is told to.
        static_cast<void>(ask(server.socket(), {.operation = Operation::Quit}, kPingLimit));
    }
    const Locks locks = takePlace(paths);
    Attachment attachment(paths, log, chooseBackEnd(paths, locks.store.descriptor()));
    if (const std::optional<Volume> volume = attachment.current()) {
        attachment.detach(*volume);
    }
    attachment.home().removeIfOwn();
    forgetApproval(paths, log);
    if (wishes.store == StoreFate::Delete) {
        deleteStore(paths, log);
    }
    log.write("Ferrobank was uninstalled.");
}

} // namespace ferrobank::drive
