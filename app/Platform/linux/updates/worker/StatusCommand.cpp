#include "Platform/linux/updates/UpdateFailure.h"
#include "Platform/linux/updates/install/Staging.h"
#include "Platform/linux/updates/install/StagingLock.h"
#include "Platform/linux/updates/install/Trial.h"
#include "Platform/linux/updates/worker/Commands.h"
#include "Platform/linux/updates/worker/PlaceJson.h"

#include <QtCore/QJsonDocument>

#include <thread>

namespace ferrobank::updates {
namespace {

using namespace Qt::StringLiterals;

constexpr std::chrono::seconds kPatience{5};
constexpr std::chrono::seconds kOldProcessesTake{5};
constexpr std::chrono::milliseconds kBetweenLooks{100};

void cleanUp(const WorkerContext& context)
{
    std::error_code ignored;
    if (!context.verdict.mayReplace || !std::filesystem::exists(context.place.staging(), ignored))
        return;
    try {
        const StagingLock lock(context.place, std::chrono::milliseconds(0));
        Staging(context.place).removeLeftovers(context.configuration.version.toStdString());
    } catch (const UpdateFailure& failure) {
        if (failure.problem() != Problem::Busy)
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
    if (context.verdict.mayReplace) {
        if (const auto staged = Staging(context.place).staged())
            result[u"staged"_s] = QJsonDocument::fromJson(QByteArray::fromStdString(staged->item)).object();
    }
    context.tell(result);
}

void runHealthy(const WorkerContext& context)
{
    const StagingLock lock(context.place, kPatience);
    const auto trial = trialAt(context.place);
    if (trial && trial->version == context.configuration.version.toStdString())
        forgetTrial(context.place);
    // The worker that installed this version still runs from the old one for a moment.
    Staging staging(context.place);
    const auto deadline = std::chrono::steady_clock::now() + kOldProcessesTake;
    while (isRunningFrom(staging.next()) && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(kBetweenLooks);
    staging.removeLeftovers(context.configuration.version.toStdString());
    context.tell(QJsonObject{{u"event"_s, u"healthy"_s}});
}

} // namespace ferrobank::updates
