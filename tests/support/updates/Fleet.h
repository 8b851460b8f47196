#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <cstdint>
#include <vector>

namespace ferrobank {

/// A fleet to simulate. The same options give the same result, to the last letter.
struct FleetOptions {
    int copies = 1000;
    int days = 730;
    std::uint64_t seed = 1;
};

/// What one copy came to.
struct CopyEnd {
    QString installed;
    bool isOnOldSystem = false; ///< it has not what the later releases need
    int starts = 0;
    int failedStarts = 0; ///< of a version that crashes on this computer
    int checks = 0;
    int downloads = 0; ///< of whole archives
    int takenBack = 0;
    int lastToldDay = -1; ///< when its user last read a notice; -1 for never
    QString lastNotice;

    friend bool operator==(const CopyEnd&, const CopyEnd&) = default;
};

/// The fleet at the end of one day.
struct FleetDay {
    int day = 0;
    std::vector<int> copies; ///< for each release, how many have it installed
    int told = 0;            ///< how many users have read a notice since the day before

    friend bool operator==(const FleetDay&, const FleetDay&) = default;
};

struct FleetResult {
    QStringList releases; ///< in their order; the last one is the newest good one
    std::vector<CopyEnd> copies;
    std::vector<FleetDay> days;

    friend bool operator==(const FleetResult&, const FleetResult&) = default;
};

/// Lets many copies live together in virtual time. Each runs the real session with its real schedule and
/// state, the real choice of a release from a feed that was really signed, and the real rules of trials and
/// bans; what is made up is the computer around it: who switches it on and off and pulls its plug, a clock
/// that is wrong, a full disk, a lost network, the server, and the moments in which the worker's commands are
/// done.
///
/// What happens to all of them: a release that does not start on most computers, one whose archive is damaged
/// on the server for a week, one that brings a new key, one that older systems cannot run, one that is rolled
/// out in groups, and a feed that nobody renews for three months.
[[nodiscard]] FleetResult runFleet(const FleetOptions& options);

/// The result as a picture: how many copies have which release, over time. SVG.
[[nodiscard]] QByteArray fleetPicture(const FleetResult& result);

} // namespace ferrobank
