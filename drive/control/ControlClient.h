#pragma once

#include "control/Message.h"

#include <chrono>
#include <filesystem>
#include <optional>

namespace ferrobank::drive {

/// Asks the serving process one thing and waits for its answer, at most `limit`. Nothing when nobody listens,
/// the answer does not come in time or the connection ends without one.
[[nodiscard]] std::optional<Reply> ask(const std::filesystem::path& socket, const Request& request,
                                       std::chrono::milliseconds limit);

inline constexpr std::chrono::milliseconds kPingLimit{1000};
inline constexpr std::chrono::milliseconds kRestartLimit{40'000};

} // namespace ferrobank::drive
