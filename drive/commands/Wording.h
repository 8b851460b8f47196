#pragma once

#include "commands/CheckRow.h"

#include <string>
#include <string_view>

namespace ferrobank::drive {

/// The sentence in the language of who runs this program, where the bundle has words for it. The words are
/// read at the first call. Not for what programs read and nobody else: the state file, the log and the
/// control socket stay English.
[[nodiscard]] std::string worded(std::string_view english);

/// The same for all that is shown of a row.
[[nodiscard]] CheckRow worded(CheckRow row);

} // namespace ferrobank::drive
