#pragma once

#include "Platform/linux/updates/feed/AppcastItem.h"

#include <optional>
#include <string>
#include <vector>

namespace ferrobank::updates {

/// What the user asked not to be offered again. Empty texts: nothing.
struct Skips {
    std::string version;             ///< and everything older
    std::string majorVersion;        ///< the major upgrade's threshold
    std::string majorVersionRelease; ///< the release that was on offer then

    friend bool operator==(const Skips&, const Skips&) = default;
};

enum class CheckKind { Scheduled, ByUser };

/// Everything the choice depends on besides the feed. Plain value.
struct ChoiceFacts {
    std::string installed;
    std::string systemVersion;
    std::string qtVersion;
    QStringList systemNames; ///< accepted values of an archive's system, for example "linux-x86_64", "linux"
    QStringList processors;  ///< for hardware requirements
    QStringList channels;    ///< beside the default one
    unsigned rolloutGroup = 0; ///< 0 to 6
    QDateTime now;
    CheckKind kind = CheckKind::Scheduled;
    Skips skips;
    std::vector<std::string>
        bannedVersions; ///< installed, failed to start, taken back, not to be tried again yet
};

/// Why nothing is offered.
enum class NoUpdate { OnLatest, NewerThanLatest, SystemTooOld, SystemTooNew, TakenBack, Unknown };

/// The outcome: an item, or the reason for none.
struct Choice {
    std::optional<AppcastItem> item;
    bool major = false;         ///< never installed silently
    bool critical = false;      ///< cannot be skipped, told promptly
    bool informational = false; ///< only a page to open

    NoUpdate reason = NoUpdate::Unknown;
    std::optional<AppcastItem> latest; ///< what the reason speaks of
};

/// Which item of the feed this copy is offered. Pure.
///
/// Items for other systems, differences, foreign channels, unfit limits, later groups of a roll-out and
/// skipped ones are left out; the highest version wins, the first of equals; a major upgrade only when
/// nothing else is newer. A check by the user ignores roll-out, skips and bans.
[[nodiscard]] Choice chooseItem(const QList<AppcastItem>& items, const ChoiceFacts& facts);

} // namespace ferrobank::updates
