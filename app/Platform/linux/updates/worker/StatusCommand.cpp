#include "Platform/linux/updates/UpdateFailure.h"
#include "Platform/linux/updates/feed/VersionComparison.h"
#include "Platform/linux/updates/install/Staging.h"
#include "Platform/linux/updates/install/StagingLock.h"
#include "Platform/linux/updates/install/Trial.h"
#include "Platform/linux/updates/worker/Commands.h"
#include "Platform/linux/updates/worker/PlaceJson.h"

#include <QtCore/QDateTime>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QTimeZone>

#include <thread>

namespace ferrobank::updates {
namespace {

using namespace Qt::StringLiterals;

constexpr std::chrono::seconds kPatience{5};
constexpr std::chrono::seconds kOldProcessesTake{5};
constexpr std::chrono::milliseconds kBetweenLooks{100};

/// A ban that began while the clock was ahead would last that much longer.
void setBansRight(const InstallPlace& place)
{
    const std::vector<Ban> bans = bansAt(place);
    const std::vector<Ban> right = startedInTime(bans, QDateTime::currentSecsSinceEpoch());
    if (right != bans)
        writeBans(place, right);
}

/// The version above the installed one that was taken back last, if there is one.
QJsonObject takenBackAt(const WorkerContext& context)
{
    for (const Ban& ban : bansAt(context.place)) {
        if (isNewer(ban.version, context.configuration.version.toStdString()))
            return {{u"version"_s, QString::fromStdString(ban.version)},
                    {u"times"_s, ban.times},
                    {u"until"_s,
                     QDateTime::fromSecsSinceEpoch(endOf(ban), QTimeZone::utc()).toString(Qt::ISODate)}};
    }
    return {};
}

void cleanUp(const WorkerContext& context)
{
    std::error_code ignored;
    if (!context.verdict.mayReplace || !std::filesystem::exists(context.place.staging(), ignored))
        return;
    try {
        const StagingLock lock(context.place, std::chrono::milliseconds(0));
        Staging(context.place).removeLeftovers(context.configuration.version.toStdString());
        setBansRight(context.place);
    } catch (const UpdateFailure& failure) {
        // Neither a worker that is busy nor a full disk keeps the application from hearing what is there.
        if (failure.problem() != Problem::Busy && failure.problem() != Problem::Space)
            throw;
    }
}

} // namespace

void runStatus(const WorkerContext& context)
{
    cleanUp(context);
    const auto trial = trialAt(context.place);
    QJsonObject result{{u"event"_s, u"status"_s},
                       {u"on"_s, context.configuration.isOn()},
                       {u"installed"_s, context.configuration.version},
                       {u"place"_s, placeToJson(context.verdict)},
                       {u"trial"_s, trial.has_value()}};
    if (const QJsonObject takenBack = takenBackAt(context); !takenBack.isEmpty())
        result[u"takenBack"_s] = takenBack;
    if (context.verdict.mayReplace) {
        if (const auto staged = Staging(context.place).staged())
            result[u"staged"_s] = QJsonDocument::fromJson(QByteArray::fromStdString(staged->item)).object();
    }
    context.tell(result);
}

void runHealthy(const WorkerContext& context)
{
    {
        // Not behind a download that holds the other right for hours: the version works now.
        const StagingLock lock(context.place, kPatience, StagingLock::Right::Trial);
        const auto trial = trialAt(context.place);
        if (trial && trial->version == context.configuration.version.toStdString())
            forgetTrial(context.place);
    }
    const StagingLock lock(context.place, kPatience);
    // The worker that installed this version still runs from the old one for a moment.
    Staging staging(context.place);
    const auto deadline = std::chrono::steady_clock::now() + kOldProcessesTake;
    while (isRunningFrom(staging.next()) && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(kBetweenLooks);
    staging.removeLeftovers(context.configuration.version.toStdString());
    context.tell(QJsonObject{{u"event"_s, u"healthy"_s}});
}

} // namespace ferrobank::updates
