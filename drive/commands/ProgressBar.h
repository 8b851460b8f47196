#pragma once

#include <cstdint>
#include <string>

namespace ferrobank::drive {

/// One line of a progress bar: "Copying    [#####-----]  52 %  4.1 GB of 8 GB".
[[nodiscard]] std::string progressLine(const std::string& label, std::uint64_t done, std::uint64_t total);

} // namespace ferrobank::drive
