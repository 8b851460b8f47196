#pragma once

#include <optional>
#include <string>
#include <vector>

namespace ferrobank::drive {

/// The word of a list that somebody who typed `typed` may have meant: at most two letters wrong, missing, too
/// many or exchanged with their neighbour, and fewer than half of them. Nothing when none is that near.
[[nodiscard]] std::optional<std::string> nearestWord(const std::string& typed,
                                                     const std::vector<std::string>& words);

} // namespace ferrobank::drive
