#include "commands/Checks.h"

#include "commands/ServedVolume.h"
#include "commands/WriteTrial.h"
#include "control/ControlClient.h"
#include "figures/DeviceCounters.h"
#include "figures/DisplayText.h"
#include "login/LoginStart.h"
#include "mounting/Attachment.h"
#include "mounting/MountHelper.h"
#include "platform/Failure.h"
#include "platform/FileDescriptor.h"
#include "space/SpaceKeeper.h"
#include "state/ServerProbe.h"
#include "store/StoreExamination.h"

#include <fcntl.h>
#include <unistd.h>

#include <ctime>
#include <utility>

namespace ferrobank::drive {

namespace {

constexpr const char* kRestartAdvice = "Restart Ferrobank.";
constexpr const char* kRestartAction = "restart";
constexpr const char* kStorageAction = "storage-settings";
constexpr std::int64_t kSharingDays = 7;
constexpr std::int64_t kDaySeconds = 24 * 60 * 60;

struct Context {
    const Paths& paths;
    const Log& log;
    ServerProbe server;
    std::optional<Volume> volume;
};

CheckRow checkRunning(const CheckRow& row, const Context& context)
{
    if (context.server.running && ask(context.server.socket(), {.operation = Operation::Ping}, kPingLimit)) {
        return row.passed();
    }
    return row.failed("The drive's background process is not running.", kRestartAdvice, kRestartAction);
}

CheckRow notMounted(const CheckRow& row, const Context& context)
{
    if (!context.server.state || !context.server.state->attachError) {
        return row.failed("The drive is not mounted.", kRestartAdvice, kRestartAction);
    }
    const Problem& problem = *context.server.state->attachError;
    if (problem.code == "not-authorized") {
        return row.failed("This login session may not mount the drive.",
                          "Log in at this computer's own screen, or " + mountingAdvice(), kRestartAction);
    }
    if (problem.code == "host-full") {
        return row.failed(problem.text, "Free some space on this computer, then restart Ferrobank.",
                          kStorageAction);
    }
    return row.failed(problem.text, kRestartAdvice, kRestartAction);
}

CheckRow checkDrive(const CheckRow& row, const Context& context)
{
    if (!context.volume) {
        return notMounted(row, context);
    }
    if (hasTemporaryIdentity(context.volume->mountPoint)) {
        return row.failed("The drive's store is attached twice, which would destroy files.", kRestartAdvice,
                          kRestartAction);
    }
    const bool hostFull = context.server.state && context.server.state->space.level == SpaceLevel::Critical;
    const char* advice =
        hostFull ? "Free some space on this computer, then restart Ferrobank." : kRestartAdvice;
    const char* action = hostFull ? kStorageAction : kRestartAction;
    if (context.volume->readOnly) {
        return row.failed("The drive is read-only.", advice, action);
    }
    const WriteTrial trial = tryToWrite(context.volume->mountPoint);
    switch (trial.end) {
    case WriteTrial::End::Written:
        return row.passed();
    case WriteTrial::End::TimedOut:
        return row.failed("The drive does not respond.", advice, action);
    case WriteTrial::End::Failed:
        break;
    }
    return row.failed("The drive cannot be written: " + trial.reason + ".", advice, action);
}

CheckRow checkLogin(const CheckRow& row, const Context& context)
{
    if (LoginStart(context.paths, context.log).isOn()) {
        return row.passed();
    }
    return row.failed("Ferrobank does not start at login.", "Turn on Ferrobank in the login items.",
                      "login-items");
}

CheckRow checkSpace(const CheckRow& row, const Context& context)
{
    const bool storeThere = ::access(context.paths.store.c_str(), F_OK) == 0;
    const SpaceFigures figures = hostFigures(storeThere ? context.paths.store : context.paths.home);
    const std::uint64_t reserve = reserveFor(figures);
    const std::string free = displayBytes(figures.hostFree);
    switch (levelFor(figures)) {
    case SpaceLevel::Ok:
        return row.passed(free + " free.");
    case SpaceLevel::Low:
        return row.passed("Only " + free + " free; the drive stops taking files below " +
                          displayBytes(reserve) + ".");
    case SpaceLevel::Critical:
        break;
    }
    return row.failed("Only " + free + " free; the drive stops taking files below " + displayBytes(reserve) +
                          ".",
                      "Free some space on this computer.", kStorageAction);
}

CheckRow checkStore(const CheckRow& row, const Context& context)
{
    const auto bad = [&row](const std::string& words) {
        return row.failed(words, "Choose Show Log; the last lines name the problem.");
    };
    const std::vector<LoopDevice> loops = loopsOf(context.paths.image, Recognise::ByFile);
    for (const LoopDevice& loop : loops) {
        if (loop.backingDeleted) {
            return row.failed(
                "The drive's store was deleted while in use.",
                "Copy your files out of ~/Ferrobank now: they are gone once the drive is unmounted.");
        }
    }
    switch (examineStore(context.paths)) {
    case StoreState::Missing:
        return bad("The drive has no store yet.");
    case StoreState::TailCutOff:
        return bad("The drive's store was cut short.");
    case StoreState::Sound:
        break;
    }
    if (loops.size() > 1) {
        return bad("The drive's store is attached more than once.");
    }
    return row.passed();
}

CheckRow checkIntegrity(const CheckRow& row, const Context& context)
{
    const char* advice = "Restore them from a copy; see the log.";
    if (context.server.state && !context.server.state->integrity.unreadable.empty()) {
        const IntegrityState& found = context.server.state->integrity;
        const bool single = found.unreadableFiles == 1;
        return row.failed(std::to_string(found.unreadableFiles) +
                              (single ? " file could not be read: " : " files could not be read: ") +
                              found.unreadable.front() + (single ? "" : " and others") + ".",
                          advice);
    }
    if (context.server.state && context.server.state->attachError &&
        context.server.state->attachError->code == "store-damaged")
    {
        return row.failed(context.server.state->attachError->text,
                          "Choose Show Log; it holds what the check found.");
    }
    if (context.volume) {
        const FileDescriptor folder(
            ::open(context.volume->mountPoint.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        const std::optional<DeviceErrors> errors = folder ? deviceErrors(folder.get()) : std::nullopt;
        if (errors && !errors->none()) {
            return row.failed("The drive's store has shown read or write errors.", advice);
        }
    }
    return row.passed();
}

CheckRow checkSharing(const CheckRow& row, const Context& context)
{
    if (!context.server.state) {
        return row.failed("Nothing is being shared while the drive is not running.", kRestartAdvice,
                          kRestartAction);
    }
    const SharingState& sharing = context.server.state->sharing;
    if (sharing.error) {
        return row.failed(*sharing.error, kRestartAdvice, kRestartAction);
    }
    // A clock that was set back makes both ages negative, which says nothing against the drive.
    const std::int64_t now = ::time(nullptr);
    const std::int64_t since = context.server.state->since;
    const std::int64_t driveAge = since == 0 ? 0 : now - since;
    const std::int64_t passAge = now - sharing.last;
    if (driveAge > kSharingDays * kDaySeconds && passAge > kSharingDays * kDaySeconds) {
        return row.failed("Repeated data was last looked for more than seven days ago.", kRestartAdvice,
                          kRestartAction);
    }
    return row.passed();
}

using Check = CheckRow (*)(const CheckRow&, const Context&);

struct NamedCheck {
    const char* id;
    const char* title;
    Check check;
};

constexpr NamedCheck kChecks[] = {
    {"running", "Ferrobank is running", checkRunning},
    {"drive", "Drive is mounted and writable", checkDrive},
    {"login", "Starts at login", checkLogin},
    {"space", "Room on this computer", checkSpace},
    {"store", "The drive's store is sound", checkStore},
    {"integrity", "Stored data is intact", checkIntegrity},
    {"sharing", "Repeated data is stored once", checkSharing},
};

} // namespace

void runChecks(const Paths& paths, const Log& log, const std::function<void(const CheckRow&)>& report)
{
    for (const NamedCheck& named : kChecks) {
        const CheckRow row{.id = named.id, .title = named.title, .detail = {}, .fix = {}, .action = {}};
        report(row);
        try {
            // Asked anew for each row: the state may change while an earlier one takes its time.
            const ServerProbe server = ServerProbe::probe(paths);
            const Context context{
                .paths = paths, .log = log, .server = server, .volume = findServedVolume(paths, server)};
            report(named.check(row, context));
        } catch (const Failure& failure) {
            report(row.failed(failure.text(), "Choose Show Log; the last lines name the problem."));
        }
    }
}

} // namespace ferrobank::drive
