#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ferrobank::updates {

/// A version that did not start here and was taken back. It is not tried again by itself before a time has
/// passed: a week after the first failure, thirty days after the second, ninety after each later one. Plain
/// value.
struct Ban {
    std::string version;
    int times = 1;          ///< how often it was taken back
    std::int64_t since = 0; ///< seconds since 1970, of the last time

    friend bool operator==(const Ban&, const Ban&) = default;
};

/// When it may be tried again, in seconds since 1970. Pure.
[[nodiscard]] std::int64_t endOf(const Ban& ban);

/// Whether it holds at this time. One that began in the future, by a clock that was wrong then or is now,
/// holds; startedInTime() sees to it that it ends. Pure.
[[nodiscard]] bool isInForce(const Ban& ban, std::int64_t now);

/// The bans with none that begins in the future. Pure.
[[nodiscard]] std::vector<Ban> startedInTime(std::vector<Ban> bans, std::int64_t now);

/// The bans after one more failure of a version. Pure.
[[nodiscard]] std::vector<Ban> withFailure(std::vector<Ban> bans, const std::string& version,
                                           std::int64_t now);

/// How often a version was taken back. Pure.
[[nodiscard]] int timesBanned(const std::vector<Ban>& bans, std::string_view version);

/// A line for each: version, times, since. A line without the numbers was written by an earlier version and
/// has ended. Pure.
[[nodiscard]] std::string bansText(const std::vector<Ban>& bans);
[[nodiscard]] std::vector<Ban> readBans(const std::string& text);

} // namespace ferrobank::updates
