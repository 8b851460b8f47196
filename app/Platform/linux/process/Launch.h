#pragma once

#include "Platform/linux/Descriptor.h"

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <sys/types.h>

#include <optional>

namespace ferrobank {

/// A child that has just been started. The owner must reap it.
struct LaunchedChild {
    pid_t process = -1;
    Descriptor exit;      ///< readable once the child has exited (pidfd_open(2))
    Descriptor output;    ///< our end of standard output, non-blocking; none for the null device
    Descriptor errorText; ///< the same of standard error
};

struct LaunchRequest {
    QString program;
    QStringList arguments;
    std::optional<QStringList> environment;
    bool captureOutput = false;
    bool captureErrorText = false;
};

/// See ChildProcess::keepEnvironment().
void keepEnvironment();

/// Starts a program with posix_spawn(3): no shell, no search path. The child gets standard input, the two
/// outputs and nothing else that is open here, no blocked signals, and the default action for a broken pipe.
/// Throws LaunchError with the system's words.
[[nodiscard]] LaunchedChild launchChild(const LaunchRequest& request);

} // namespace ferrobank
