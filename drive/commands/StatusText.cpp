#include "commands/StatusText.h"

#include "commands/Wording.h"
#include "commands/Words.h"
#include "figures/DisplayText.h"
#include "platform/Failure.h"
#include "space/SpaceKeeper.h"
#include "state/ServerProbe.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <ctime>

namespace ferrobank::drive {

namespace {

std::string counted(std::int64_t number, const char* one, const char* many)
{
    return std::to_string(number) + " " + (number == 1 ? one : many);
}

std::string percent(const WorkProgress& progress)
{
    if (progress.total == 0) {
        return {};
    }
    const double share = static_cast<double>(progress.done) / static_cast<double>(progress.total);
    return ", " + std::to_string(static_cast<int>(std::min(share, 1.0) * 100)) + " %";
}

std::string driveLine(const StatusReport& report)
{
    if (report.mounted) {
        return "mounted at " + report.mountpoint;
    }
    if (report.attach_error) {
        return "needs attention";
    }
    return report.installed ? "not mounted" : "not set up";
}

std::string nextStep(const StatusReport& report)
{
    if (report.mounted) {
        return {};
    }
    if (report.attach_error) {
        return row("Next", "ferrobank restart tries again; ferrobank check looks at every part");
    }
    return row("Next", report.installed
                           ? "ferrobank restart mounts it"
                           : "ferrobank restart makes a drive and mounts it at " + report.mountpoint);
}

std::string waitWords(SharingWait wait)
{
    switch (wait) {
    case SharingWait::Changes:
        return "everything is shared";
    case SharingWait::Quiet:
        return "the next pass comes when the drive is quiet, or within the hour";
    case SharingWait::Load:
        return "the next pass comes when the computer is less busy";
    case SharingWait::Power:
        return "the next pass comes when the computer is on mains power";
    case SharingWait::Resume:
        return "paused; ferrobank share resume goes on";
    case SharingWait::Export:
        return "the next pass comes when the export is done";
    }
    return {};
}

std::string sharingLine(const SharingState& sharing, std::int64_t now)
{
    std::string text = sharing.last == 0 ? "no pass yet" : "last pass " + timeAgo(sharing.last, now);
    if (sharing.shared > 0) {
        text += ", " + displayBytes(sharing.shared) + " shared";
    }
    return text + "; " + waitWords(sharing.paused ? SharingWait::Resume : sharing.waitsFor);
}

std::string workLines(const State& state)
{
    std::string text;
    const auto add = [&text](const std::string& work) { text += row(text.empty() ? "At work" : "", work); };
    if (state.exportState) {
        add("copying the files away" +
            percent({.done = state.exportState->done, .total = state.exportState->total}));
    }
    if (state.sharing.running) {
        add("sharing repeated data" + percent(*state.sharing.running));
    }
    if (state.integrity.reading) {
        add("reading every file" + percent(*state.integrity.reading));
    } else if (state.integrity.readingDue != ReadingReason::None) {
        add("every file is read once, as soon as can be");
    }
    return text;
}

} // namespace

std::string timeAgo(std::int64_t then, std::int64_t now)
{
    constexpr std::int64_t kMinute = 60;
    constexpr std::int64_t kHour = 60 * kMinute;
    constexpr std::int64_t kDay = 24 * kHour;
    const std::int64_t age = now - then;
    if (age < kMinute) {
        return "a moment ago";
    }
    if (age < kHour) {
        return counted(age / kMinute, "minute", "minutes") + " ago";
    }
    if (age < kDay) {
        return counted(age / kHour, "hour", "hours") + " ago";
    }
    return age < 2 * kDay ? "yesterday" : counted(age / kDay, "day", "days") + " ago";
}

std::string ratioText(std::uint64_t files, std::uint64_t saved)
{
    if (files == 0 || saved >= files) {
        return {};
    }
    const double all = static_cast<double>(files);
    const double taken = static_cast<double>(files - saved);
    std::array<char, 48> text{};
    std::snprintf(text.data(), text.size(), "%d %%, %.1f : 1",
                  static_cast<int>(static_cast<double>(saved) / all * 100), all / taken);
    return text.data();
}

StatusDetails StatusDetails::gather(const Paths& paths)
{
    StatusDetails details;
    details.state = ServerProbe::probe(paths).state;
    details.now = ::time(nullptr);
    try {
        const bool storeThere = ::access(paths.store.c_str(), F_OK) == 0;
        const SpaceFigures host = hostFigures(storeThere ? paths.store : paths.home);
        const std::uint64_t reserve = reserveFor(host);
        details.free = host.hostFree > reserve ? host.hostFree - reserve : 0;
    } catch (const Failure&) {
        // Without the home folder nothing can be said of its disk; the rest of the status still stands.
        details.free.reset();
    }
    return details;
}

std::string statusText(const StatusReport& report, const StatusDetails& details)
{
    std::string text = row("Drive", driveLine(report));
    if (report.attach_error) {
        text += row("", worded(*report.attach_error));
    }
    text += nextStep(report);
    if (report.installed) {
        std::string saved = sizeOrDash(report.saved);
        if (report.volume_used && report.saved && *report.saved > 0) {
            saved += " (" + ratioText(*report.volume_used, *report.saved) + ")";
        }
        text += row("Files", sizeOrDash(report.volume_used));
        text += row("On this disk", sizeOrDash(report.store_bytes));
        text += row("Saved", saved);
    }
    text += row("Free", sizeOrDash(details.free));
    if (details.state && report.mounted) {
        text += row("Sharing", sharingLine(details.state->sharing, details.now));
    }
    if (details.state) {
        text += workLines(*details.state);
    }
    if (report.update_pending) {
        text += row("Update", "installed; ferrobank restart --keep-mounted takes it up");
    }
    return text + row("Log", report.log);
}

} // namespace ferrobank::drive
