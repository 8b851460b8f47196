#pragma once

#include "control/Message.h"

#include <chrono>
#include <filesystem>
#include <optional>

namespace ferrobank::drive {

/// Asks the serving process one thing and waits for its answer, at most `limit`. Nothing when nobody listens,
/// the answer does not come in time or the connection ends without one. A server that is stopped while its
/// queue is full costs the limit twice.
[[nodiscard]] std::optional<Reply> ask(const std::filesystem::path& socket, const Request& request,
                                       std::chrono::milliseconds limit);

/// Longer than the server waits for a client that says nothing, so that such a client does not make the
/// server seem dead.
inline constexpr std::chrono::milliseconds kPingLimit{3000};
inline constexpr std::chrono::milliseconds kRestartLimit{40'000};

} // namespace ferrobank::drive
