#pragma once

#include <QtCore/QString>

#include <exception>

namespace ferrobank {

/// What a failure says to the user: our own errors carry their sentence, the system's come through as they
/// are.
[[nodiscard]] inline QString failureText(const std::exception& error)
{
    return QString::fromUtf8(error.what());
}

} // namespace ferrobank
