#pragma once

#include "Ferrobank/Service.h"

#include <cstdint>
#include <cstdio>
#include <optional>
#include <string_view>

namespace ferrobank {

/// The one-shot commands of the executable: one login-item operation from a shell or a script, with no
/// application around it. Main thread, free of Qt.
enum class Headless {
    Register,      ///< --register: starts the drive's service at login, and now
    Unregister,    ///< --unregister: neither service starts at login any more
    ServiceStatus, ///< --service-status: only tells
};

/// The command that the word names; nothing for every other word, also for another letter case or an
/// addition.
[[nodiscard]] std::optional<Headless> headlessCommand(std::string_view word);

/// Performs the command and returns the exit status of the process.
///
/// | outcome              | `output`                   | `errors`                      | returns |
/// |----------------------|----------------------------|-------------------------------|---------|
/// | done                 | the status line and "\n"   | -                             | 0       |
/// | the operation failed | -                          | the error's sentence and "\n" | 1       |
/// | line not writable    | what could be written      | why, and "\n"                 | 1       |
[[nodiscard]] std::int32_t runHeadless(Headless command, Service& service, std::FILE* output,
                                       std::FILE* errors);

} // namespace ferrobank
