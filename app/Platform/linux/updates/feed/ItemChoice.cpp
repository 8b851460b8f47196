#include "Platform/linux/updates/feed/ItemChoice.h"

#include "Platform/linux/updates/feed/VersionComparison.h"

#include <algorithm>
#include <functional>

namespace ferrobank::updates {
namespace {

bool isBelow(const std::string& version, const std::string& limit)
{
    return !limit.empty() && compareVersions(version, limit) < 0;
}

bool isAbove(const std::string& version, const std::string& limit)
{
    return !limit.empty() && compareVersions(version, limit) > 0;
}

bool isMajor(const AppcastItem& item, const ChoiceFacts& facts)
{
    return isBelow(facts.installed, item.minimumForAutomatic);
}

bool isCritical(const AppcastItem& item, const ChoiceFacts& facts)
{
    return item.critical && (item.criticalBelow.empty() || isBelow(facts.installed, item.criticalBelow));
}

bool isInformational(const AppcastItem& item, const ChoiceFacts& facts)
{
    return item.informationForAll || isBelow(facts.installed, item.informationBelow) ||
           std::ranges::any_of(item.informationFor, [&](const std::string& version) {
               return compareVersions(version, facts.installed) == 0;
           });
}

bool isForThisCopy(const AppcastItem& item, const ChoiceFacts& facts)
{
    const bool hasArchive = !item.archive.isEmpty();
    if (hasArchive && !facts.systemNames.contains(item.system))
        return false;
    if (item.delta || item.package)
        return false;
    if (!item.channel.isEmpty() && !facts.channels.contains(item.channel))
        return false;
    if (isBelow(facts.installed, item.minimumInstalled))
        return false;
    return std::ranges::all_of(item.hardware,
                               [&](const QString& one) { return facts.processors.contains(one); });
}

bool isBanned(const AppcastItem& item, const ChoiceFacts& facts)
{
    return facts.kind == CheckKind::Scheduled &&
           std::ranges::find(facts.bannedVersions, item.version) != facts.bannedVersions.end();
}

bool isTooOldFor(const AppcastItem& item, const ChoiceFacts& facts)
{
    return isBelow(facts.systemVersion, item.minimumSystem) || isBelow(facts.qtVersion, item.minimumQt);
}

bool systemFits(const AppcastItem& item, const ChoiceFacts& facts)
{
    return !isTooOldFor(item, facts) && !isAbove(facts.systemVersion, item.maximumSystem);
}

bool isRolledOut(const AppcastItem& item, const ChoiceFacts& facts)
{
    if (facts.kind == CheckKind::ByUser || isCritical(item, facts) || !item.date ||
        item.phasedRolloutInterval.count() <= 0)
        return true;
    const qint64 age = item.date->secsTo(facts.now);
    const qint64 interval = item.phasedRolloutInterval.count();
    return age >= 0 && (facts.rolloutGroup == 0 || age / interval >= qint64{facts.rolloutGroup});
}

bool isSkipped(const AppcastItem& item, const ChoiceFacts& facts)
{
    if (facts.kind == CheckKind::ByUser || isCritical(item, facts))
        return false;
    const Skips& skips = facts.skips;
    if (!skips.version.empty() && !isNewer(item.version, skips.version))
        return true;
    if (!isMajor(item, facts) || skips.majorVersion.empty())
        return false;
    const bool wasForgotten = isBelow(skips.majorVersionRelease, item.ignoreSkippedMajorsBelow);
    return !wasForgotten && !isNewer(item.minimumForAutomatic, skips.majorVersion);
}

const AppcastItem* highest(const QList<AppcastItem>& items,
                           const std::function<bool(const AppcastItem&)>& isAllowed)
{
    const AppcastItem* best = nullptr;
    for (const AppcastItem& item : items) {
        if (isAllowed(item) && (!best || isNewer(item.version, best->version)))
            best = &item;
    }
    return best;
}

void tellWhyNot(const QList<AppcastItem>& items, const ChoiceFacts& facts, Choice& choice)
{
    const AppcastItem* latest =
        highest(items, [&](const AppcastItem& item) { return isForThisCopy(item, facts); });
    if (!latest)
        return;
    choice.latest = *latest;
    const auto order = compareVersions(facts.installed, latest->version);
    if (order > 0)
        choice.reason = NoUpdate::NewerThanLatest;
    else if (order == 0)
        choice.reason = NoUpdate::OnLatest;
    else if (isTooOldFor(*latest, facts))
        choice.reason = NoUpdate::SystemTooOld;
    else if (isAbove(facts.systemVersion, latest->maximumSystem))
        choice.reason = NoUpdate::SystemTooNew;
    else if (isBanned(*latest, facts))
        choice.reason = NoUpdate::TakenBack;
}

} // namespace

Choice chooseItem(const QList<AppcastItem>& items, const ChoiceFacts& facts)
{
    const auto isOffered = [&](const AppcastItem& item) {
        return isForThisCopy(item, facts) && systemFits(item, facts) && isRolledOut(item, facts) &&
               !isSkipped(item, facts) && !isBanned(item, facts) && isNewer(item.version, facts.installed);
    };
    const AppcastItem* best =
        highest(items, [&](const AppcastItem& item) { return isOffered(item) && !isMajor(item, facts); });
    if (!best)
        best = highest(items, isOffered);

    Choice choice;
    if (best) {
        choice.item = *best;
        choice.major = isMajor(*best, facts);
        choice.critical = isCritical(*best, facts);
        choice.informational = isInformational(*best, facts);
    } else
        tellWhyNot(items, facts, choice);
    return choice;
}

} // namespace ferrobank::updates
