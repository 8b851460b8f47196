#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace ferrobank::drive {

/// "Label         value" on a line, labels padded to one column.
[[nodiscard]] std::string row(const std::string& label, const std::string& value);

/// A size in words, or a dash where it is unknown.
[[nodiscard]] std::string sizeOrDash(const std::optional<std::uint64_t>& bytes);

enum class Tone { Plain, Good, Bad, Quiet };

/// The text in colour when `colours` are wanted; see `wantsColours()`.
[[nodiscard]] std::string toned(const std::string& text, Tone tone, bool colours);

/// Whether standard output is a terminal whose user did not forbid colours (NO_COLOR).
[[nodiscard]] bool wantsColours();

} // namespace ferrobank::drive
