#pragma once

#include <nlohmann/json.hpp>

namespace scripted {

/// Plays the steps one after the other and gives the exit status; README.md lists them. Some steps never
/// return.
[[nodiscard]] int play(const nlohmann::json& steps);

} // namespace scripted
