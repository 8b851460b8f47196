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
#include "platform/Files.h"
#include "space/SpaceKeeper.h"
#include "state/Figures.h"
#include "state/ServerProbe.h"
#include "store/StoreExamination.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <ctime>
#include <utility>

namespace ferrobank::drive {

namespace {

constexpr const char* kLogAdvice = "See the log; its last lines name the problem.";
constexpr const char* kRestartAction = "restart";
constexpr const char* kStorageAction = "storage-settings";
constexpr const char* kAcknowledgeStore =
    "Put the right file back, or, if this one is meant, run: ferrobank check --acknowledge";
constexpr std::size_t kNamesShown = 3;
constexpr std::int64_t kSharingDays = 7;
constexpr std::int64_t kDaySeconds = 24 * 60 * 60;

struct Context {
    const Paths& paths;
    const Log& log;
    const CheckRun& run;
    CheckOutcome& outcome;
    ServerProbe server;
    std::optional<Volume> volume;
};

CheckRow checkRunning(const CheckRow& row, const Context& context)
{
    if (context.server.running && ask(context.server.socket(), {.operation = Operation::Ping}, kPingLimit)) {
        return row.passed();
    }
    if (isReadOnlyHost(context.paths.store)) {
        return row.failed(readOnlyHostWords(), "Restart this computer.");
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
    if (isReadOnlyHost(context.paths.store)) {
        return row.failed(readOnlyHostWords(), "Restart this computer.");
    }
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
    const auto bad = [&row](const std::string& words) { return row.failed(words, kLogAdvice); };
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
    case StoreState::FirstSuperblockDamaged:
        return bad("The first superblock of the drive's store is damaged; a copy of it is whole.");
    case StoreState::Sound:
        break;
    }
    if (loops.size() > 1) {
        return bad("The drive's store is attached more than once.");
    }
    const std::optional<Figures> known = Figures::read(context.paths.figures);
    const std::optional<Superblock> superblock = readSuperblock(context.paths.image);
    if (known && superblock &&
        compareIdentity(known->uuid, known->generation, *superblock) == StoreIdentity::Other)
    {
        return row.failed(otherStoreWords(), kAcknowledgeStore);
    }
    if (known && known->olderImage) {
        return row.failed(olderStoreWords(), kAcknowledgeStore);
    }
    return row.passed();
}

/// "a, b, c and 9 others"
std::string someNames(const std::vector<std::string>& names, std::uint64_t all)
{
    std::string text;
    const std::size_t shown = std::min(names.size(), kNamesShown);
    for (std::size_t index = 0; index < shown; ++index) {
        text += (index == 0 ? "" : ", ") + names[index];
    }
    if (all > shown) {
        const std::uint64_t others = all - shown;
        text +=
            " and " + std::to_string(others) + (others == 1 ? " other" : " others") + "; the log names more";
    }
    return text;
}

CheckRow unreadableRow(const CheckRow& row, const std::vector<std::string>& names, std::uint64_t all)
{
    return row.failed(std::to_string(all) +
                          (all == 1 ? " file could not be read: " : " files could not be read: ") +
                          someNames(names, all) + ".",
                      "Restore or delete what is damaged, then run: ferrobank check --acknowledge");
}

std::string reasonWords(ReadingReason reason)
{
    switch (reason) {
    case ReadingReason::None:
        break;
    case ReadingReason::CutShort:
        return "The drive's store had been cut short.";
    case ReadingReason::LostChanges:
        return olderStoreWords();
    case ReadingReason::DeviceErrors:
        return "The drive's store has shown read or write errors.";
    case ReadingReason::Superblock:
        return "The first superblock of the drive's store was damaged and has been made again.";
    }
    return {};
}

CheckRow readingRow(const CheckRow& row, const IntegrityState& state)
{
    std::string words =
        reasonWords(state.readingDue) + " Every file is being read once to see what is damaged";
    if (state.reading && state.reading->total > 0) {
        const double share =
            static_cast<double>(state.reading->done) / static_cast<double>(state.reading->total);
        words += " (" + std::to_string(static_cast<int>(share * 100)) + " % so far)";
    }
    return row.failed(words + ".",
                      "The result stands here when that is done. Sooner: ferrobank check --full");
}

/// Decides the row by reading everything now.
CheckRow readFully(const CheckRow& row, const Context& context)
{
    if (!context.volume) {
        return row.failed("The drive is not mounted, so its files cannot be read.", kRestartAdvice,
                          kRestartAction);
    }
    const ReadingResult result = readEverything(
        context.paths, context.log, context.server, *context.volume,
        context.run.progress ? context.run.progress : [](std::uint64_t, std::uint64_t) {}, context.run.stop);
    if (result.cancelled) {
        return row.failed("The reading was ended before every file had been read.",
                          "Run: ferrobank check --full");
    }
    for (const std::string& file : result.unreadable) {
        context.outcome.unreadable.push_back(displayName(file));
    }
    if (result.unreadableFiles > 0) {
        return unreadableRow(row, context.outcome.unreadable, result.unreadableFiles);
    }
    return row.passed("All " + std::to_string(result.files) + " files were read.");
}

CheckRow checkIntegrity(const CheckRow& row, const Context& context)
{
    if (context.run.depth == CheckRun::Depth::Full) {
        return readFully(row, context);
    }
    if (!context.server.state) {
        // Nobody reads meanwhile, but what is known stays true.
        const std::optional<Figures> known = Figures::read(context.paths.figures);
        const ReadingReason due = reasonOf(readSmallFile(context.paths.readingDue).value_or(std::string()));
        if (due != ReadingReason::None) {
            return row.failed(reasonWords(due) + " Every file has to be read once to see what is damaged.",
                              kRestartAdvice, kRestartAction);
        }
        return known && known->unreadableFiles > 0
                   ? unreadableRow(row, known->unreadable, known->unreadableFiles)
                   : row.passed();
    }
    const IntegrityState& found = context.server.state->integrity;
    const std::optional<Problem>& problem = context.server.state->attachError;
    if (problem && problem->code == "store-damaged") {
        return row.failed(problem->text, "See the log; it holds what the check found.");
    }
    if (found.readingDue != ReadingReason::None) {
        return readingRow(row, found);
    }
    if (found.unreadableFiles > 0) {
        return unreadableRow(row, found.unreadable, found.unreadableFiles);
    }
    if (context.volume) {
        const FileDescriptor folder(
            ::open(context.volume->mountPoint.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        const std::optional<DeviceErrors> errors = folder ? deviceErrors(folder.get()) : std::nullopt;
        if (errors && errors->sum() > found.settledErrors) {
            // The serving process looks every minute, and begins to read then.
            IntegrityState soon = found;
            soon.readingDue = ReadingReason::DeviceErrors;
            return readingRow(row, soon);
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
    if (sharing.paused && driveAge > kSharingDays * kDaySeconds && passAge > kSharingDays * kDaySeconds) {
        return row.failed("Sharing has been paused for more than seven days.",
                          "To go on, run: ferrobank share resume");
    }
    if (driveAge > kSharingDays * kDaySeconds && passAge > kSharingDays * kDaySeconds) {
        return row.failed("Repeated data was last looked for more than seven days ago.", kRestartAdvice,
                          kRestartAction);
    }
    return sharing.paused ? row.passed("Paused. To go on, run: ferrobank share resume") : row.passed();
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

CheckOutcome runChecks(const Paths& paths, const Log& log, const CheckRun& run)
{
    CheckOutcome outcome;
    const auto finish = [&](const CheckRow& row) {
        outcome.allPassed = outcome.allPassed && row.state == CheckRow::State::Pass;
        run.report(row);
    };
    for (const NamedCheck& named : kChecks) {
        const CheckRow row{.id = named.id, .title = named.title, .detail = {}, .fix = {}, .action = {}};
        run.report(row);
        try {
            // Asked anew for each row: the state may change while an earlier one takes its time.
            const ServerProbe server = ServerProbe::probe(paths);
            const Context context{.paths = paths,
                                  .log = log,
                                  .run = run,
                                  .outcome = outcome,
                                  .server = server,
                                  .volume = findServedVolume(paths, server)};
            finish(named.check(row, context));
        } catch (const Failure& failure) {
            finish(row.failed(failure.text(), kLogAdvice));
        }
    }
    return outcome;
}

} // namespace ferrobank::drive
