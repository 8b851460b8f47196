#include "Platform/linux/updates/UpdateFailure.h"
#include "Platform/linux/updates/feed/VersionComparison.h"
#include "Platform/linux/updates/install/Staging.h"
#include "Platform/linux/updates/install/StagingLock.h"
#include "Platform/linux/updates/install/Swap.h"
#include "Platform/linux/updates/install/Trial.h"
#include "Platform/linux/updates/install/Unpack.h"
#include "Platform/linux/updates/worker/Commands.h"
#include "Platform/linux/updates/worker/OwnScope.h"
#include "Platform/linux/updates/worker/Relaunch.h"

namespace ferrobank::updates {
namespace {

using namespace Qt::StringLiterals;

namespace fs = std::filesystem;

constexpr std::chrono::seconds kPatience{5};
constexpr std::chrono::seconds kQuitTakes{60};

/// Checks once more what was staged: days may lie between, and this is the last look before it becomes the
/// program.
StagedUpdate expectStaged(const WorkerContext& context, const Staging& staging)
{
    const auto update = staging.staged();
    if (!update)
        throw UpdateFailure(Problem::Install, "There is no update waiting.");
    const Manifest manifest = checkTree(staging.rootOf(*update));
    const bool isRight = manifest.version == update->version &&
                         manifest.product == context.configuration.product.toStdString() &&
                         isNewer(manifest.version, context.configuration.version.toStdString());
    if (!isRight)
        throw UpdateFailure(Problem::Version,
                            "The update that waits is not newer than the installed version.");
    return *update;
}

void swapAfterQuit(const WorkerContext& context, const StagedUpdate& update, pid_t application)
{
    const InstallPlace& place = context.place;
    const StagingLock lock(place, kPatience, StagingLock::Right::Trial);
    const Trial trial{update.version, context.configuration.version.toStdString(), 0};
    const auto now =
        std::chrono::duration_cast<std::chrono::seconds>(std::chrono::system_clock::now().time_since_epoch());
    try {
        prepareTakingBack(place, trial, now.count());
        // From here on a start of the old version waits until it is clear which version is to run.
        writeTrial(place, trial);
        context.tell(QJsonObject{{u"event"_s, u"waiting"_s}});
        if (!waitForEnd(application, kQuitTakes))
            throw UpdateFailure(Problem::Busy, "The application did not quit, so the update still waits.");
        const auto former = place.formerRoot();
        if (isRunningFrom(place.root / "Contents/Linux") ||
            (former && isRunningFrom(*former / "Contents/Linux")))
            throw UpdateFailure(Problem::Busy,
                                "The application runs a second time, so the update still waits.");
        swapVersions(place, update.version);
    } catch (const UpdateFailure&) {
        forgetTrial(place);
        throw;
    }
}

} // namespace

void runInstall(const WorkerContext& context)
{
    if (!context.verdict.mayReplace)
        throw UpdateFailure(Problem::Place, context.verdict.sentence);
    moveToOwnScope();
    StagedUpdate update;
    {
        const StagingLock lock(context.place, kPatience);
        Staging staging(context.place);
        try {
            update = expectStaged(context, staging);
        } catch (const UpdateFailure&) {
            if (!trialAt(context.place))
                staging.forgetStaged();
            throw;
        }
        swapAfterQuit(context, update, static_cast<pid_t>(context.request[u"pid"_s].toInteger()));
        staging.noteInstalled();
    }
    context.tell(QJsonObject{{u"event"_s, u"installed"_s}});
    if (context.request[u"relaunch"_s].toBool())
        relaunchAndWatch(context.place, context.configuration.version.toStdString());
}

void runRelaunch(const WorkerContext& context)
{
    moveToOwnScope();
    context.tell(QJsonObject{{u"event"_s, u"waiting"_s}});
    if (!waitForEnd(static_cast<pid_t>(context.request[u"pid"_s].toInteger()), kQuitTakes))
        throw UpdateFailure(Problem::Busy, "The application did not quit, so it was not started again.");
    relaunchAndWatch(context.place, context.request[u"from"_s].toString().toStdString());
    context.tell(QJsonObject{{u"event"_s, u"relaunched"_s}});
}

} // namespace ferrobank::updates
