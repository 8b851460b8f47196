#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace ferrobank::drive {

/// A file name or path as it may be shown and put into JSON: valid UTF-8 on one line. Bytes that are neither
/// text nor printable become `\xNN`, line breaks `\n`, tabs `\t`; a backslash stays as it is.
[[nodiscard]] std::string displayName(std::string_view name);

enum class Rounding { Down, Up };

/// A size for people in decimal units with at most one digit after the point: "4 GB", "8.4 GB", "212 GB".
/// Rounding up what is needed and down what is there keeps a comparison true after rounding.
[[nodiscard]] std::string displayBytes(std::uint64_t bytes, Rounding rounding = Rounding::Down);

} // namespace ferrobank::drive
